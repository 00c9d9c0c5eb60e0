#include "support/python_test.h"
#include "support/script.h"
#include "support/table.h"

namespace {

/// Some operations on exact containers go past the named Python method. Nobody may see a difference; that those on
/// lists, mappings and sets show none is for `proof/containers.py`.
class ShortWays : public PythonTest {};

/// A comparison of one operation of `ling` with the same thing done in Python: the outcome, its text included.
constexpr const char* kComparing = R"(
import array, collections
def outcome(function):
    try: return repr(function())
    except Exception as error: return str(error)
wrong, compared = [], []
def compare(name, make, ours, theirs):
    compared.append(name)
    a, b = make(), make()
    found, wanted = outcome(lambda: ours(a)), outcome(lambda: theirs(b))
    if found != wanted:
        wrong.append((name, type(a).__name__, found, wanted))
)";

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
