"""Runs CPython's own suites for lists and mappings on the containers of the runtime.

    lingsh container_suites.py DIRECTORY...     where the package `test` of CPython lies, and its native modules

Each suite runs twice: on the wrappers as they are, and on Python classes that keep their items in them and take all they
know of them from the wrappers' slots. A case that the design does not promise is listed below with the reason. Ends with
1 when a case outside of the lists fails, and when one in the lists passes.
"""

import collections.abc
import reprlib
import sys
import unittest

sys.path += sys.argv[1:]

from test import list_tests, mapping_tests  # noqa: E402

List, Map = ling.List, ling.Map  # noqa: F821


def is_wrapper(value):
    return type(value).__name__.startswith("ling~")


def plain(value):
    """The items of a wrapped container as Python has them."""
    if not is_wrapper(value):
        return value
    if "keys" in value.__dir__:
        return {key: plain(value[key]) for key in value}
    return [plain(item) for item in value]


# The wrappers as they are.


def make_list(items=()):
    made = List()
    for item in items:
        made.append(item)
    return made


def make_map(items=(), **named):
    made = Map()
    for key, value in dict(items, **named).items():
        made[key] = value
    return made


class Bare:
    """What differs throughout, and so is no reason to leave a case out.

    A `ling` container is equal to `ling` containers alone. A failed operation is a `RuntimeError` with the runtime's
    message, also where the index or the arguments are at fault.
    """

    STANDS_FOR = {IndexError: RuntimeError, TypeError: (TypeError, RuntimeError)}

    def assertEqual(self, first, second, message=None):
        if is_wrapper(first) != is_wrapper(second):
            first, second = plain(first), plain(second)
        super().assertEqual(first, second, message)

    def assertRaises(self, expected, *arguments, **named):
        return super().assertRaises(self.STANDS_FOR.get(expected, expected), *arguments, **named)


class BareList(Bare, list_tests.CommonTest):
    type2test = staticmethod(make_list)


class BareMap(Bare, mapping_tests.TestHashMappingProtocol):
    type2test = staticmethod(make_map)


# Python classes around them.


class ListAround(collections.abc.MutableSequence):
    """A Python list whose items are in a `ling` list."""

    __hash__ = None

    def __init__(self, items=()):
        self.items = List(items if type(items) is list else list(items))

    def __len__(self):
        return len(self.items)

    def __iter__(self):
        position = 0
        while position < len(self.items):
            yield self.items[position]
            position += 1

    def position(self, index, what="list index out of range"):
        if not hasattr(index, "__index__"):
            raise TypeError(f"list indices must be integers or slices, not {type(index).__name__}")
        if not -len(self) <= index < len(self):
            raise IndexError(what)
        return index

    def __getitem__(self, index):
        if isinstance(index, slice):
            return type(self)([self.items[i] for i in range(*index.indices(len(self)))])
        return self.items[self.position(index)]

    def __setitem__(self, index, value):
        if not isinstance(index, slice):
            self.items[self.position(index)] = value
            return
        changed = list(self.items)
        changed[index] = value
        self.items.clear()
        self.items += changed

    def __delitem__(self, index):
        positions = range(*index.indices(len(self))) if isinstance(index, slice) else [self.position(index)]
        for position in sorted(positions, reverse=True):
            del self.items[position]

    def insert(self, index, value):
        self.items.appendAt(slice(index, None).indices(len(self))[0], value)

    def append(self, value):
        self.items.append(value)

    def extend(self, values):
        for value in list(self.items) if values is self else values:
            self.items.append(value)

    def clear(self):
        self.items.clear()

    def copy(self):
        return type(self)(list(self.items))

    def count(self, value):
        return list(self.items).count(value)

    def sort(self, *, key=None, reverse=False):
        before = list(self.items)
        ordered = sorted(before, key=key, reverse=reverse)
        if len(self.items) != len(before):
            raise ValueError("list modified during sort")
        self[:] = ordered

    def __eq__(self, other):
        return list(self.items) == list(other) if isinstance(other, (list, ListAround)) else NotImplemented

    def __lt__(self, other):
        return list(self.items) < list(other)

    def __le__(self, other):
        return list(self.items) <= list(other)

    def __add__(self, other):
        return type(self)(list(self.items + list(other)))

    def __mul__(self, count):
        return type(self)(list(self.items * count))

    __rmul__ = __mul__

    def __iadd__(self, other):
        self.items += list(other)
        return self

    def __imul__(self, count):
        self.items *= count
        return self

    @reprlib.recursive_repr("[...]")
    def __repr__(self):
        return repr(self.items)


class MapAround(collections.abc.MutableMapping):
    """A Python mapping whose pairs are in a `ling` map."""

    def __init__(self, items=(), **named):
        self.pairs = Map(dict(items, **named))

    def __len__(self):
        return len(self.pairs)

    def __iter__(self):
        return iter(self.pairs)

    def __contains__(self, key):
        return key in self.pairs

    def __getitem__(self, key):
        return self.pairs[key]

    def __setitem__(self, key, value):
        self.pairs[key] = value

    def __delitem__(self, key):
        if key not in self.pairs:
            raise KeyError(key)
        del self.pairs[key]

    def copy(self):
        return type(self)(self)

    @classmethod
    def fromkeys(cls, keys, value=None):
        made = cls()
        for key in keys:
            made[key] = value
        return made

    @reprlib.recursive_repr("{...}")
    def __repr__(self):
        return repr(self.pairs)


class AroundList(list_tests.CommonTest):
    type2test = ListAround


class AroundMap(mapping_tests.TestHashMappingProtocol):
    type2test = MapAround


SLICES = "A slice is no key of a sequence."
SUBCLASS = "Wrapper types cannot be subclassed."
OWN_NAMES = "The members are those of the `ling` class: at, appendAt, indexOf, removeOne; get, set, keys, values."
OWN_EQUALITY = "The runtime decides what is equal: a Python object equals what Python says only of other Python objects."
FRESH_WRAPPER = "An operator in place answers a fresh wrapper of the same list."
SNAPSHOT = "An iterator walks over the items as they were when it was made."
DEEP = "Rendering goes as deep as the stack allows, which is deeper."
MARKED = "A Python object that cannot show itself shows as its class; the container shows nevertheless."
KEYS = "A key to subscribe with is an immutable value of the runtime, which no object of a Python class is."
PROPERTIES = "`keys` is a property, and so not what dict() and update() call."

EXCLUDED = {
    BareList: {
        "test_addmul": SUBCLASS,
        "test_constructors": "A sequence that tells its end by IndexError is told by a RuntimeError of its `ling` list.",
        "test_contains_fake": OWN_EQUALITY,
        "test_contains_order": OWN_EQUALITY,
        "test_copy": OWN_NAMES,
        "test_count": OWN_NAMES,
        "test_delslice": SLICES,
        "test_exhausted_iterator": SNAPSHOT,
        "test_extend": SLICES,
        "test_extendedslicing": SLICES,
        "test_free_after_iterating": SUBCLASS,
        "test_getitem": SLICES,
        "test_getitemoverwriteiter": SUBCLASS,
        "test_getslice": SLICES,
        "test_iadd": FRESH_WRAPPER,
        "test_imul": FRESH_WRAPPER,
        "test_index": OWN_NAMES,
        "test_init": "The wrapper's `__init__` is Python's own and changes nothing.",
        "test_insert": OWN_NAMES,
        "test_remove": OWN_NAMES,
        "test_repr": "The display text, str(), marks a list in itself as `...`; the source text, repr(), as `[...]`.",
        "test_repr_deep": DEEP,
        "test_reverse": SLICES,
        "test_set_subscript": SLICES,
        "test_setitem": "An index of another kind is an unusable key: a KeyError.",
        "test_setslice": SLICES,
        "test_slice": SLICES,
        "test_slice_assign_iterator": SLICES,
        "test_sort": OWN_NAMES,
        "test_subscript": SLICES,
    },
    AroundList: {
        "test_repr_deep": MARKED,
    },
    BareMap: {
        "test_copy": OWN_NAMES,
        "test_eq": OWN_EQUALITY,
        "test_fromkeys": OWN_NAMES,
        "test_get": "get() without a default fails for a missing key.",
        "test_getitem": KEYS,
        "test_items": OWN_NAMES,
        "test_keys": PROPERTIES,
        "test_pop": OWN_NAMES,
        "test_popitem": OWN_NAMES,
        "test_read": PROPERTIES,
        "test_repr": MARKED,
        "test_repr_deep": DEEP,
        "test_setdefault": OWN_NAMES,
        "test_update": OWN_NAMES,
        "test_values": PROPERTIES,
        "test_write": OWN_NAMES,
    },
    AroundMap: {
        "test_eq": KEYS,
        "test_getitem": KEYS,
        "test_pop": KEYS,
        "test_repr": MARKED,
        "test_repr_deep": MARKED,
        "test_setdefault": KEYS,
    },
}


def run(suite):
    """How many cases ran, the trace of each that failed, and the names of those that the installation cannot run."""
    result = unittest.TestResult()
    unittest.defaultTestLoader.loadTestsFromTestCase(suite).run(result)
    failed = {}
    for case, trace in result.failures + result.errors:
        failed.setdefault(getattr(case, "test_case", case)._testMethodName, trace)
    skipped = {case._testMethodName for case, _ in result.skipped}
    return result.testsRun, failed, skipped


def main():
    wrong = 0
    for suite in (BareList, AroundList, BareMap, AroundMap):
        excluded = EXCLUDED.get(suite, {})
        count, failed, skipped = run(suite)
        for name in sorted(failed.keys() - excluded.keys()):
            print(f"{suite.__name__}.{name} fails:\n{failed[name]}")
        for name in sorted(excluded.keys() - failed.keys() - skipped):
            print(f"{suite.__name__}.{name} passes, but is excluded: {excluded[name]}")
        wrong += len(failed.keys() ^ (excluded.keys() - skipped))
        print(f"{suite.__name__}: {count} cases, {len(failed)} failed, {len(skipped)} skipped")
    return 1 if wrong else 0


sys.exit(main())
