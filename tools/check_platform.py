"""Compares what the plug-in takes from the runtime with the list of it.

    check_platform.py PLUGIN SOURCES

The list is `src/host/platform_names.txt`. It holds names without parameters, so overloads count as one. What the
compiler leaves of inline functions differs from one kind of build to another: the list is that of a release build. A
name that it lacks is a failure; one that is needed no more is told of, to be taken out.
"""

import pathlib
import re
import subprocess
import sys

LIST = "src/host/platform_names.txt"
KINDS = {"vtable", "typeinfo"}


def listed_names(path):
    """The pairs of scope and name of the list, and the section of each."""
    names, section, scope = {}, None, None
    for line in path.read_text(encoding="utf-8").splitlines():
        text = line.split("#", 1)[0].strip()
        if text.startswith("["):
            section = text.strip("[]")
            continue
        if match := re.fullmatch(r"(ling(?:::\w+)*): (.*)", text):
            scope, text = match.groups()
        for name in text.split():
            names[scope, name] = section
    return names


def needed_names(plugin):
    """The names of the runtime that the plug-in leaves undefined."""
    symbols = subprocess.run(["nm", "--dynamic", "--undefined-only", "--demangle", plugin],
                             capture_output=True, text=True, check=True).stdout
    for line in symbols.splitlines():
        symbol = re.sub(r"\[abi:\w+\]", "", line.strip().split(" ", 1)[1])
        kind, _, scope = symbol.partition(" for ")
        if kind in KINDS and scope.startswith("ling::"):
            yield scope, kind
        elif match := re.search(r"(?:^|\s)(ling::[^(]*(?:operator\(\))?)", symbol):
            scope, _, name = match[1].rpartition("::")
            yield scope, name


def main():
    plugin, sources = sys.argv[1], pathlib.Path(sys.argv[2])
    listed, needed = listed_names(sources / LIST), set(needed_names(plugin))
    missing, stale = sorted(needed - listed.keys()), sorted(listed.keys() - needed)
    for scope, name in missing:
        print(f"{scope}::{name}: the plug-in needs it, and {LIST} does not name it")
    for scope, name in stale:
        print(f"{scope}::{name}: {LIST} names it, and the plug-in does not need it")
    if missing:
        print(f"Offer it through src/host/platform.h, and put '{missing[0][1]}' into the row '{missing[0][0]}:' of the list, "
              "under [further], with what it must do. Or do without: each name is one more for whoever ports the plug-in.")
    further = sum(section == "further" for section in listed.values())
    print(f"{len(needed)} names, {further} of them beyond those that every runtime has")
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
