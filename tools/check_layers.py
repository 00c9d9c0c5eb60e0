"""Fails when a file includes upwards.

The table says which rooms a tree has, the lowest first. A file may include files of its own room and of those before
it, and the runtime's public headers. A file belongs to the room that names it, else to the last room of its tree that
one of its patterns matches.
"""

import fnmatch
import pathlib
import re
import sys

PUBLIC = "runtime/include"

# Tree: where its quoted includes begin, then its rooms from the bottom to the top.
TREES = {
    "runtime/include": ("runtime/include", [("public headers", ["ling/*.h"])]),
    "runtime": ("runtime", [
        ("values", ["values/*"]),
        ("model", ["model/*"]),
        ("interfaces", ["interfaces/*"]),
        ("library", ["library/*"]),
        ("services", ["services/*"]),
    ]),
    "src": ("src", [
        ("the host's base", ["host/*"]),
        ("the faces", ["bridge/*.h", "language/evaluate.h"]),
        ("wrappers, proxies, functions", ["lingobject/*", "proxies/*", "functions/*"]),
        ("the converters", ["bridge/*.cpp"]),
        ("values that travel", ["travel/*"]),
        ("the language, the host's modules", ["language/*", "modules/*"]),
        ("stubs of the host's modules", ["stubs/*"]),
        ("the host's top", ["host/extension.*", "host/interpreter.cpp", "host/module_functions.*",
                            "host/scheme_loader.*", "host/search_paths.*", "host/startup.*"]),
    ]),
    "shell": ("shell", [("the shell", ["*"])]),
}

# Written by the build, so not found among the sources.
GENERATED = {"shell": {"shell_driver.h"}}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def room_of(tree, name):
    """The position of the room that `name`, relative to the tree, belongs to; None when it belongs to none."""
    rooms = TREES[tree][1]
    for position, (_, patterns) in enumerate(rooms):
        if name in patterns:
            return position
    for position in reversed(range(len(rooms))):
        if any(fnmatch.fnmatch(name, pattern) for pattern in rooms[position][1]):
            return position
    return None


def sources(top, tree):
    """The files of one tree; a tree inside another is not part of it."""
    inner = [top / other for other in TREES if other.startswith(tree + "/")]
    for path in sorted((top / tree).rglob("*")):
        if path.suffix in {".h", ".cpp"} and not any(folder in path.parents for folder in inner):
            yield path


def problem_with(top, tree, name, own, included):
    """What is wrong with one include, or None."""
    root, rooms = TREES[tree]
    if (top / PUBLIC / included).is_file() or included in GENERATED.get(tree, ()):
        return None
    beside = (pathlib.PurePosixPath(name).parent / included).as_posix()
    for candidate in (included, beside):
        if not (top / root / candidate).is_file():
            continue
        room = room_of(tree, candidate)
        if room is None or room > own:
            where = "no room" if room is None else rooms[room][0]
            return f"{candidate} ({where}) is above {rooms[own][0]}"
        return None
    return f'"{included}" is neither in this tree nor a public header of the runtime'


def check_file(top, tree, path):
    name = path.relative_to(top / tree).as_posix()
    own = room_of(tree, name)
    if own is None:
        return [f"{tree}/{name}: belongs to no room"]
    text = path.read_text(encoding="utf-8")
    found = (problem_with(top, tree, name, own, included) for included in INCLUDE.findall(text))
    return [f"{tree}/{name}: {problem}" for problem in found if problem]


def main():
    top = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
    files = [(tree, path) for tree in TREES for path in sources(top, tree)]
    problems = [problem for tree, path in files for problem in check_file(top, tree, path)]
    print("\n".join(problems) if problems else f"{len(files)} files include nothing above them.")
    return 1 if problems or not files else 0


if __name__ == "__main__":
    sys.exit(main())
