"""Summarises a CSV file of orders: turnover by region and month, the best products, the spread of order values.

    lingsh examples/report.py [FILE] [--top N] [--region NAME]

FILE has the columns order, date, region, product, quantity and unit_price. The default is the file in `data/`, two
years of an imaginary office supplier. Rows that cannot be read are counted and shown, not guessed at.
"""

import argparse
import csv
import statistics
import sys
from collections import Counter, defaultdict
from dataclasses import dataclass
from datetime import date
from decimal import ROUND_HALF_EVEN, Decimal, InvalidOperation
from pathlib import Path

COLUMNS = ("order", "date", "region", "product", "quantity", "unit_price")
CENT = Decimal("0.01")
SAMPLE = Path(__file__).resolve().parent / "data" / "orders.csv"


@dataclass(frozen=True)
class Order:
    number: str
    day: date
    region: str
    product: str
    quantity: int
    unit_price: Decimal

    @property
    def value(self):
        return self.quantity * self.unit_price

    @property
    def month(self):
        return f"{self.day:%Y-%m}"


class BadFile(Exception):
    """A file that holds no orders at all; its text says why."""


class BadRow(Exception):
    """A row that is no order; its text says why."""


def parse_price(text):
    try:
        price = Decimal(text)
    except InvalidOperation:
        raise BadRow(f"unit price is no number: {text!r}") from None
    if not price.is_finite() or price < 0:
        raise BadRow(f"unit price is out of range: {text!r}")
    return price


def parse_order(row):
    for name in COLUMNS:
        if not row[name]:
            raise BadRow(f"{name} is missing")
    try:
        day = date.fromisoformat(row["date"])
    except ValueError as error:
        raise BadRow(f"date: {error}") from None
    if not row["quantity"].isdecimal() or int(row["quantity"]) == 0:
        raise BadRow(f"quantity is no positive number: {row['quantity']!r}")
    return Order(row["order"], day, row["region"], row["product"], int(row["quantity"]), parse_price(row["unit_price"]))


def read_orders(path):
    """The orders of a file, and the rows that are none as pairs of line number and reason."""
    orders, rejected = [], []
    with open(path, newline="", encoding="utf-8-sig") as file:
        reader = csv.DictReader(file, restval="")
        missing = [name for name in COLUMNS if name not in (reader.fieldnames or ())]
        if missing:
            raise BadFile(f"the columns {', '.join(missing)} are missing")
        for row in reader:
            try:
                orders.append(parse_order(row))
            except BadRow as reason:
                rejected.append((reader.line_num, str(reason)))
    return orders, rejected


def money(value):
    return f"{Decimal(value).quantize(CENT, ROUND_HALF_EVEN):,}"


def total_by(orders, key):
    totals = defaultdict(Decimal)
    for order in orders:
        totals[key(order)] += order.value
    return totals


def print_table(title, rows, headings):
    """Prints rows of text below headings, the first column to the left, the others to the right."""
    widths = [max(len(row[column]) for row in [headings, *rows]) for column in range(len(headings))]
    print(f"\n{title}")
    for row in [headings, *rows]:
        cells = [row[0].ljust(widths[0])] + [text.rjust(width) for text, width in zip(row[1:], widths[1:])]
        print("  " + "   ".join(cells).rstrip())


def print_regions(orders):
    totals = total_by(orders, lambda order: order.region)
    counts = Counter(order.region for order in orders)
    whole = sum(totals.values()) or 1
    ranking = sorted(totals, key=lambda region: (-totals[region], region))
    rows = [(region, str(counts[region]), money(totals[region]), f"{totals[region] / whole:.1%}") for region in ranking]
    print_table("Turnover by region", rows, ("region", "orders", "turnover", "share"))


def print_months(orders):
    totals = total_by(orders, lambda order: order.month)
    highest = max(totals.values()) or 1
    rows = [(month, money(total), ("#" * int(total * 30 / highest)).ljust(30)) for month, total in sorted(totals.items())]
    print_table("Turnover by month", rows, ("month", "turnover", ""))


def print_products(orders, top):
    totals = total_by(orders, lambda order: order.product)
    sold = Counter()
    for order in orders:
        sold[order.product] += order.quantity
    best = sorted(totals, key=lambda product: (-totals[product], product))[:top]
    rows = [(product, f"{sold[product]:,}", money(totals[product])) for product in best]
    print_table(f"The best {len(rows)} products", rows, ("product", "sold", "turnover"))


def print_spread(orders):
    values = [order.value for order in orders]
    lower, middle, upper = statistics.quantiles(values, n=4) if len(values) > 1 else values * 3
    largest = max(orders, key=lambda order: (order.value, order.number))
    print("\nOrder values")
    print(f"  mean {money(statistics.mean(values))}, median {money(middle)}, quartiles {money(lower)} and {money(upper)}")
    print(f"  largest: {money(largest.value)} ({largest.number}, {largest.day}, {largest.quantity} x {largest.product})")


def print_report(orders, rejected, top):
    days = [order.day for order in orders]
    print(f"{len(orders)} orders from {min(days)} to {max(days)}, {money(sum(order.value for order in orders))} in all")
    print_regions(orders)
    print_months(orders)
    print_products(orders, top)
    print_spread(orders)
    if rejected:
        print(f"\n{len(rejected)} rows were left out")
        for line, reason in rejected:
            print(f"  line {line}: {reason}")


def parse_arguments():
    parser = argparse.ArgumentParser(description="Summarises a CSV file of orders.")
    parser.add_argument("file", nargs="?", type=Path, default=SAMPLE, help="the orders (default: the sample)")
    parser.add_argument("--top", type=int, default=5, metavar="N", help="how many products to show (default: 5)")
    parser.add_argument("--region", metavar="NAME", help="only the orders of one region")
    return parser.parse_args()


def main():
    options = parse_arguments()
    try:
        orders, rejected = read_orders(options.file)
    except (OSError, BadFile, UnicodeDecodeError, csv.Error) as error:
        sys.exit(f"{options.file}: cannot be read as orders: {error}")
    if options.region is not None:
        orders = [order for order in orders if order.region == options.region]
    if not orders:
        sys.exit(f"{options.file}: no orders to report")
    print_report(orders, rejected, options.top)


if __name__ == "__main__":
    main()
