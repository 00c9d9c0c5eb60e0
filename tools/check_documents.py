"""Does what the guides say: installs the product, builds their programs against it, runs them, compares what they print.

    check_documents.py CMAKE BUILD SOURCES

A fenced block whose first line names a file ("```cpp host.cpp") is that file; a block "```text NAME" is what the command
NAME prints. The lines of the programs are counted, since a guide that grows is no guide.
"""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

BLOCK = re.compile(r"^```\w+ (\S+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)

# Guide, its program, the lines that it stays below, what is run and how.
GUIDES = [
    ("embedding.md", "host.cpp", 60, "host", ["{build}/host", "{extensions}"]),
    ("control.md", "control.cpp", 60, "control", ["{build}/control", "{extensions}"]),
    ("extending.md", "station.cpp", 80, "lingsh",
     ["{prefix}/lingsh", "--extensions", "{extensions}", "--extensions", "{build}/extensions", "{source}/use.py"]),
]


def run(command, **options):
    ended = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                           timeout=250, **options)
    if ended.returncode != 0:
        raise RuntimeError(f"{' '.join(map(str, command))}\nends with {ended.returncode}:\n{ended.stdout}")
    return ended.stdout


def check_guide(cmake, prefix, sources, folder, guide):
    document, program, limit, printed, command = guide
    blocks = dict(BLOCK.findall((sources / "docs" / document).read_text(encoding="utf-8")))
    source, build = folder / document, folder / (document + ".build")
    source.mkdir()
    for name, text in blocks.items():
        (source / name).write_text(text, encoding="utf-8")
    lines = len(blocks[program].splitlines())
    if lines >= limit:
        raise RuntimeError(f"{document}: {program} has {lines} lines, {limit} is the limit")
    run([cmake, "-S", source, "-B", build, f"-DCMAKE_PREFIX_PATH={prefix}", "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror"])
    run([cmake, "--build", build])
    places = {"build": build, "source": source, "prefix": prefix, "extensions": prefix / "qcomponents/qextensions"}
    out = run([part.format(**places) for part in command], env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"})
    if out != blocks[printed]:
        raise RuntimeError(f"{document}: {printed} prints\n{out}\nand not\n{blocks[printed]}")
    print(f"{document}: {lines} lines, as documented")


def main():
    cmake, binary, sources = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    folder = pathlib.Path(tempfile.mkdtemp(prefix="ling documents "))
    try:
        prefix = folder / "installed"
        run([cmake, "--install", binary, "--prefix", prefix])
        installed = {path.name for path in (prefix / "share/ling/docs").glob("*.md")}
        missing = {path.name for path in (sources / "docs").glob("*.md")} - installed
        if missing:
            raise RuntimeError(f"not installed: {sorted(missing)}")
        for guide in GUIDES:
            check_guide(cmake, prefix, sources, folder, guide)
    except RuntimeError as problem:
        print(problem)
        return 1
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
