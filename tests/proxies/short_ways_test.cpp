#include "support/python_test.h"
#include "support/script.h"
#include "support/table.h"

namespace {

/// Some operations on exact containers go past the named Python method. Nobody may see a difference.
class ShortWays : public PythonTest {};

/// Classes that override every method that an operation stands for, and a comparison of one operation of `ling` with
/// the same thing done in Python: the outcome, its text included, and what is left in the container.
constexpr const char* kComparing = R"(
import array, collections
class PlainList(list): pass
class OddList(list):
    def __getitem__(self, index): return ('item', super().__getitem__(index))
    def __setitem__(self, index, value): super().__setitem__(index, ('set', value))
    def __delitem__(self, index): super().__delitem__(-1)
    def __len__(self): return super().__len__() + 100
    def __contains__(self, value): return value == 'odd'
    def append(self, value): super().append(('appended', value))
    def insert(self, index, value): super().insert(0, value)
    def extend(self, items): super().append(list(items))
    def pop(self, index=-1): return ('popped', super().pop(index))
    def remove(self, value): raise KeyError(value)
    def count(self, value): return 3
    def index(self, value, start=0): return start + 100
    def clear(self): super().append('cleared')
class PlainDict(dict): pass
class OddDict(dict):
    def __contains__(self, key): return True
    def __getitem__(self, key): return ('value', key)
    def __setitem__(self, key, value): super().__setitem__(key, ('set', value))
    def __len__(self): return 7
    def pop(self, key): return ('popped', key)
    def keys(self): return ['k']
    def values(self): return iter('vw')
    def clear(self): raise OSError('kept')
class PlainSet(set): pass
class OddSet(set):
    def add(self, value): super().add(('added', value))
    def remove(self, value): super().clear()
    def __len__(self): return super().__len__() * 2
    def __contains__(self, value): return False
    def __iter__(self): return iter('xyz')
    def clear(self): super().add('cleared')

def outcome(function):
    try: return repr(function())
    except Exception as error: return str(error)
wrong, compared = [], []
def compare(name, make, ours, theirs):
    compared.append(name)
    a, b = make(), make()
    basic = next(c for c in (list, dict, set, object) if isinstance(a, c))
    found, wanted = outcome(lambda: ours(a)), outcome(lambda: theirs(b))
    if (found, basic.__repr__(a)) != (wanted, basic.__repr__(b)) and basic is not object or found != wanted:
        wrong.append((name, type(a).__name__, found, wanted))
def done(result): return None
)";

TEST_F(ShortWays, AgreeForSequences) {
    EXPECT_EQ(script(std::string(kComparing) + R"(
indexes = [0, 1, -1, -3, 3, -4, 99, -99, 2**62, 'a', None, 1.5, True, (0,)]
values = [1, 2, 'absent', None, [], 'odd']
def search(x, value, start):
    try: return x.index(value, start)
    except Exception: return -1
def remove_one(x, value):
    if x.count(value) <= 0: return False
    x.remove(value)
    return True
def remove_at(x, index, count):
    for _ in range(count): x.__delitem__(index)
for kind in (list, PlainList, OddList):
    make = lambda: kind([1, 2, 3])
    for i in indexes:
        compare(('at', i), make, lambda x: call(x, 'at', i), lambda x: x.__getitem__(i))
        compare(('set', i), make, lambda x: call(x, 'set', i, 'v'), lambda x: x.__setitem__(i, 'v'))
        compare(('pop', i), make, lambda x: call(x, 'pop', i), lambda x: x.pop(i))
        compare(('insert', i), make, lambda x: call(x, 'appendAt', i, 'v'), lambda x: done(x.insert(i, 'v')))
        for count in (-1, 0, 1, 2, 5):
            compare(('removeAt', i, count), make, lambda x: call(x, 'removeAt', i, count),
                    lambda x: remove_at(x, i, count))
    for value in values:
        compare(('append', value), make, lambda x: call(x, 'append', value), lambda x: x.append(value))
        compare(('contains', value), make, lambda x: call(x, 'contains', value), lambda x: x.__contains__(value))
        compare(('removeOne', value), make, lambda x: call(x, 'removeOne', value), lambda x: remove_one(x, value))
        for start in (0, 1, -1, 9):
            compare(('indexOf', value, start), make, lambda x: call(x, 'indexOf', value, start),
                    lambda x: search(x, value, start))
    for items in ([], (4, 5), 'ab', 5, None):
        compare(('extend', items), make, lambda x: call(x, 'extend', items), lambda x: x.extend(items))
    compare('length', make, lambda x: read(x, 'length'), lambda x: x.__len__())
    compare('clear', make, lambda x: call(x, 'clear'), lambda x: x.clear())
    compare('collect', lambda: kind([1, 2]), lambda x: list(call(x, 'atOr', i, 0) for i in range(2)),
            lambda x: [x.__getitem__(i) for i in range(2)])
return repr(wrong) + str(len(compared) > 300)
)"),
              "[]True");
}

TEST_F(ShortWays, AgreeForMappingsAndSets) {
    EXPECT_EQ(script(std::string(kComparing) + R"(
keys = ['a', 1, True, None, (1,), 2.5, 'absent', b'b', [], -1, 2**62]
def get(x, key): return x.__getitem__(key) if x.__contains__(key) else 'default'
for kind in (dict, PlainDict, OddDict):
    make = lambda: kind({'a': 1, 1: 'one', None: 2, (1,): 3, 2.5: 4})
    for key in keys:
        compare(('get', key), make, lambda x: call(x, 'get', key, 'default'), lambda x: get(x, key))
        compare(('set', key), make, lambda x: call(x, 'set', key, 'v'), lambda x: x.__setitem__(key, 'v'))
        compare(('remove', key), make, lambda x: call(x, 'remove', key), lambda x: x.pop(key))
        compare(('contains', key), make, lambda x: call(x, 'contains', key), lambda x: x.__contains__(key))
    compare('length', make, lambda x: read(x, 'length'), lambda x: x.__len__())
    compare('keys', make, lambda x: list(read(x, 'keys')), lambda x: list(x.keys()))
    compare('values', make, lambda x: list(read(x, 'values')), lambda x: list(x.values()))
    compare('clear', make, lambda x: call(x, 'clear'), lambda x: x.clear())
def insert(x, value):
    before = x.__len__()
    x.add(value)
    return before < x.__len__()
def remove(x, value):
    try: x.remove(value)
    except Exception: return False
    return True
def extend(x, items):
    for item in items: x.add(item)
for kind in (set, PlainSet, OddSet):
    make = lambda: kind([1, 'a', (2,)])
    for value in keys:
        compare(('insert', value), make, lambda x: call(x, 'insert', value), lambda x: insert(x, value))
        compare(('remove', value), make, lambda x: call(x, 'remove', value), lambda x: remove(x, value))
        compare(('contains', value), make, lambda x: call(x, 'contains', value), lambda x: x.__contains__(value))
    for items in ([], [5, 5, 'a'], [5, [], 6]):
        compare(('extend', items), make, lambda x: call(x, 'extend', items), lambda x: extend(x, items))
    compare('length', make, lambda x: read(x, 'length'), lambda x: x.__len__())
    compare('collect', make, lambda x: list(call(x, 'collect')), lambda x: list(x.__iter__()))
    compare('clear', make, lambda x: call(x, 'clear'), lambda x: x.clear())
return repr(wrong) + str(len(compared) > 200)
)"),
              "[]True");
}

/// Classes whose methods nobody can replace are read through their slots, and those derived from them are not.
TEST_F(ShortWays, AgreeForOtherSequences) {
    EXPECT_EQ(script(std::string(kComparing) + R"(
class OddDeque(collections.deque):
    def __getitem__(self, index): return ('item', index)
    def __len__(self): return 1000
class Instance(collections.deque): pass
def on_instance():
    x = Instance([1, 2, 3])
    x.__getitem__ = lambda index: 'of the instance'
    return x
makers = [lambda: range(2, 20, 3), lambda: range(0), lambda: range(2**70, 2**70 + 3),
          lambda: collections.deque([1, 'a', None]), lambda: array.array('h', [5, -6]), lambda: memoryview(b'abc'),
          lambda: OddDeque([1]), on_instance, lambda: collections.UserList([1, 2])]
for make in makers:
    for i in [0, 1, -1, -2, 5, -9, 2**62, 'a', None, True]:
        if isinstance(make(), range) and make() and make()[0] > 2**64 and make().__len__() > 0: continue
        compare(('at', i), make, lambda x: call(x, 'at', i), lambda x: x.__getitem__(i))
    compare('length', make, lambda x: read(x, 'length'), lambda x: x.__len__())
compare('no length', lambda: range(2**64), lambda x: read(x, 'length'), lambda x: x.__len__())
return repr(wrong) + str(len(compared) > 80)
)"),
              "[]True");
}

constexpr ScriptRow kOperations[] = {
    {"AtInTuple", "(10, 20);call(x, 'at', -3)", "RuntimeError: tuple index out of range | (10, 20)"},
    {"AtOr", "[10];call(x, 'atOr', 0, 5)", "10 | [10]"},
    {"AtOrDefault", "[10];call(x, 'atOr', 3, 5)", "5 | [10]"},
    {"AtOrBadIndex", "[10];call(x, 'atOr', None, 5)", "5 | [10]"},
    {"SetInTuple", "(1,);call(x, 'set', 0, 0)",
     "RuntimeError: The method is missing: __setitem__, target object: (1,). | (1,)"},
    {"AppendItself", "[];call(x, 'append', x)", "None | [[...]]"},
    {"IndexOfNarrowsTheStart", "[5];call(x, 'indexOf', 5, 2**32)", "0 | [5]"},
    {"DefaultDictIsNotAsked", "__import__('collections').defaultdict(list);call(x, 'get', 'k', 0)",
     "0 | defaultdict(<class 'list'>, {})"},
    {"RemoveUnhashable", "{1};call(x, 'remove', [1])", "False | {1}"},
};
LING_TABLE(Operations, PythonTest, kOperations);

/// What no method of Python's stands for alone; the object is shown after the operation.
TEST_P(Operations, OfProxiesAnswer) {
    const std::string x = GetParam().code;
    const std::size_t at = x.find(';');
    EXPECT_EQ(script("x = " + x.substr(0, at) + "\nreturn probe(lambda: " + x.substr(at + 1) + ") + ' | ' + repr(x)"),
              GetParam().expected);
}

TEST_F(ShortWays, CollectingAListSurvivesItsShrinking) {
    EXPECT_EQ(script(R"(
class Shrinks:
    def __index__(self):
        items.clear()
        return 7
items = [1, Shrinks(), 3, 4]
return repr(list(call(items, 'collect')))
)"),
              "[1, 7]");
}

TEST_F(ShortWays, CollectingAListFollowsItsGrowth) {
    EXPECT_EQ(script(R"(
class Grows:
    def __index__(self):
        if len(items) < 40: items.append(Grows())
        return 7
items = [Grows()]
return repr(set(call(items, 'collect'))) + str(len(items))
)"),
              "{7}40");
}

}  // namespace
