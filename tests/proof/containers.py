"""A random program of operations on containers of both worlds, beside a model of each in plain Python.

`run(data, crowd)` makes a few containers out of bytes (native ones, Python's own and classes derived from them) and does
to each, through `ling`, what the same bytes do to its model. Every answer, every error with its text and what is left in
the container have to be the same. `crowd(container, threads, count)` changes a container from native threads.
"""

import collections
import copy
import operator
import pickle

import ling
from ling.python import from_python, to_python

MISSING = object()
call = ling.bound_method


def refuse(text):
    raise RuntimeError(text)


CONTAINERS = (list, tuple, dict, set, collections.UserList)

# What the models stand on: how native values are equal and shown.


def same(a, b):
    """Equal as the runtime has it: a truth value is no number, and a Python object equals Python objects alone."""
    if isinstance(a, Native) or isinstance(b, Native):
        return type(a) is type(b) and (a is b or a.equals(b))
    return isinstance(a, bool) == isinstance(b, bool) and a == b


def find(items, value, start=0, equal=same):
    return next((i for i in range(start, len(items)) if equal(items[i], value)), -1)


def find_key(keys, value):
    """What can change has no hash of its content: it is found as the object that it is."""
    changes = isinstance(value, (Native, *CONTAINERS)) and not isinstance(value, tuple)
    return find(keys, value, 0, operator.is_ if changes else same)


def crossed(value):
    """What becomes of a value on its way to `ling`."""
    return int(value) if isinstance(value, float) and value.is_integer() else value


def shown(value, whole=True):
    """The display text; text has quotes inside of a container alone."""
    if isinstance(value, Native):
        return value.shown()
    if value is None or isinstance(value, bool):
        return str(value).lower()
    return value if isinstance(value, str) and whole else repr(value)


def item(value):
    return shown(value, False)


def source(value):
    return "'" + value.replace("'", "''") + "'" if isinstance(value, str) else repr(value)


def class_of(value):
    """The name of the class that a value has in the runtime."""
    for kind, name in {bool: "Boolean", int: "Integer", str: "String", float: "Float", type(None): "None", bytes: "ByteArray",
                       Native: type(value).__name__[10:], dict: "python.PythonProxyMapping", set: "python.PythonProxySet",
                       object: "python.PythonProxySequence"}.items():
        if isinstance(value, kind):
            return name


class Native:
    """What a native container is to do. The names are those of the runtime's members."""

    def __init__(self, items=()):
        self.items = []
        self.fill(items)

    __hash__ = object.__hash__

    def __eq__(self, other):
        return same(self, other)

    def __iter__(self):
        return iter(list(self.items))

    def __len__(self):
        return len(self.items)

    def __contains__(self, value):
        return self.contains(value)

    finder = staticmethod(find_key)

    def contains(self, value):
        return self.finder(self.items, value) >= 0

    def clear(self):
        self.items.clear()

    def collect(self):
        return NativeList(self)

    @staticmethod
    def walk(items):
        """What an iteration of the runtime gives: of a Python sequence, what stands under each index."""
        if isinstance(items, dict):
            return iter(list(items.keys()))
        if isinstance(items, (Native, set)):
            return iter(list(items))
        if isinstance(items, CONTAINERS):
            return (items.__getitem__(i) for i in range(items.__len__()))
        refuse(f"Unable to cast a value of class 'ling.{class_of(items)}' to 'ling.I_Iterable'.")


class NativeList(Native):
    finder = staticmethod(find)

    def fill(self, items):
        self.extend(items)

    def equals(self, other):
        return len(self.items) == len(other.items) and all(map(same, self.items, other.items))

    def shown(self):
        return f"[{', '.join(map(item, self.items))}]"

    def __repr__(self):
        return f"[{', '.join(map(source, self.items))}]"

    def position(self, index):
        if not isinstance(index, int) or isinstance(index, bool):
            refuse(f"An index must be an integer, not a value of class 'ling.{class_of(index)}'.")
        return index + len(self.items) if index < 0 else index

    def existing(self, index):
        position = self.position(index)
        return position if 0 <= position < len(self.items) else refuse(f"Index out of range: {index}.")

    def at(self, index):
        return self.items[self.existing(index)]

    def atOr(self, index, fallback):
        try:
            return self.at(index)
        except RuntimeError:
            return fallback

    def set(self, index, item):
        self.items[self.existing(index)] = item

    def append(self, item):
        self.items.append(item)

    def appendAt(self, index, item):
        self.items.insert(max(self.position(index), 0), item)

    def extend(self, items):
        self.items += list(self.walk(items))

    def pop(self, index=-1):
        return self.items.pop(self.existing(index))

    def removeAt(self, index, count=1):
        if self.position(index) is not None and count > 0:
            first = self.existing(index)
            if first + count > len(self.items):
                refuse(f"Index out of range: {index + count - 1}.")
            del self.items[first:first + count]

    def removeOne(self, item):
        found = find(self.items, item)
        if found >= 0:
            del self.items[found]
        return found >= 0

    def indexOf(self, item, start=0):
        return find(self.items, item, max(self.position(start), 0))

    def __getitem__(self, index):
        return self.at(index) if type(index) is int else self.no_key(index)

    def __setitem__(self, index, item):
        self.set(index, item) if type(index) is int else self.no_key(index)

    def __delitem__(self, index):
        self.removeAt(index) if type(index) is int else self.no_key(index)

    @staticmethod
    def no_key(index):
        raise KeyError(shown(index))

    def __add__(self, items):
        if isinstance(items, collections.UserList):
            return NotImplemented  # It has a way of its own to be added to something.
        return NativeList(self.items + list(self.walk(items)))

    def __mul__(self, count):
        return NativeList(self.items * count)


class NativeSet(Native):
    def fill(self, items):
        self.extend(items)

    def equals(self, other):
        return len(self) == len(other) and all(map(other.contains, self.items))

    def shown(self):
        return f"{{{', '.join(map(item, self.items))}}}" if self.items else "Set()"

    def __repr__(self):
        return f"Set([{', '.join(map(source, self.items))}])"

    def insert(self, item):
        return not self.contains(item) and not self.items.append(item)

    def remove(self, item):
        found = find_key(self.items, item)
        if found >= 0:
            del self.items[found]
        return found >= 0

    def extend(self, items):
        for item in list(self.walk(items)):
            self.insert(item)


class NativeMap(Native):
    def fill(self, pairs):
        self.stored = []
        for key in pairs:
            self.set(key, pairs[key])

    def equals(self, other):
        return len(self) == len(other) and all(
            other.contains(key) and same(value, other.get(key)) for key, value in zip(self.items, self.stored))

    def shown(self):
        return f"{{{', '.join(f'{item(k)}: {item(v)}' for k, v in zip(self.items, self.stored))}}}"

    def __repr__(self):
        return f"{{{', '.join(f'{source(k)}: {source(v)}' for k, v in zip(self.items, self.stored))}}}"

    def clear(self):
        self.items.clear()
        self.stored.clear()

    def get(self, key, fallback=MISSING):
        found = find_key(self.items, key)
        if found < 0 and fallback is MISSING:
            refuse(f"Key not found: {shown(key)}.")
        return self.stored[found] if found >= 0 else fallback

    def set(self, key, value):
        found = find_key(self.items, key)
        if found < 0:
            self.items.append(key)
            self.stored.append(value)
        else:
            self.stored[found] = value

    def remove(self, key):
        value = self.get(key)
        found = find_key(self.items, key)
        del self.items[found]
        del self.stored[found]
        return value

    def __getitem__(self, key):
        if isinstance(key, (Native, *CONTAINERS)) or not self.contains(key):
            raise KeyError(shown(key))
        return self.get(key)

    __setitem__ = set

    def __delitem__(self, key):
        self.remove(key)

    keys = property(lambda self: NativeList(self.items))
    values = property(lambda self: NativeList(self.stored))


NativeList.__name__, NativeSet.__name__, NativeMap.__name__ = (f"ling~ling`{name}" for name in ("List", "Set", "Map"))

# Python's own containers, as their proxies use them.


def refuse_three(self, item):
    if item == 3:
        raise OSError("three")
    set.add(self, item)


def keep(self):
    raise OSError("kept")


# Classes whose methods, for which operations stand, do something else.
OwnList = type("OwnList", (list,), {
    "__getitem__": lambda self, index: list.__getitem__(self, index if index != 1 else 0),
    "__setitem__": lambda self, index, item: list.__setitem__(self, index, ("set", item)),
    "__delitem__": lambda self, index: list.__delitem__(self, -1),
    "__len__": lambda self: list.__len__(self) + 1,
    "__contains__": lambda self, item: item == 3,
    "append": lambda self, item: list.insert(self, 0, item),
    "insert": lambda self, index, item: list.insert(self, 0, item),
    "extend": lambda self, items: list.append(self, len(list(items))),
    "pop": lambda self, index=-1: ("popped", list.pop(self, index)),
    "count": lambda self, item: 3,
    "index": lambda self, item, start=0: start + 100,
    "clear": lambda self: list.append(self, "cleared"),
})
OwnSet = type("OwnSet", (set,), {
    "__contains__": lambda self, item: not set.__contains__(self, item),
    "__len__": lambda self: set.__len__(self) * 2,
    "add": refuse_three,
    "remove": lambda self, item: set.clear(self),
})
OwnDict = type("OwnDict", (dict,), {
    "__contains__": lambda self, key: key != 1,
    "__getitem__": lambda self, key: [key],
    "__setitem__": lambda self, key, value: dict.__setitem__(self, key, ("set", value)),
    "pop": lambda self, key: ("popped", key),
    "keys": lambda self: reversed(list(dict.keys(self))),
    "clear": keep,
})


class Items(collections.UserList):
    pass


def index_of(x, item, start=0):
    try:
        return x.index(item, (start + 2**31) % 2**32 - 2**31)  # Its low 32 bits reach Python.
    except Exception:
        return -1


def at_or(x, index, fallback):
    try:
        return x.__getitem__(index)
    except Exception:
        return fallback


def remove_at(x, index, count=1):
    for _ in range(count):
        x.__delitem__(index)


def remove_one(x, item):
    return x.count(item) > 0 and (x.remove(item), True)[1]


def taken_out(x, item):
    try:
        x.remove(item)
        return True
    except Exception:
        return False


def add_one(x, item):
    before = x.__len__()
    x.add(item)
    return before < x.__len__()


def add_all(x, items):
    for item in Native.walk(items):
        x.add(item)


SHARED = {"clear": lambda x: x.clear(), "length": lambda x: x.__len__()}
PROXIED = {
    "list": SHARED | {
        "at": lambda x, i: x.__getitem__(i), "atOr": at_or, "indexOf": index_of, "removeAt": remove_at,
        "set": lambda x, i, v: x.__setitem__(i, v), "append": lambda x, v: x.append(v), "removeOne": remove_one,
        "appendAt": lambda x, i, v: x.insert(i, v), "extend": lambda x, v: x.extend(v), "pop": lambda x, *i: x.pop(*i or [-1]),
        "contains": lambda x, v: x.__contains__(v)},
    "set": SHARED | {"insert": add_one, "remove": taken_out, "extend": add_all},
    "map": SHARED | {
        "get": lambda x, k, v: x.__getitem__(k) if x.__contains__(k) else v, "set": lambda x, k, v: x.__setitem__(k, v),
        "remove": lambda x, k: x.pop(k), "contains": lambda x, k: x.__contains__(k),
        "keys": lambda x: NativeList(list(x.keys())), "values": lambda x: NativeList(list(x.values()))},
}

# Members by kind, each with what its arguments are: an index, a value, a count, a container.
MEMBERS = {
    "list": {"at": "i", "atOr": "iv", "indexOf": "vn", "removeAt": "ic", "set": "iv", "append": "v", "removeOne": "v",
             "appendAt": "iv", "extend": "s", "pop": "i", "contains": "v", "clear": "", "length": "", "collect": ""},
    "set": {"insert": "v", "remove": "v", "extend": "s", "contains": "v", "clear": "", "length": "", "collect": ""},
    "map": {"get": "vv", "set": "vv", "remove": "v", "contains": "v", "keys": "", "values": "", "clear": "", "length": "",
            "collect": ""},
}
PROPERTIES = ("length", "keys", "values")


def set_item(x, key, value):
    x[key] = value


def delete_item(x, key):
    del x[key]


# What Python's own syntax does with a wrapper, and the model alike.
SLOTS = {
    "x[i]": (lambda x, k: x[k], "i"), "x[v]": (lambda x, k: x[k], "v"), "x[i]=": (set_item, "iv"),
    "x[v]=": (set_item, "vv"), "del x[i]": (delete_item, "i"), "v in x": (lambda x, v: v in x, "v"),
    "list(x)": (lambda x: list(x), ""), "len(x)": (len, ""), "x == y": (lambda x, y: x == y, "s"),
    "repr(x)": (repr, ""), "x + y": (lambda x, y: x + y, "s"), "x * c": (lambda x, c: x * c, "c"),
}
KINDS = {"set": ("x[i]", "x[v]", "x[i]=", "x[v]=", "del x[i]", "x + y", "x * c"), "map": ("x[i]", "x[i]=", "x + y", "x * c")}

ATOMS = [0, 1, 2, 3, -1, True, False, None, 1.5, 2.0, "a", "b", "\u20ac'\"", "", b"x", (1, 2), 2**62, -2**63]
MAKERS = [("list", ling.List, NativeList), ("set", ling.Set, NativeSet), ("map", ling.Map, NativeMap),
          ("list", list, list), ("set", set, set), ("map", dict, dict), ("list", OwnList, OwnList),
          ("set", OwnSet, OwnSet), ("map", OwnDict, OwnDict), ("list", Items, Items)]
INDEXES = [*range(-4, 5), 99, -99, 2**62, "a", None, 1.5, 2.0, True, (0,)]
LEAVES = 3


class Program:
    """The containers of one run, `ours[i]` beside `models[i]`. Those in front may be items of the others."""

    def __init__(self, data, crowd):
        self.data, self.place, self.crowd = data, 0, crowd
        self.made = [MAKERS[self.pick(len(MAKERS))] for _ in range(3 + self.pick(4))]
        self.ours = [make() for _, make, _ in self.made]
        self.models = [make() for _, _, make in self.made]
        self.log = [[make.__name__ for _, _, make in self.made]]

    def pick(self, count):
        self.place += 1
        return self.data[self.place - 1] % count if self.place <= len(self.data) else 0

    def value(self, target):
        chosen = self.pick(len(ATOMS) + LEAVES)
        if chosen < len(ATOMS):
            return ATOMS[chosen], crossed(ATOMS[chosen])
        return self.pair(chosen - len(ATOMS)) if self.holds(target) else (chosen, chosen)

    def holds(self, target):
        """Whether it may hold others. The order of a Python set of objects is that of their addresses."""
        return target >= LEAVES and not issubclass(self.made[target][2], set)

    def pair(self, which):
        return self.ours[which], self.models[which]

    def argument(self, what, target):
        if what in "in":
            index = INDEXES[self.pick(len(INDEXES) if what == "i" else 12)]
            return index, crossed(index)
        if what == "c":
            count = self.pick(5) - 1
            return count, count
        if what == "s" and (chosen := self.pick(len(self.made) + 2)) < len(self.made):
            return self.pair(chosen if chosen < LEAVES or self.holds(target) else self.pick(LEAVES))
        return self.value(target)

    def form(self, value, depth=0):
        """The same for a value and for its model: containers of the program by their place, others by their items."""
        for side in (self.ours, self.models):
            for place, known in enumerate(side):
                if value is known or is_wrapper(known) and is_wrapper(value) and ling.is_same(value, known):
                    return ("container", place)
        return self.content(value) if isinstance(value, (Native, *CONTAINERS)) or is_wrapper(value) else (
            type(value).__name__, value)

    def content(self, value):
        if is_wrapper(value):
            kind = ling.kind_of(value)
            pairs = zip(value.keys, value.values) if kind == "map" else value
        else:
            kind = {NativeList: "list", NativeSet: "set", NativeMap: "map"}.get(type(value), type(value).__name__)
            pairs = value
            if isinstance(value, NativeMap):
                pairs = zip(value.items, value.stored)
            elif isinstance(value, dict):
                pairs = dict.items(value)
            elif isinstance(value, Items):
                pairs = value.data
        items = [tuple(map(self.form, pair)) if kind == "map" or isinstance(value, dict) else self.form(pair)
                 for pair in (list.__iter__(pairs) if isinstance(pairs, list) else pairs)]
        return kind, sorted(items, key=repr) if isinstance(value, set) else items

    def outcome(self, operation, *arguments):
        try:
            return self.form(operation(*arguments))
        except Exception as error:
            return type(error).__name__, str(error)

    def step(self):
        target = self.pick(len(self.made))
        kind, make, model = self.made[target]
        native = issubclass(model, Native)
        ours, plain = self.pair(target)
        slots = [name for name in SLOTS if name not in KINDS.get(kind, ())] if native else []
        chosen = self.pick(len(MEMBERS[kind]) + len(slots))
        if chosen < len(slots):
            name = slots[chosen]
            operation, what = SLOTS[name]
            theirs = operation
        else:
            name = list(MEMBERS[kind])[chosen - len(slots)]
            what = MEMBERS[kind][name]
            if name in PROPERTIES:
                operation = lambda x: ling.property_value(x, name)  # noqa: E731
            else:
                operation = lambda x, *a: call(x, name)(*a)  # noqa: E731
            if native:
                theirs = (lambda x: len(x) if name == "length" else getattr(x, name)) if name in PROPERTIES else (
                    lambda x, *a: getattr(x, name)(*a))
            elif name in PROXIED[kind]:
                plainly = PROXIED[kind][name]
                theirs = lambda x, *a: as_ours(plainly, x, a)  # noqa: E731
            else:
                return
        arguments = [self.argument(part, target) for part in what]
        if len(plain) > 40 and what in ("s", "c"):
            return
        self.log.append((target, name, [b for _, b in arguments]))
        found = self.outcome(operation, ours, *(a for a, _ in arguments))
        wanted = self.outcome(theirs, plain, *(b for _, b in arguments))
        self.compare(found, wanted)
        self.compare(self.content(ours), self.content(plain))

    def compare(self, found, wanted):
        if found != wanted:
            raise AssertionError("\n".join([*map(repr, self.log), f"found  {found!r}", f"wanted {wanted!r}"]))

    def travel(self):
        """A copy of a native container, by each way that there is."""
        target = self.pick(len(self.made))
        if not issubclass(self.made[target][2], Native):
            return
        ours, plain = self.pair(target)
        ways = [copy.copy, lambda x: pickle.loads(pickle.dumps(x)), copy.deepcopy, lambda x: from_python(to_python(x))]
        way = self.pick(2) if any(isinstance(item, (set, Items)) for item in plain) else self.pick(1)
        self.log.append((target, "copy", way))
        self.compare(self.content(ways[way](ours)) if not way else self.content(copy.copy(ours)), self.content(plain))

    def share(self):
        """Threads that all change one native container."""
        target = self.pick(len(self.made))
        kind, _, model = self.made[target]
        if not issubclass(model, Native) or len(self.models[target]) > 40:
            return
        ours, plain = self.pair(target)
        self.log.append((target, "crowd"))
        before = len(plain)
        self.crowd(ours, 3, 4)
        for number in range(100, 112):
            {"list": NativeList.append, "set": NativeSet.insert}.get(kind, lambda m, k: m.set(k, k))(plain, number)
        if kind == "map" or kind == "set":
            found, wanted = (sorted(map(repr, self.content(x)[1])) for x in (ours, plain))
        else:
            found, wanted = (sorted(map(repr, self.content(x)[1][before:])) for x in (ours, plain))
        self.compare(found, wanted)
        self.ours[target], self.models[target] = self.made[target][1](), model()
        ours.clear()
        plain.clear()

    def run(self):
        while self.place < len(self.data):
            what = self.pick(32)
            self.share() if what == 0 else self.travel() if what == 1 else self.step()


def as_ours(operation, x, arguments):
    """An exception of Python's, as it comes back through `ling`."""
    try:
        return operation(x, *arguments)
    except Exception as error:
        raise RuntimeError(str(error)) from error


def is_wrapper(value):
    return type(value).__name__.startswith("ling~") and not isinstance(value, Native)


def run(data, crowd):
    Program(data, crowd).run()
