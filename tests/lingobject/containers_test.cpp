#include "support/python_test.h"
#include "support/script.h"
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
    """Only `at`, `length`, `set`, `appendAt` and `removeAt`: the rest is what the interface does with them."""
    content = ling.List()
    def answer(name, *rest): return read(content, name) if name == 'length' else call(content, name, *rest)
    return puppets.BareSequence(answer)
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

}  // namespace
