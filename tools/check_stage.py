"""Checks what the staged files promise a host: what they need, where they look for it, what they export.

Takes the folder of the stage. Reads the files with `readelf`, `nm` and `ldd`, as a packager would.
"""

import pathlib
import re
import subprocess
import sys

RUNTIME = "libqshared_x86_64.so.16.0.1"
PYTHON = "libpython3.13.so.1.0"
PLUGIN_RUN_PATH = ":".join([
    "$ORIGIN",
    "$ORIGIN/lib",
    "$ORIGIN/qcomponents",
    "$ORIGIN/qcomponents/qextensions/lib",
    "$ORIGIN/qcomponents/qextensions/python3/lib",
    "$ORIGIN/python3/lib",
])

# File: its run path, and the libraries of the product that it needs; the others are the system's.
PROMISES = {
    "lingsh": ("$ORIGIN/lib", {RUNTIME}),
    f"lib/{RUNTIME}": ("$ORIGIN", set()),
    "qcomponents/qextensions/libling_python.so": (PLUGIN_RUN_PATH, {RUNTIME, PYTHON}),
}
NATIVE_MODULES = "qcomponents/qextensions/site-packages"
PLUGIN_EXPORTS = {"quorvanta_extension_init"}


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def dynamic_entries(path, kind):
    """The texts of the entries of one kind in a file's dynamic section."""
    return re.findall(rf"\({kind}\).*\[(.*)\]", output_of("readelf", "--dynamic", "--wide", path))


def exports(path):
    return {line.split()[-1] for line in output_of("nm", "--dynamic", "--defined-only", path).splitlines()}


def unfound_libraries(stage):
    """What the copied native modules need and the loader does not find from where they are now."""
    for module in sorted((stage / NATIVE_MODULES).glob("*.so")):
        for line in output_of("ldd", module).splitlines():
            if "not found" in line:
                yield f"{NATIVE_MODULES}/{module.name}: {line.split()[0]} is not found"


def stray_run_paths(stage):
    """What was copied from an installation of Python must not look for libraries on the machine that built it."""
    for folder in ("python3/lib", "site-packages"):
        for library in sorted((stage / "qcomponents/qextensions" / folder).glob("*.so*")):
            if library.suffix == ".py":
                continue
            for kind in ("RPATH", "RUNPATH"):
                for path in dynamic_entries(library, kind):
                    yield f"{folder}/{library.name}: looks for libraries in {path}"


def problems_of(stage):
    missing = [name for name in PROMISES if not (stage / name).is_file()]
    if missing:
        yield from (f"{name}: is not there" for name in missing)
        return
    for name, (run_path, needed) in PROMISES.items():
        found = dynamic_entries(stage / name, "RUNPATH")
        if found != [run_path]:
            yield f"{name}: the run path is {found}, not {run_path}"
        product = {library for library in dynamic_entries(stage / name, "NEEDED") if library in (RUNTIME, PYTHON)}
        if product != needed:
            yield f"{name}: needs {sorted(product)}, not {sorted(needed)}"
    if dynamic_entries(stage / "lib" / RUNTIME, "SONAME") != [RUNTIME]:
        yield f"lib/{RUNTIME}: is not called so by itself"
    plugin = "qcomponents/qextensions/libling_python.so"
    if exports(stage / plugin) != PLUGIN_EXPORTS:
        yield f"{plugin}: exports {sorted(exports(stage / plugin))}"
    yield from unfound_libraries(stage)
    yield from stray_run_paths(stage)


def main():
    problems = list(problems_of(pathlib.Path(sys.argv[1])))
    print("\n".join(problems) if problems else f"{len(PROMISES)} files keep their promises.")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
