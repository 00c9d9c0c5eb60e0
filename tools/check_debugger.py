"""Runs a host in gdb, which is told of nothing but the folder that it may load scripts from, and compares what it shows.

    check_debugger.py GDB HOST STAGE
"""

import os
import pathlib
import subprocess
import sys

SKIPPED = 77
AUTO_LOAD = ("libqshared_x86_64.so.16.0.1-gdb.py", "libpython3.13.so.1.0-gdb.py")

# In the function that holds them: a value, and what gdb makes of it.
VALUES = {
    "none": "None",
    "yes": "true",
    "number": "-7",
    "real": "2.5",
    "text": '"hä\U0001F600"',
    "handle": '"plain"',
    "slice": '"' + "b" + 30 * "ab" + 'end"',
    "list": 'List of 3 = {1, "two", List of 2 = {3.5, None}}',
    "tuple": 'Tuple of 2 = {1, "two"}',
    "map": 'Map of 2 = {["a"] = 1, [2] = List of 3 = {1, "two", List of 2 = {3.5, None}}}',
    "set": "Set of 1 = {5}",
    "error": 'Error "It went wrong." = {cause = Error "The reason."}',
    "cls": "class Error",
    "object": "Tea object = {stock = 3}",
    "bytes": r"b'ab\x00c'",
    "decimal": "Decimal -12.50",
    "date": "Date 2024-02-29",
    "function": "function display",
    "module": "module ling",
    "weak": "weak reference to List of 3",
    "ling::display(map)": '''"{'a': 1, 2: [1, 'two', [3.5, none]]}"''',
}
# Objects of Python, which gdb shows by their addresses where CPython brought no script: how the text begins.
BEGINNINGS = {"proxy": "PythonProxySequence for = {object = ", "item": "PythonProxy for = {object = "}
# In a slot that Python calls on a wrapper.
WRAPPED = 'wrapper = {value = List of 3 = {1, "two", List of 2 = {3.5, None}}}'


def has_debug_information(stage):
    library = stage / "lib/libqshared_x86_64.so.16.0.1"
    sections = subprocess.run(["readelf", "--sections", "--wide", library], capture_output=True, text=True, check=True)
    return ".debug_info" in sections.stdout or (library.parent / ".debug").is_dir()


def session(gdb, host, stage):
    """What gdb prints, by the names that stand before each answer."""
    commands = ["set breakpoint pending on", "set width 0", "break stop", "run", "up"]
    for name in [*VALUES, *BEGINNINGS]:
        commands += [f"echo @{name}@", f"print {name}"]
    commands += ["break ling::python::call", "continue", "echo @wrapper@", "print self", "echo @scripts@",
                 "info auto-load python-scripts", "echo @frames@", "py-bt"]
    command = [gdb, "-q", "--batch", "-nx", "-iex", f"add-auto-load-safe-path {stage}"]
    for text in commands:
        command += ["-ex", text]
    command += ["--args", host, stage / "qcomponents/qextensions"]
    ended = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=250, encoding="utf-8",
                           env={**os.environ, "LC_ALL": "C.UTF-8", "ASAN_OPTIONS": "detect_leaks=0"})
    parts = ended.stdout.split("@")
    return dict(zip(parts[1::2], parts[2::2])), ended.stdout


def problems_of(answers, stage):
    for name, wanted in {**VALUES, "wrapper": WRAPPED}.items():
        answer = answers.get(name, "nothing").strip().partition(" = ")[2]
        if answer != wanted:
            yield f"{name}: {answer or answers.get(name)}, not {wanted}"
    for name, wanted in BEGINNINGS.items():
        answer = answers.get(name, "nothing").strip().partition(" = ")[2]
        if not answer.startswith(wanted):
            yield f"{name}: {answer or answers.get(name)}, not {wanted}..."
    for script in AUTO_LOAD:
        if list(stage.rglob(script)) and script not in answers.get("scripts", ""):
            yield f"{script}: not loaded by gdb"
    if AUTO_LOAD[1] in answers.get("scripts", "") and "in called" not in answers.get("frames", ""):
        yield "py-bt: does not know the function that calls"


def main():
    gdb, host, stage = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
    if not pathlib.Path(gdb).is_file():
        print("there is no gdb")
        return SKIPPED
    if not has_debug_information(stage):
        print("the libraries carry no debug information: the presets debug, asan and package have it")
        return SKIPPED
    answers, everything = session(gdb, host, stage)
    problems = list(problems_of(answers, stage))
    print("\n".join([*problems, everything] if problems else [f"gdb shows {len(answers)} things as it should."]))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
