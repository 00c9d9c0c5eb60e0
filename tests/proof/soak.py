"""Many threads that cross between the two worlds for long, with Python's collector at every allocation.

    ling_proof soak.py [THREADS [CROSSINGS]]     so many crossings by each thread; what is alive is then as at the start
    ling_proof soak.py end                       ends while threads of both kinds are crossing
"""

import copy
import gc
import pickle
import random
import sys
import threading
import time

import ling
import proof
import puppets
from ling.python import evaluate_expr, from_python, to_python

call, read = ling.bound_method, ling.property_value


class Own:
    def __init__(self):
        self.items = []

    def add(self, item, times=1):
        self.items = [item] * times
        return self.items


def fails(*arguments):
    raise ValueError(arguments)


def refused(operation, *arguments):
    try:
        operation(*arguments)
    except (RuntimeError, KeyError, OverflowError):
        return
    raise AssertionError("It was to fail.")


def check(condition):
    if not condition:
        raise AssertionError("A crossing gave a wrong answer.")


class Shared:
    """What all threads change at the same time."""

    def __init__(self):
        self.list, self.map, self.set, self.plain, self.own = ling.List(), ling.Map(), ling.Set(), [], Own()
        self.puppet = puppets.Puppet(lambda name, *a: a)


def trim(shared):
    for container in (shared.list, shared.map, shared.set, shared.plain):
        if len(container) > 200:
            container.clear()


CROSSINGS = [
    lambda s, n: s.list.append([n, "x" * (n % 50)]),
    lambda s, n: s.map.set(n % 97, {n: s.own}),
    lambda s, n: s.set.insert(str(n % 89)),
    lambda s, n: call(s.plain, "append")(n),
    lambda s, n: check(call(s.own, "add")(n, times=2) == [n, n]),
    lambda s, n: check(ling.List([n, [n]])[0] == n),
    lambda s, n: [item for item in s.list],
    lambda s, n: list(zip(s.map.keys, s.map.values)),
    lambda s, n: check(list(ling.Set(range(n % 9))) == list(range(n % 9))),
    lambda s, n: refused(call(fails, "invoke"), [n]),
    lambda s, n: refused(ling.List([n]).at, 5),
    lambda s, n: refused(ling.List, [2**70, n]),
    lambda s, n: check(call(lambda *a: a, "invoke")([n, "a"]) == (n, "a")),
    lambda s, n: check(str(ling.List([n, "\u20ac"])) == f"[{n}, '\u20ac']"),
    lambda s, n: check(list(copy.deepcopy(ling.List([n, [n]]))) == [n, [n]]),
    lambda s, n: check(list(pickle.loads(pickle.dumps(ling.List([n])))) == [n]),
    lambda s, n: check(to_python(from_python({n: [n]})) == {n: [n]}),
    lambda s, n: check(s.puppet.act() == ()),
    lambda s, n: setattr(s.puppet, f"own{n % 7}", n),
    lambda s, n: ling.hash_of((n, str(s.set))),
    lambda s, n: ling.compare_objects(ling.List([n]), s.list),
    lambda s, n: check(evaluate_expr("n + 1", {"n": n}, {}) == n + 1) if n % 50 == 0 else None,
    lambda s, n: proof.crowd(s.list, 2, 5) if n % 200 == 0 else None,
    lambda s, n: proof.crowd(lambda number: s.set.insert(number), 2, 5) if n % 200 == 0 else None,
    lambda s, n: join([threading.Thread(target=cross, args=(s, n, 20))]) if n % 300 == 0 else None,
]

problems = []


def cross(shared, seed, crossings):
    chosen = random.Random(seed)
    try:
        for _ in range(crossings):
            chosen.choice(CROSSINGS)(shared, chosen.randrange(10000))
            trim(shared)
    except BaseException as error:
        problems.append(error)
        raise


def join(threads):
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()


def alive():
    """What is alive: values of the runtime, and blocks of memory or, where the build counts them, references."""
    for _ in range(3):
        gc.collect()
    return proof.live(), sys.gettotalrefcount() if hasattr(sys, "gettotalrefcount") else proof.blocks()


def round_of(threads, crossings):
    shared = Shared()
    join([threading.Thread(target=cross, args=(shared, number, crossings)) for number in range(threads)])


def end():
    shared = Shared()
    for number in range(8):
        threading.Thread(target=cross, args=(shared, number, 10**9), daemon=True).start()
    time.sleep(random.random() / 5)
    return 0


def main(threads="8", crossings="2000"):
    gc.set_threshold(1, 1, 1)
    sys.setswitchinterval(1e-4)
    if threads == "end":
        return end()
    began = time.monotonic()
    round_of(int(threads), min(int(crossings), 20000))  # Fills what is filled once for the process.
    before = alive()
    round_of(int(threads), int(crossings))
    after = alive()
    print(f"{threads} threads, {crossings} crossings each, {time.monotonic() - began:.0f} s: "
          f"values {before[0]} to {after[0]}, references or blocks {before[1]} to {after[1]}")
    # Caches of Python's own keep some hundred blocks; what one kind of crossing loses is more.
    return 1 if problems or after[0] > before[0] or after[1] > before[1] + 400 else 0
