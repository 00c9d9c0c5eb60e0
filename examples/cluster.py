"""Sells from a shop's inventory on a cluster: a scheduler and workers, each a process of its own, with native objects.

    lingsh --extensions DIR examples/cluster.py [FILE] [--workers N] [--alone]

FILE has the columns of `data/orders.csv`, which is the default. The first half of a product's orders is taken in, the
second half sold; each task does that for the products that fall to it, and its inventory of `shop.Item` travels back.
`--alone` computes the same in this one process. The page docs/clusters.md says what differs on several machines.

Needs the package `distributed` (Debian: python3-distributed) where the shell imports from.
"""

import argparse
import contextlib
import csv
import os
import subprocess
import sys
import tempfile
import zlib
from decimal import Decimal, InvalidOperation
from pathlib import Path

SAMPLE = Path(__file__).resolve().parent / "data" / "orders.csv"
LOOPBACK = "127.0.0.1"

# The host binds `shop` by name in the main program. Imported here, the folder `shop` beside this file would be found
# first.


def read_orders(path):
    with open(path, newline="", encoding="utf-8-sig") as file:
        for row in csv.DictReader(file):
            try:
                yield row["product"], int(row["quantity"]), Decimal(row["unit_price"])
            except (ValueError, InvalidOperation):
                continue


def divided(orders, parts):
    """The orders in as many lists, those for one product together."""
    divided = [[] for _ in range(parts)]
    for order in orders:
        divided[zlib.crc32(order[0].encode()) % parts].append(order)
    return divided


def sell(orders):
    """What is left, an inventory of the host, with the turnover and how many orders were refused."""
    by_product = {}
    for product, quantity, price in orders:
        by_product.setdefault(product, []).append((quantity, price))
    inventory = shop.Inventory()  # noqa: F821
    turnover, refused = Decimal(0), 0
    for product, lots in by_product.items():
        taken_in, sold = lots[: len(lots) // 2], lots[len(lots) // 2 :]
        item = shop.Item(product, lots[0][1], sum(quantity for quantity, _ in taken_in))  # noqa: F821
        inventory.add(item)
        for quantity, _ in sold:
            try:
                item.take(quantity)
                turnover += item.price * quantity
            except shop.OutOfStock.exception:  # noqa: F821
                refused += 1
    return inventory, turnover, refused


@contextlib.contextmanager
def cluster(workers):
    """Starts the processes with the shell as their interpreter, as it would be done by hand on each machine. Answers
    the file in which the scheduler tells its address."""
    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as processes:
        address = os.path.join(folder, "scheduler.json")

        def start(program, *options):
            command = [sys.executable, "-m", f"distributed.cli.{program}", "--scheduler-file", address]
            process = subprocess.Popen([*command, *options], cwd=folder, stderr=subprocess.DEVNULL)
            processes.enter_context(process)
            processes.callback(process.kill)

        start("dask_scheduler", "--host", LOOPBACK, "--port", "0", "--no-dashboard")
        for _ in range(workers):
            start("dask_worker", "--host", LOOPBACK, "--nthreads", "1", "--no-nanny", "--no-dashboard", "--local-directory", folder)
        yield address


def sell_on_cluster(orders, workers):
    from distributed import Client

    with cluster(workers) as address, Client(scheduler_file=address, timeout=60) as client:
        client.wait_for_workers(workers, timeout=60)
        by_worker = set(client.run(os.getpid).values())
        print(f"{len(by_worker)} workers, {len(by_worker - {os.getpid()})} of them processes of their own", file=sys.stderr)
        # Every function and every value that a task takes or gives travels: what the host keeps of it, too.
        results = client.gather(client.map(sell, divided(orders, 4 * workers)))
    inventory, turnover, refused = shop.Inventory(), Decimal(0), 0  # noqa: F821
    for part, part_turnover, part_refused in results:
        inventory = inventory + part
        turnover += part_turnover
        refused += part_refused
    return inventory, turnover, refused


def show(inventory, turnover, refused):
    print(f"{'product':<24}{'left':>8}{'worth':>16}")
    for item in sorted(inventory, key=lambda item: item.name):
        print(f"{item.name:<24}{item.stock:>8}{item.total:>16}")
    print(f"{len(inventory)} products, turnover {turnover}, {refused} orders refused")


def main():
    parser = argparse.ArgumentParser(description="Sells what an inventory holds, on a cluster.")
    parser.add_argument("file", nargs="?", type=Path, default=SAMPLE, help="a CSV file of orders")
    parser.add_argument("--workers", type=int, default=2, metavar="N", help="how many worker processes to start")
    parser.add_argument("--alone", action="store_true", help="compute in this process")
    arguments = parser.parse_args()
    orders = list(read_orders(arguments.file))
    show(*(sell(orders) if arguments.alone else sell_on_cluster(orders, arguments.workers)))


if __name__ == "__main__":
    main()
