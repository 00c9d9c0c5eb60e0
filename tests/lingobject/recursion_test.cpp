#include "support/python_test.h"
#include "support/script.h"
#include "support/small_stack.h"
#include "support/table.h"

/// Containers that hold themselves, or others as deep as memory allows, through `ling` and Python containers: whatever
/// is asked of them comes to an end.

namespace {

/// How to make such a container, how to take it apart again (cycles of `ling` values are not collected), and its texts.
struct Cycle {
    const char* name;
    const char* make;
    const char* undo;
    const char* str;
    const char* repr;

    friend void PrintTo(const Cycle& row, std::ostream* out) { *out << row.name; }
};

constexpr const char* kAsk = R"(
a, b = make(), make()
answers = [str(a), repr(a), ling.display(a), a == b, a < b, a >= b, ling.compare_objects(a, b), hash(a) == hash(a),
           ling.hash_of(a) == ling.hash_of(a), a in [b], isinstance(ling.List([a]) == ling.List([b]), bool)]
undo(a)
undo(b)
return '\n'.join(map(str, answers))
)";

constexpr Cycle kCycles[] = {
    {"ListInItself", "x = ling.List([1]); x.append(x)", "x.clear()", "[1, ...]", "[1, [...]]"},
    {"ListTenTimesInItself", "x = ling.List(); x += [x] * 10", "x.clear()",
     "[..., ..., ..., ..., ..., ..., ..., ..., ..., ...]",
     "[[...], [...], [...], [...], [...], [...], [...], [...], [...], [...]]"},
    {"MapInItself", "x = ling.Map(); x['s'] = x", "x.clear()", "{'s': ...}", "{'s': {...}}"},
    {"ListThroughATuple", "x = ling.List(); x.append((x,))", "x.clear()", "[([...],)]", "[([...],)]"},
    {"ListThroughAPythonDictionary", "x = ling.List(); x.append({1: x})", "x.clear()", "[{1: [...]}]", "[{1: [...]}]"},
    {"ListThroughAnObject",
     "x = ling.List(); x += [type('Holder', (), {'__repr__': lambda self: f'<{x!r}>', '__eq__': lambda *ab: True})()] "
     "* 9",
     "x.clear()", "[<[...]>, <[...]>, <[...]>, <[...]>, <[...]>, <[...]>, <[...]>, <[...]>, <[...]>]",
     "[<[...]>, <[...]>, <[...]>, <[...]>, <[...]>, <[...]>, <[...]>, <[...]>, <[...]>]"},
};
LING_TABLE(RecursiveContainers, PythonTest, kCycles);

TEST_P(RecursiveContainers, ShowCompareAndHash) {
    const Cycle& row = GetParam();
    const std::string make = std::string("def make():\n    ") + row.make + "\n    return x\n";
    const std::string undo = std::string("def undo(x):\n    ") + row.undo + "\n";
    EXPECT_EQ(script(make + undo + kAsk), std::string(row.str) + "\n" + row.repr + "\n" + row.str +
                                              "\nTrue\nFalse\nTrue\n0\nTrue\nTrue\nTrue\nTrue");
}

class DeepContainers : public PythonTest {
protected:
    /// Makes two containers, `levels` deep, and asks everything of them: what answers with a text or an error counts.
    static std::string askAll(const char* step, int levels) {
        return script("def make():\n    x = ling.List([1])\n    for _ in range(" + std::to_string(levels) +
                      "):\n        x = " + step + "\n    return x\na, b = make(), make()\n" + R"(
answers = [probe(str, a), probe(repr, a), probe(ling.display, a), probe(lambda: a == b), probe(lambda: a < b),
           probe(ling.compare_objects, a, b), probe(hash, a), probe(ling.hash_of, a), probe(lambda: b in a)]
def isFine(answer):
    return 'Error' not in answer or answer.endswith('Error: The value is nested too deeply.')
return [answer[:200] for answer in answers if not isFine(answer)])");
    }
};

struct Nesting {
    const char* step;
    int levels;
};
constexpr Nesting kNestings[] = {
    {"ling.List([x])", 100'000},      {"ling.Map({'k': x})", 20'000}, {"ling.List([[x]])", 20'000},
    {"ling.Map({'k': [x]})", 20'000}, {"ling.List([(x,)])", 20'000},  {"ling.List([{'k': x}])", 20'000},
};

TEST_F(DeepContainers, AnswerOrFailOnTheMainStack) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "The thread checker keeps a record of each level, which takes more memory than there may be.";
#endif
    for (const Nesting& nesting : kNestings)
        EXPECT_EQ(askAll(nesting.step, nesting.levels), "[]") << nesting.step;
}

TEST_F(DeepContainers, AnswerOrFailOnASmallStack) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "The thread checker needs more of the stack than this leaves.";
#endif
    for (const Nesting& nesting : kNestings)
        onSmallStack([&nesting] { EXPECT_EQ(askAll(nesting.step, 5'000), "[]") << nesting.step; });
}

/// Python's own `hash` ends the process for these.
TEST_F(DeepContainers, TuplesHashOrFail) {
    EXPECT_EQ(
        script(R"(
def nested(levels):
    x = ()
    for _ in range(levels): x = (1, x)
    return x
deep = nested(300_000)
return [ling.hash_of(nested(1000)) == hash(nested(1000)), probe(ling.hash_of, deep), probe(ling.Set, [deep]),
        probe(ling.Map().get, deep)])"),
        "[True, 'RuntimeError: The value is nested too deeply.', 'RuntimeError: The value is nested too deeply.', "
        "'RuntimeError: The value is nested too deeply.']");
}

/// Each operation asks Python for something that asks for the operation again: through no call that is counted, and
/// long before Python's own limit where the stack is small.
TEST_F(DeepContainers, RecursionThroughBothEndsOnASmallStack) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "The thread checker needs more of the stack than this leaves.";
#endif
    onSmallStack([] {
        EXPECT_EQ(script(R"(
class Equal:
    def __eq__(self, other): return ling.bound_method([Equal()], 'indexOf')(self) == 0
class Iterable:
    def __iter__(self): return ling.bound_method(Iterable(), 'iter')()
class Keys(dict):
    def keys(self): return ling.property_value(Keys(), 'keys')
class Attribute:
    def __getattr__(self, name): return ling.bound_method(Attribute(), name)
class Class:
    __class__ = property(lambda self: ling.List([Class()]))
class Length:
    def __len__(self): return len(ling.List([Length()])) and ling.property_value(Length(), 'length')
    def __getitem__(self, index): return ling.bound_method(Length(), 'at')(index)
def listed(): return ling.List([Class()])
probes = [probe(lambda: Equal() == Equal()), probe(iter, Iterable()), probe(lambda: Keys().keys()),
          probe(lambda: Attribute().name), probe(listed), probe(len, Length()), probe(lambda: Length()[0])]
return len(probes))"),
                  "7");
    });
}

/// A structure of both worlds is shown in a time that grows with its depth.
TEST_F(DeepContainers, AreShownOnceForEachLevel) {
    EXPECT_EQ(script(R"(
shown = []
class Counting:
    def __init__(self, *inner): self.inner = inner
    def __repr__(self):
        shown.append(self)
        return repr(self.inner)
lists = [ling.List() for _ in range(12)]
for each in lists: each.append(Counting(lists[0]))
lists[0].extend([Counting(each) for each in lists])
text = repr(lists[0])
before = len(shown)
text = str(lists[0])
answer = [before, len(shown) - before]
shown.clear()
for each in lists: each.clear()
return answer)"),
              "[24, 24]");
}

/// Each level of Python containers asks its items up to three times, which took for ever from twenty levels on.
TEST_F(DeepContainers, EqualOnesAreFoundEqual) {
    EXPECT_EQ(script(R"(
def make(last, levels):
    x = ling.List([last])
    for _ in range(levels):
        x = ling.List([[x]])
    return x
return [make(1, 40) == make(1, 40), make(1, 40) < make(2, 40), make(2, 40) < make(1, 40), make(2, 40) == make(1, 40)])"),
              "[True, True, False, False]");
}

}  // namespace
