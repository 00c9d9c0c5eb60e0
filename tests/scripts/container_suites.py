"""Runs CPython's own suites for lists and mappings on the containers of the runtime.

    lingsh container_suites.py DIRECTORY...     where the package `test` of CPython lies, and its native modules

A case that the design does not promise is listed below with the reason. Ends with 1 when a case outside of the lists
fails, and when one in the lists passes.
"""

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
    for suite in (BareList, BareMap):
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
