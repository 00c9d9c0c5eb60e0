#include "support/python_test.h"
#include "support/script.h"
#include "support/table.h"
#include "support/things.h"

/// The containers of `ling`, and what its interfaces do for a class that gives no more than their abstract members,
/// beside Python's own: every row of so many operations, with every answer, the content and an iteration that began
/// before.

namespace {

class Containers : public ThingsTest {};

/// `compare(make, model, operations, length)` answers the first row of operations after which the two differ. An
/// operation is a pair of functions, of ours and of the model; each answers a value, or raises.
constexpr const char* kComparing = R"(
import itertools
class Wrong(Exception): pass
def out_of_range(index): return Wrong(f'Index out of range: {index}.')
def outcome(function, container):
    try: return function(container)
    except (RuntimeError, KeyError, Wrong) as error: return str(error)
def compare(make, model, operations, length, snapshots=True):
    for row in itertools.product(operations, repeat=length):
        ours, theirs = make(), model()
        for name in row:
            before, walk = [*theirs], iter(ours)
            found, wanted = [outcome(f, c) for f, c in zip(operations[name], (ours, theirs))]
            if found != wanted: return f'{row}: {name} answers {found!r}, not {wanted!r}'
            if [*ours] != [*theirs] or len(ours) != len(theirs): return f'{row}: {name} leaves {ours}, not {theirs}'
            if snapshots and [*walk] != before: return f'{row}: after {name} an earlier walk differs from {before}'
    return 'alike'
)";

constexpr const char* kSequences = R"(
class Model(list):
    def place(self, index):
        if not -len(self) <= index < len(self): raise out_of_range(index)
        return index
    def put(self, index, value): self[self.place(index)] = value
    def take(self, index=-1): return self.pop(self.place(index))
    def remove_at(self, index, count):
        if count < 1: return
        first = self.place(index) % len(self)
        if first + count > len(self): raise out_of_range(index + count - 1)
        del self[first:first + count]
    def remove_one(self, value):
        return value in self and self.remove(value) is None
    def find(self, value, start=0):
        first = max(start + len(self), 0) if start < 0 else start
        return self.index(value, first) if value in self[first:] else -1
    def at_or(self, index): return self[index] if -len(self) <= index < len(self) else 'else'
def pair(ours, theirs): return ours, theirs
operations = {
    'append 1': pair(lambda x: call(x, 'append', 1), lambda x: x.append(1)),
    'append 2': pair(lambda x: call(x, 'append', 2), lambda x: x.append(2)),
    'remove a 1': pair(lambda x: call(x, 'removeOne', 1), lambda x: x.remove_one(1)),
    'extend': pair(lambda x: call(x, 'extend', (1, 9)), lambda x: x.extend([1, 9])),
    'extend by itself': pair(lambda x: call(x, 'extend', x), lambda x: x.extend(x)),
    'contains': pair(lambda x: call(x, 'contains', 1), lambda x: 1 in x),
    'clear': pair(lambda x: call(x, 'clear'), lambda x: x.clear()),
    'pop': pair(lambda x: call(x, 'pop'), lambda x: x.take()),
}
for i in (0, -1, 9, -9):
    operations[f'insert {i}'] = pair(lambda x, i=i: call(x, 'appendAt', i, 3), lambda x, i=i: x.insert(i, 3))
for i in (0, -1, 2):
    operations[f'set {i}'] = pair(lambda x, i=i: call(x, 'set', i, 6), lambda x, i=i: x.put(i, 6))
    operations[f'pop {i}'] = pair(lambda x, i=i: call(x, 'pop', i), lambda x, i=i: x.take(i))
    operations[f'at or {i}'] = pair(lambda x, i=i: call(x, 'atOr', i, 'else'), lambda x, i=i: x.at_or(i))
    operations[f'find {i}'] = pair(lambda x, i=i: call(x, 'indexOf', 1, i), lambda x, i=i: x.find(1, i))
for i, n in ((0, 1), (1, 2), (-2, 2), (7, 0), (0, -1)):
    operations[f'remove {i}, {n}'] = pair(lambda x, i=i, n=n: call(x, 'removeAt', i, n),
                                          lambda x, i=i, n=n: x.remove_at(i, n))
def foreign():
    """Only these members: the rest is what the interface does with them."""
    content = ling.List()
    def answer(name, *rest): return read(content, name) if name == 'length' else call(content, name, *rest)
    return puppets.bare('I_MutableSequence', 'length at/1 set/2 appendAt/2 removeAt/2', answer)
)";

TEST_F(Containers, SequencesAnswerAsPythonLists) {
    EXPECT_EQ(script(std::string(kComparing) + kSequences + R"(
return [compare(ling.List, Model, operations, 3), compare(lambda: ling.List([5, 1, 2]), lambda: Model([5, 1, 2]), operations, 2),
        compare(foreign, Model, operations, 2, False)])"),
              "['alike', 'alike', 'alike']");
}

/// A truth value is a key of its own in `ling`, and of two equal numbers the first one stays.
TEST_F(Containers, MapsAndSetsAnswerAsPythonsDo) {
    EXPECT_EQ(script(std::string(kComparing) + R"(
def key(value): return (type(value) is bool, value)
class Model:
    def __init__(self): self.pairs = {}
    def __iter__(self): return (k for k, _ in self.pairs.values())
    def __len__(self): return len(self.pairs)
    def set(self, k, v): self.pairs[key(k)] = (self.pairs.get(key(k), (k, 0))[0], v)
    def get(self, k): return self.pairs[key(k)][1] if key(k) in self.pairs else 'absent'
    def remove(self, k):
        if key(k) not in self.pairs: raise Wrong(f'Key not found: {ling.display(k)}.')
        return self.pairs.pop(key(k))[1]
    def values(self): return [v for _, v in self.pairs.values()]
    def insert(self, k): return key(k) not in self.pairs and self.set(k, 0) is None
    def drop(self, k): return self.pairs.pop(key(k), None) is not None
    def extend(self, items):
        for item in items: self.insert(item)
keys = [1, 1.5, True, None, 'a', (1, 'a')]
of_maps = {'clear': (lambda x: call(x, 'clear'), lambda x: x.pairs.clear()),
           'values': (lambda x: [*read(x, 'values')], lambda x: x.values())}
of_sets = {'clear': of_maps['clear'],
           'extend': (lambda x: call(x, 'extend', (1, 'a', 1)), lambda x: x.extend((1, 'a', 1)))}
for k in keys:
    of_maps[f'set {k}'] = lambda x, k=k: call(x, 'set', k, str(k)), lambda x, k=k: x.set(k, str(k))
    of_maps[f'remove {k}'] = lambda x, k=k: call(x, 'remove', k), lambda x, k=k: x.remove(k)
    of_maps[f'get {k}'] = lambda x, k=k: call(x, 'get', k, 'absent'), lambda x, k=k: x.get(k)
    of_maps[f'contains {k}'] = of_sets[f'contains {k}'] = lambda x, k=k: call(x, 'contains', k), lambda x, k=k: key(k) in x.pairs
    of_sets[f'insert {k}'] = lambda x, k=k: call(x, 'insert', k), lambda x, k=k: x.insert(k)
    of_sets[f'remove {k}'] = lambda x, k=k: call(x, 'remove', k), lambda x, k=k: x.drop(k)
return [compare(ling.Map, Model, of_maps, 3), compare(ling.Set, Model, of_sets, 3)])"),
              "['alike', 'alike']");
}

/// `bare` makes an object of an interface that has nothing but the named members, answered as given; a function is
/// called for the answer, and what it raises is the error of the member.
constexpr const char* kBare = R"(
def bare(interface, members, **answers):
    def answer(name, *rest):
        given = answers[name]
        return given(*rest) if callable(given) else given
    return puppets.bare(interface, members, answer)
def steps(*items):
    left = [*items]
    def step():
        item = left.pop(0) if left else StopIteration()
        if isinstance(item, BaseException): raise item
        return item
    return bare('I_Iterator', 'next/0', next=step)
def broken(length): return bare('I_MutableSequence', 'length', length=length)
def every(x):
    asked = [probe(lambda: call(x, m, *a)) for m, a in (('indexOf', [1]), ('indexOf', [1, -1]), ('append', [1]),
             ('pop', []), ('removeOne', [1]), ('clear', []), ('collect', []))]
    return sorted({*asked, probe(len, x)})
)";

constexpr ScriptRow kInterfaces[] = {
    {"LengthFails", "every(broken(lambda: 1 // 0))",
     "['RuntimeError: integer division or modulo by zero', 'ZeroDivisionError: integer division or modulo by zero']"},
    {"LengthIsText", "every(broken('3'))",
     "[\"RuntimeError: Unable to cast a value of class 'ling.String' to 'ling.Integer'.\"]"},
    {"LengthIsNegative",
     "x = broken(-5)\nreturn [call(x, 'collect'), call(x, 'indexOf', 1), probe(lambda: call(x, 'pop'))]",
     "[[], -1, 'RuntimeError: Index out of range: -1.']"},
    {"AbstractMember", "call(broken(1), 'at', 0)", "RuntimeError: Method 'at' not found in: <Bare>."},
    {"IterationFollowsTheLengthAndStaysEnded",
     "c = ling.List([1, 2, 3])\nx = bare('I_Sequence', 'length at/1', length=lambda: len(c), at=lambda i: c[i])\n"
     "w = iter(x)\nseen = [next(w)]\nc.pop()\nseen += [next(w), next(w, 'end')]\nc += [4, 5]\n"
     "return seen + [next(w, 'end')]",
     "[1, 2, 'end', 'end']"},
    {"WhatVanishesBetweenLengthAndItemIsTheEnd",
     "c = ling.List([1, 2])\n"
     "x = bare('I_Sequence', 'length at/1', length=lambda: len(c), at=lambda i: c.clear() or c[i])\nreturn [*x]",
     "[]"},
    {"ExtendingByAnotherViewEnds",
     "c = ling.List([1, 2])\ndef view():\n    return bare('I_MutableSequence', 'length at/1 appendAt/2', "
     "length=lambda: len(c), at=lambda i: c[i], appendAt=lambda i, v: call(c, 'appendAt', i, v))\n"
     "call(view(), 'extend', view())\nreturn [*c]",
     "[1, 2, 1, 2]"},
    {"ExtendingByWhatFailsAddsNothing",
     "c = ling.List([1])\nreturn [probe(c.extend, 5)[:32], probe(c.extend, steps(2, ValueError('Broken.'))), [*c]]",
     "['RuntimeError: Unable to cast a v', 'ValueError: Broken.', [1]]"},
    {"IterationEndsAtAnError",
     "x = steps(1, ValueError('Broken.'), 3)\nreturn [probe(lambda: call(x, 'collect')), call(x, 'collect')]",
     "['ValueError: Broken.', [3]]"},
    {"SearchEndsAtAnError", "call(steps(ValueError('Broken.')), 'contains', 1)", "RuntimeError: Broken."},
    {"DefaultsWalkTheIteration",
     "x = bare('I_Iterable', 'iter/0', iter=lambda: steps(1, 'two', 3.5))\n"
     "return [call(x, 'collect'), call(x, 'contains', 3.5), call(x, 'contains', 4), [*x]]",
     "[[1, 'two', 3.5], True, False, [1, 'two', 3.5]]"},
    {"IteratorGivesWhatItHasLeft", "w = iter(ling.List([1, 2, 3]))\nreturn [call(w, 'next'), call(w, 'collect'), [*w]]",
     "[1, [2, 3], []]"},
    {"WhatGivesNoIterator",
     "[probe(lambda: call(bare('I_Iterable', 'iter/0', iter=None), 'collect')), "
     "probe(lambda: call(bare('I_Iterable', ''), 'collect'))]",
     "[\"RuntimeError: Unable to cast a value of class 'ling.None' to 'ling.I_Iterator'.\", "
     "\"RuntimeError: Method 'iter' not found in: <Bare>.\"]"},
    {"MapDefaults",
     "m = ling.Map({'one': 1, 2: 'two', 'gone': None})\n"
     "x = bare('I_Map', 'keys length get/2', keys=lambda: m.keys, length=3, get=lambda k, d: call(m, 'get', k))\n"
     "return [[*x], [*read(x, 'values')], call(x, 'collect'), len(x), x[2]]",
     "[['one', 2, 'gone'], [1, 'two', None], ['one', 2, 'gone'], 3, 'two']"},
    {"ValuesOfAMapThatCannotBeRead",
     "x = bare('I_Map', 'keys get/2', keys=lambda: ling.List([1, 2]), get=lambda k, d: 1 // (2 - k))\n"
     "return [probe(lambda: read(x, 'values')), [*x]]",
     "['RuntimeError: integer division or modulo by zero', [1, 2]]"},
    {"ValuesOfAMapWhoseKeysFailMidway",
     "read(bare('I_Map', 'keys get/2', keys=lambda: steps(1, ValueError('Broken.')), get=lambda k, d: k), 'values')",
     "RuntimeError: Broken."},
    {"SetDefaults",
     "s = ling.Set()\nx = bare('I_MutableSet', 'iter/0 insert/1', iter=lambda: iter(s), insert=lambda v: s.insert(v))\n"
     "call(x, 'extend', [3, 1, 3, 2])\ncall(x, 'extend', x)\n"
     "return [call(x, 'collect'), call(x, 'contains', 1), call(x, 'contains', 4)]",
     "[[3, 1, 2], True, False]"},
    {"TheFirstItemThatIsRefusedEndsAnExtension",
     "seen = []\nx = bare('I_MutableSet', 'insert/1', insert=lambda v: seen.append(v) or v < 2 or 1 // 0)\n"
     "return [probe(lambda: call(x, 'extend', [1, 2, 3])), seen]",
     "['RuntimeError: integer division or modulo by zero', [1, 2]]"},
};
LING_TABLE(Interfaces, ThingsTest, kInterfaces);

TEST_P(Interfaces, DoTheRestForAbstractMembers) { EXPECT_EQ(outcome(kBare, GetParam()), GetParam().expected); }

}  // namespace
