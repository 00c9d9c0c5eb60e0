"""Fills a shop's inventory from a file of orders and sells from it: native classes, used from Python.

    lingsh --extensions DIR examples/shop/report.py [FILE]

The module `shop` comes from a native extension (`shop.cpp`) that knows nothing of Python. FILE has the columns of
`examples/data/orders.csv`, which is the default. The first half of the orders is taken in, the second half sold.
"""

import argparse
import csv
from collections import Counter
from decimal import Decimal, InvalidOperation
from pathlib import Path

SAMPLE = Path(__file__).resolve().parent.parent / "data" / "orders.csv"

# The host binds its modules by name: `shop` needs no import. The exception class of an error class is its `exception`.
OutOfStock = shop.OutOfStock.exception  # noqa: F821


def read_orders(path):
    with open(path, newline="", encoding="utf-8-sig") as file:
        for row in csv.DictReader(file):
            try:
                yield row["product"], int(row["quantity"]), Decimal(row["unit_price"])
            except (ValueError, InvalidOperation):
                continue


def main():
    parser = argparse.ArgumentParser(description="Sells what an inventory holds.")
    parser.add_argument("file", nargs="?", type=Path, default=SAMPLE, help="a CSV file of orders")
    orders = list(read_orders(parser.parse_args().file))

    inventory = shop.Inventory()
    for product, quantity, price in orders[: len(orders) // 2]:
        item = inventory.find(product)
        if item is None:
            inventory.add(shop.Item(product, price, quantity))
        else:
            item.stock += quantity

    refused = Counter()
    turnover = Decimal(0)
    for product, quantity, _ in orders[len(orders) // 2 :]:
        item = inventory.find(product)
        if item is None:
            refused[product] += 1
            continue
        try:
            item.take(quantity)
        except OutOfStock:
            refused[product] += 1
        else:
            turnover += item.price * quantity

    try:
        inventory.find(orders[0][0]).stock = -1
    except RuntimeError as error:
        print(f"Refused, as it should be: {error}")

    print(f"{'product':<24}{'left':>8}{'worth':>16}{'on sale':>12}")
    for item in inventory:
        print(f"{item.name:<24}{item.stock:>8}{item.total:>16}{shop.discounted(item.price, percent=15):>12.2f}")
    print(f"{len(inventory)} products, turnover {turnover}, {sum(refused.values())} orders refused")


if __name__ == "__main__":
    main()
