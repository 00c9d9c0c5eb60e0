"""Failure at every point: each allocation, of C++ and of Python's, fails once in turn, through programs that cross every
bridge; and each answer of a foreign container is an error once.

    ling_proof failing.py [STEP [NAME]]     every point, or every STEP-th; of all programs, or of those with NAME in theirs

Each point is tried in a process of its own, on what nothing has warmed up, and once more in one that tries all of them.
Afterwards the program has done what it does, or has said what was wrong and left the value as it was; nothing is
pending, nothing is left alive, and the same program goes through.
"""

import copy
import datetime
import decimal
import faulthandler
import gc
import itertools
import os
import pickle
import sys

import ling
import proof
import puppets
from ling.python import LanguagePython, evaluate, evaluate_expr, evaluate_method, from_python, to_python

call, read = ling.bound_method, ling.property_value

VALUES = {"number": 2**62, "float": 2.5, "text": "text" * 30, "wide text": "\u20ac" * 50, "bytes": b"bytes" * 9, "tuple": (1, "a"),
          "list": [1], "mapping": {"k": 2}, "set": {3}, "decimal": decimal.Decimal("1.10"), "date": datetime.date(2024, 2, 29),
          "time": datetime.time(1, 2, 3), "date and time": datetime.datetime(2024, 2, 29, 1), "function": len, "class": int,
          "module": os, "object": object()}


class Own:
    """An object of the program's."""

    def __init__(self):
        self.items = [1]

    def add(self, item, times=1):
        return [item] * times

    @property
    def value(self):
        return self.items[0]

    @value.setter
    def value(self, given):
        self.given = given


def raising(*arguments):
    raise ValueError("of the program")


def given(*arguments):
    return arguments


def fresh():
    """An object of a class that nobody has seen."""
    return type("Fresh", (Own,), {"__doc__": "New."})()


def marked(subject):
    subject.mark = "x" * 100
    del subject.mark


def native_list():
    return ling.List([1, "two", 3.5])


def native_map():
    return ling.Map({1: "one", "two": 2})


def native_set():
    return ling.Set([1, "two"])


def pairs(subject):
    return list(zip(subject.keys, subject.values))


def nothing(subject=None):
    return None


# CPython 3.13.0 itself fails where memory ends while it makes a function or compiles, and in an `except`: no program does
# the first or the last, and where one compiles, the allocations of C++ alone fail.
# name: (makes the subject, does something to it, shows what it is). What takes something out is shown as nothing: it is
# out when what it answers finds no memory in Python.
PROGRAMS = {
    "append": (native_list, lambda s: s.append("x" * 100), list),
    "extend": (native_list, lambda s: s.extend(RANGE), list),
    "extend by a proxy": (native_list, lambda s: s.extend(ITEMS), list),
    "list from": (nothing, lambda s: ling.List(ITEMS)[3], repr),
    "tuple from": (nothing, lambda s: ling.Tuple(ITEMS), repr),
    "item": (native_list, lambda s: s[1], list),
    "length": (native_list, len, list),
    "in": (native_list, lambda s: "two" in s, list),
    "concatenate": (native_list, lambda s: (s + ITEMS)[6], list),
    "repeat": (native_list, lambda s: (s * 20)[59], list),
    "concatenate in place": (native_list, lambda s: (s.__iadd__(RANGE), None)[1], lambda s: len(s) in (3, 23)),
    "insert": (native_list, lambda s: s.appendAt(0, "x" * 50), list),
    "pop": (native_list, lambda s: s.pop(), nothing),
    "remove one": (native_list, lambda s: s.removeOne("two"), list),
    "set item": (native_list, lambda s: s.__setitem__(0, Own), list),
    "map set": (native_map, lambda s: s.set("new" * 20, ITEMS), pairs),
    "map grows": (lambda: ling.Map({i: i for i in range(8)}), lambda s: s.set("new" * 20, ITEMS), pairs),
    "map from": (nothing, lambda s: ling.Map(MAPPING)["k"], repr),
    "map item": (native_map, lambda s: s[1], pairs),
    "map get": (native_map, lambda s: s.get(7, "none" * 20), pairs),
    "keys": (native_map, lambda s: s.keys[1], pairs),
    "values of a map": (native_map, lambda s: s.values[0], pairs),
    "map remove": (native_map, lambda s: s.remove(1), nothing),
    "insert into a set": (native_set, lambda s: s.insert("new" * 20), list),
    "set extend": (native_set, lambda s: s.extend(RANGE), list),
    "set remove": (native_set, lambda s: s.remove("two"), list),
    "str": (native_map, str, pairs),
    "repr": (native_map, repr, pairs),
    "source": (native_set, lambda s: LanguagePython.toCode(s), list),
    "doc": (native_list, lambda s: s.__doc__, list),
    "dir": (native_list, lambda s: "append" in dir(s), list),
    "signature": (nothing, lambda s: str(ling.display.__signature__), repr),
    "own members": (native_list, marked, list),
    "proxy append": (list, lambda s: call(s, "append")("x" * 90), list),
    "proxy extend": (list, lambda s: call(s, "extend")(LING), nothing),
    "proxy at": (lambda: ["one" * 30], lambda s: call(s, "at")(0), list),
    "proxy collect": (lambda: [1, "x" * 40], lambda s: call(s, "collect")()[1], list),
    "proxy iterates": (lambda: {1, 2}, lambda s: sum(call(s, "iter")()), len),
    "proxy set": (lambda: {1: 2}, lambda s: call(s, "set")("k", 3), dict.copy),
    "proxy get": (lambda: {1: 2}, lambda s: call(s, "get")(1, 0), dict.copy),
    "proxy keys": (lambda: {1: 2}, lambda s: read(s, "keys")[0], dict.copy),
    "proxy insert": (lambda: {1}, lambda s: call(s, "insert")("k" * 80), nothing),
    "read a member": (Own, lambda s: read(s, "value"), lambda s: s.items),
    "write a member": (Own, lambda s: ling.set_property_value(s, "value", RANGE), lambda s: s.items),
    "method": (Own, lambda s: call(s, "add")(5), lambda s: s.items),
    "method by name": (Own, lambda s: call(s, "add")(6, times=2), lambda s: s.items),
    "call Python": (nothing, lambda s: call(given, "invoke")(ARGUMENTS), repr),
    "call ling": (nothing, lambda s: ling.display(5), repr),
    "call ling by name": (native_list, lambda s: s.indexOf(1, start=0), list),
    "Python raises": (nothing, lambda s: call(raising, "invoke")(ARGUMENTS), repr),
    "ling fails": (native_list, lambda s: s.at(9), list),
    "wrong argument": (native_list, lambda s: s.at("x"), list),
    "no such member": (native_list, lambda s: call(s, "nix"), list),
    "resource": (nothing, lambda s: ling.load_resource("nix:x"), repr),
    "evaluate": (lambda: ling.Map(), lambda s: evaluate("a += 1\nreturn [a]", ONE, MAPPING, s), nothing),
    "evaluate expression": (nothing, lambda s: evaluate_expr("a + 1", ONE, MAPPING), repr),
    "evaluate a method": (Own, lambda s: evaluate_method(s, "return self.items[0]", ONE, MAPPING, ling.Map()), lambda s: s.items),
    "a fresh class": (fresh, lambda s: call(s, "add")(5), lambda s: s.items),
    "a member of a fresh class": (fresh, lambda s: read(s, "value"), lambda s: s.items),
    "a fresh class itself": (fresh, lambda s: ling.List([type(s)])[0] is type(s), lambda s: s.items),
    "hash": (nothing, lambda s: ling.hash_of(LING) and 1, repr),
    "copy": (native_map, lambda s: copy.copy(s)["two"], pairs),
    "pickle": (native_list, lambda s: pickle.loads(pickle.dumps(s))[1], list),
    "to plain": (nothing, lambda s: to_python(NESTED), repr),
    "from plain": (nothing, lambda s: from_python(MAPPING)["k"][0], repr),
    "puppet": (lambda: puppets.Puppet(given), lambda s: s.act(), nothing),
    "puppet's property": (lambda: puppets.Puppet(given), lambda s: s.value, nothing),
    "import": (nothing, lambda s: sys.meta_path[-1].find_spec("puppets", None).name, nothing),
    "find a class": (nothing, lambda s: ling.find_class("ling.List") == ling.List, repr),
} | {f"{name} crosses": (nothing, lambda s, value=value: ling.List((value,))[0], repr) for name, value in VALUES.items()}
RANGE, ITEMS, MAPPING, ONE, ARGUMENTS = range(20), [1, [2], "x", (3,)], {"k": [1, {2}], "c": 2}, {"a": 1}, [1, "x" * 50, 3]
LING, NESTED = ling.List([1, "x"]), from_python({"a": [1, {2}], "b": (3, [4])})
# What says that something could not be had. The text of a `MemoryError` of Python's is empty; CPython loses one where
# memory ends while it notes the traceback.
FAILURES = ("without exception set", "without setting an exception", "memory", "Unable to convert", "is missing", "not found in",
            "Missing '__iter__'", "Can't pickle")
# What a failure has to answer by the rules: a look-up that finds nothing, a comparison that says no.
NEUTRAL = {"in", "remove one", "set remove", "find a class", "dir"}
COMPILING = {"evaluate", "evaluate expression", "evaluate a method"}
# Classes stay in the runtime.
LEAVING = {"a fresh class itself", "a fresh class", "a member of a fresh class"}

# What answers an error at one point: a native container made of answers, and classes of Python's. Then the programs.
left, asked = 0, 0


def tick(*arguments):
    global left, asked
    asked += 1
    left -= 1
    if left == 0:
        raise ValueError("at a point")


def answering(kind, items):
    """A native object of a foreign class whose every answer ticks."""
    def answer(name, *a):
        tick()
        if name == "iter":
            walk = iter(list(items))
            return puppets.Iterator(lambda name: (tick(), next(walk))[1])
        return {"length": lambda: len(items), "at": lambda i: items[i], "set": lambda i, v: items.__setitem__(i, v),
                "removeAt": lambda i: items.__delitem__(i), "remove": lambda k: items.pop(k), "contains": lambda v: v in items,
                "get": lambda k, d: items.get(k, d), "__hash__": lambda: 3, "__display__": lambda: "shown",
                "__compare__": lambda other: 0, "__sub__": lambda other: 1, "__iadd__": lambda other: 2}[name](*a)
    return kind(answer)


def ticking(base, *names):
    def member(name):
        return lambda self, *a: (tick(), getattr(base, name)(self, *a))[1]
    return type("Ticking", (base,), {name: member(name) for name in names})


TickingList = ticking(list, "__len__", "__getitem__", "__setitem__", "__delitem__", "__iter__", "__contains__", "append", "insert",
                      "extend", "pop", "remove", "count", "index", "clear", "__repr__")
TickingDict = ticking(dict, "__len__", "__getitem__", "__setitem__", "__contains__", "keys", "values", "pop", "clear")
TickingSet = ticking(set, "__len__", "__iter__", "__contains__", "add", "remove", "clear")
Key = ticking(str, "__eq__", "__repr__")
Key.__hash__ = str.__hash__


def tries(*operations):
    """Each on a list of its own, which is either as it was or as it has to be."""
    return {f"{place}": (lambda: ling.List([0]), lambda s, do=do: do(s), list) for place, do in enumerate(operations)}


ANSWERS = {}
for source, make in {"foreign sequence": lambda: answering(puppets.Sequence, [1, 2, 3]), "Python list": lambda: TickingList([1, 2, 3]),
                     "Python set": lambda: TickingSet([1, 2, 3]), "foreign iterable": lambda: answering(puppets.Iterable, [1, 2, 3]),
                     "Python mapping": lambda: TickingDict({1: 2, 3: 4})}.items():
    for place, do in enumerate([lambda s, x: s.extend(x), lambda s, x: list(s + iter(ling.List(x))), lambda s, x: list(ling.Set(x)),
                                lambda s, x: list(ling.List(x)), lambda s, x: list(call(s, "__add__")(x)), lambda s, x: s.append(x),
                                lambda s, x: list(call(x, "iter")()), lambda s, x: list(call(x, "collect")()), lambda s, x: len(to_python(x))]):
        ANSWERS[f"{source} {place}"] = (lambda: ling.List([0]), lambda s, do=do, make=make: (do(s, make()), None)[1], len)


class Allocations:
    """The points at which memory is asked for."""

    programs = PROGRAMS
    stop = staticmethod(proof.stop)

    @staticmethod
    def arm(nth, name):
        proof.fail_at(nth, name in COMPILING)

    @staticmethod
    def says(error):
        if isinstance(error, MemoryError) or isinstance(error.__cause__, MemoryError):
            return True
        return not str(error) or any(text in str(error) for text in FAILURES)


class Answers:
    """The points at which an answer is asked for."""

    programs = ANSWERS

    @staticmethod
    def arm(nth, name):
        global left, asked
        left, asked = nth, 0

    @staticmethod
    def stop():
        global left
        left = 0
        return asked

    @staticmethod
    def says(error):
        return "at a point" in str(error)


def attempt(points, name, nth, expected=None):
    """One run with one failure. Answers how many points there were, with the outcome, and what is wrong."""
    make, act, look = points.programs[name]
    subject, result, error = make(), None, None
    before = look(subject)
    points.arm(nth, name)
    try:
        result = act(subject)
    except BaseException as caught_error:
        error = caught_error
    try:
        count = points.stop()
    except (MemoryError, RuntimeError):
        count = points.stop()
    wrong = []
    try:
        len(())
    except BaseException as pending:
        wrong.append(f"{pending!r} was pending")
    after = look(subject)
    if error is not None:
        if nth and expected is not None and not points.says(error) and repr(error) != expected[1][0]:
            wrong.append(f"it says {error!r}")
        if after != before:
            wrong.append(f"it failed with {error!r} and left {after!r:.200} of {before!r:.200}")
    elif expected is not None and (repr(result), after) != expected[1] and name not in NEUTRAL:
        wrong.append(f"in silence {result!r:.200} and {after!r:.200} instead of {expected[1]!r:.300}")
    return count, (repr(result if error is None else error), after), wrong


def examine(points, name, numbers, tell):
    """Tries the points one after the other. `tell` is called before each, and with what is wrong."""
    expected = attempt(points, name, 0)
    for nth in numbers if numbers is not None else itertools.count(1):
        tell(nth, None)
        before = proof.live()
        count, _, wrong = attempt(points, name, nth, expected)
        _, again, _ = attempt(points, name, 0)
        if again != expected[1]:
            wrong.append(f"afterwards it answers {again!r:.200}")
        if proof.live() > before and name not in LEAVING:
            gc.collect()
            if proof.live() > before:
                wrong.append(f"{proof.live() - before} values are left")
        for line in wrong:
            tell(nth, line)
        if nth > count:
            break


def in_child(work):
    """Runs work(tell) in a process of its own. Answers what it told, and how it ended."""
    reading, writing = os.pipe()
    child = os.fork()
    if child == 0:
        os.close(reading)
        try:
            work(lambda nth, line: os.write(writing, f"{nth} {line or ''}\n".encode()))
            os._exit(0)
        except BaseException as error:
            os.write(writing, f"0 {error!r}\n".encode())
            os._exit(1)
    os.close(writing)
    with os.fdopen(reading, errors="replace") as told:
        lines = [line.rstrip("\n").split(" ", 1) for line in told]
    status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    found = [(int(nth), line) for nth, line in lines if line]
    if status:
        found.append((int(lines[-1][0]) if lines else 0, f"ended with {status}"))
    return found, max([int(nth) for nth, _ in lines], default=0)


def main(step="1", only=""):
    faulthandler.enable()
    tried = failures = 0
    for points in (Allocations, Answers):
        for name in [name for name in points.programs if only in name]:
            found, last = in_child(lambda tell: examine(points, name, None, tell))
            for nth in range(1, last, int(step)):
                def cold(tell):
                    tell(nth, None)
                    for line in attempt(points, name, nth)[2]:
                        tell(nth, line)
                found += [(nth, f"cold: {line}") for _, line in in_child(cold)[0]]
                tried += 1
            tried += last
            failures += len(found)
            print(f"{name}: {last} points" + "".join(f"\n    {nth}: {line}" for nth, line in found[:6]), flush=True)
    print(f"{tried} points, {failures} wrong")
    return 1 if failures else 0
