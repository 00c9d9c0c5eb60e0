"""Keeps the stock of a small shop: a program as people write them, from its imports to its exit status.

It is run by the shell and by python3 with the same arguments, and has to say the same.
"""

import argparse
import collections
import dataclasses
import enum
import functools
import json
import re
import sys
import textwrap
from decimal import Decimal
from fractions import *
from os.path import *

HELP = """\
Reads lines of the form

	name; kind; count; price

where "kind" is one of: tool, food, toy.
"""

LINE = re.compile(
    r"""
    \s* (?P<name> [^;]+? ) \s* ;
    \s* (?P<kind> \w+ )    \s* ;
    \s* (?P<count> \d+ )   \s* ;
    \s* (?P<price> \d+ (?: \. \d+ )? ) \s* $
    """,
    re.VERBOSE,
)

DATA = """
hammer;       tool; 4;  12.50
bread;        food; 30; 1.99
model train;  toy;  2;  89.90
saw;          tool; 0;  17.25
cheese 'Käse'; food; 7; 8.10
"""


class Kind(enum.Enum):
    TOOL = "tool"
    FOOD = "food"
    TOY = "toy"

    def __str__(self):
        return self.name.title()


@dataclasses.dataclass(order=True)
class Item:
    name: str
    kind: Kind = dataclasses.field(compare=False)
    count: int = dataclasses.field(default=0, compare=False)
    price: Decimal = dataclasses.field(default=Decimal(0), compare=False)

    registry = {}

    def __post_init__(self):
        Item.registry[self.name] = self

    @property
    def value(self):
        return self.count * self.price

    @classmethod
    def parse(cls, line):
        match = LINE.match(line)
        if match is None:
            raise ValueError(f"cannot read {line!r}")
        fields = match.groupdict()
        return cls(fields["name"], Kind(fields["kind"]), int(fields["count"]), Decimal(fields["price"]))


def traced(function):
    @functools.wraps(function)
    def wrapper(*arguments, **named):
        wrapper.calls += 1
        return function(*arguments, **named)

    wrapper.calls = 0
    return wrapper


@traced
def hanoi(disks, source="a", target="c", spare="b"):
    if disks == 0:
        return []
    return hanoi(disks - 1, source, spare, target) + [(source, target)] + hanoi(disks - 1, spare, target, source)


def running_total(values):
    total = 0
    for value in values:
        total += value
        yield total


def even(number):
    return number == 0 or odd(number - 1)


def odd(number):
    return number != 0 and even(number - 1)


def counter():
    count = 0

    def step():
        nonlocal count
        count += 1
        return count

    return step


def report(items, width):
    by_kind = collections.defaultdict(list)
    for item in sorted(items):
        by_kind[item.kind].append(item)
    for kind, members in by_kind.items():
        print(f"{kind}: {', '.join(item.name for item in members)}")
    totals = {str(kind): sum((item.value for item in members), Decimal()) for kind, members in by_kind.items()}
    print(json.dumps(totals, default=str, sort_keys=True))
    matrix = [[row * column for column in range(1, width) if column % 2] for row in range(1, 3)]
    print(matrix, {len(name) for name in Item.registry} >= {3}, [*running_total(range(width))])


def main(arguments=None):
    parser = argparse.ArgumentParser(description="Tells what is in stock.", epilog="Made for a test.")
    parser.add_argument("--width", type=int, default=4, metavar="N", help="how wide (default: %(default)s)")
    parser.add_argument("--fail", action="store_true", help="end with an error")
    parser.add_argument("words", nargs="*")
    options = parser.parse_args(arguments)
    step = counter()
    items = [Item.parse(line) for line in DATA.splitlines() if line]
    report(items, options.width)
    print(len(hanoi(5)), hanoi.calls, hanoi.__name__, even(10), odd(7), step() + step())
    print(textwrap.dedent(HELP).count("\t"), splitext(join("a", "b.txt")), Fraction(3, 6), options.words)
    match items:
        case [Item(name="hammer", count=count), *rest] if count > 3:
            print("many hammers,", len(rest), "more")
    if options.fail:
        try:
            Item.parse("nonsense")
        except ValueError as error:
            raise RuntimeError("the stock is unknown") from error
    return len(items)


if __name__ == "__main__":
    print(__name__, basename(__file__), basename(sys.argv[0]), sys.argv[1:], sorted(Kind, key=str)[0])
    sys.exit(main())
