"""Compares the tables of docs/conversions.md with what the bridge does. Run by the shell, with the file as argument."""

import datetime  # noqa: F401
import decimal  # noqa: F401
import fractions  # noqa: F401
import math  # noqa: F401
import re
import sys
import types  # noqa: F401
import warnings


def rows_of(text, heading):
    """The cells of the table below a heading, without the marks of code."""
    section = text.split(heading, 1)[1].split("\n## ", 1)[0]
    for line in section.splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if line.startswith("| `"):
            yield [re.sub(r"^`(.*)`$", r"\1", cell) for cell in cells]


def check(problems, row, found):
    if row[1:] != found:
        problems.append(f"{row[0]}: documented as {row[1:]}, found {found}")


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        text = file.read()
    warnings.simplefilter("ignore")  # What is lost on the way is in the table.
    problems = []
    count = 0
    for row in rows_of(text, "## From Python to `ling`"):
        value = eval(row[0])
        back = ling.List([value])[0]  # noqa: F821
        found = "the same object" if row[2] == "the same object" and back is value else repr(back)
        check(problems, row, [ling.qualname(value), found])  # noqa: F821
        count += 1
    for row in rows_of(text, "## From `ling` to Python"):
        value = eval(row[0])
        check(problems, row, [ling.kind_of(value), type(value).__name__.replace("`", ".")])  # noqa: F821
        count += 1
    print("\n".join(problems) or f"{count} rows hold")
    return 1 if problems or count < 40 else 0


sys.exit(main())
