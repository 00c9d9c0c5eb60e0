#include "support/python_test.h"
#include "support/script.h"
#include "support/table.h"
#include "support/things.h"

/// Values that have no form in `ling` (an integer beyond 64 bits, text with a lone surrogate, a complex number),
/// through every slot of every kind of wrapper: each raises what its conversion raised, and leaves nothing pending.

namespace {

class PendingErrors : public ThingsTest {};

constexpr const char* kAttempts = R"(
import operator

VALUES = {2**64: OverflowError, -2**63 - 1: OverflowError, '\ud800': UnicodeEncodeError, 1j: TypeError}

def wrappers():
    return [things.Thing('box'), things.Bare(), things.add, things.Thing, things, things.failing(2), ling.List([1]),
            ling.Map({'a': 1}), ling.Set([1]), iter(ling.List([1])), ling.List().append, ling.Date]

def set_item(w, key, value): w[key] = value
def delete_item(w, key): del w[key]

# By name: the operation, and what else than the conversion's error may come of it, since it comes first.
OPERATIONS = {
    'set declared': (lambda w, v: setattr(w, 'name', v), ()),
    'set own': (lambda w, v: setattr(w, 'colour', v), ()),
    'get item': (lambda w, v: w[v], ()),
    'set item 0': (lambda w, v: set_item(w, 0, v), ()),
    'set item a': (lambda w, v: set_item(w, 'a', v), ()),
    'set under': (lambda w, v: set_item(w, v, 1), ()),
    'delete item': (lambda w, v: delete_item(w, v), ()),
    'contains': (lambda w, v: v in w, ()),
    'call': (lambda w, v: w(v), (RuntimeError,)),
    'call second': (lambda w, v: w(1, v), (RuntimeError,)),
    'call named': (lambda w, v: w(a=v), (RuntimeError,)),
    'call mixed': (lambda w, v: w(1, b=v), (RuntimeError,)),
    'call many': (lambda w, v: w(1, 2, 3, 4, 5, v), (RuntimeError,)),
    'multiply': (operator.mul, ()),
    'multiply in place': (operator.imul, ()),
}
for operation in (operator.sub, operator.isub, operator.truediv, operator.itruediv, operator.add, operator.iadd,
                  operator.eq, operator.ne, operator.lt, operator.le, operator.gt, operator.ge, operator.contains,
                  operator.concat, operator.iconcat):
    OPERATIONS[operation.__name__] = (operation, ())

def outcome(operation, wrapper, value):
    try:
        result = operation(wrapper, value)
    except BaseException as error:
        result = error
    try:
        len(())  # A call that succeeds with an error pending fails.
    except BaseException as error:
        return f'left {error!r}'
    return result

def isFine(result, value, also):
    if isinstance(value, (str, complex)) and isinstance(result, TypeError):
        return True  # Python itself refuses to multiply by these, and to call what is not callable.
    return isinstance(result, (VALUES[value], TypeError, *also) if also else VALUES[value])

wrong, count = [], 0
for name, (operation, also) in OPERATIONS.items():
    for value in VALUES:
        for wrapper in wrappers():
            result = outcome(operation, wrapper, value)
            count += 1
            if not isFine(result, value, also):
                wrong.append(f'{name} of {type(wrapper).__name__} with {value!a}: {result!r}')
return '\n'.join([str(count), *wrong])
)";

TEST_F(PendingErrors, AreRaisedWhereTheyArise) { EXPECT_EQ(script(kAttempts), "1392"); }

constexpr const char* kManyItems = R"(
import collections

def sources(items):
    yield from (lambda: items, lambda: tuple(items), lambda: dict.fromkeys(items), lambda: iter(items),
                lambda: (item for item in items), lambda: frozenset(items), lambda: collections.deque(items),
                lambda: collections.UserList(items), lambda: dict.fromkeys(items).keys(), lambda: set(items),
                lambda: dict(enumerate(items)).values(), lambda: call(items, 'iter'),
                lambda: call(collections.UserList(items), 'iter'))

def raised(function, *arguments):
    try:
        return function(*arguments)
    except Exception as error:
        return repr(error)

def add_in_place(target, items): target += items

def targets():
    old = ling.List([9]), ling.Set([9]), ling.Map({9: 9})
    return [(None, ling.List), (None, ling.Tuple), (None, ling.Set), (old[0], old[0].extend), (old[1], old[1].extend),
            (old[0], lambda items: call(old[0], '__add__', items)), (old[0], lambda items: old[0] + iter(items)),
            (old[0], lambda items: add_in_place(old[0], iter(items))),
            (old[2], lambda items: call(old[2], '__init__', dict.fromkeys(items))),
            (old[2], lambda items: call(old[2], '__init__', dict(enumerate(items)))),
            (None, lambda items: ling.Map(dict.fromkeys(items)))]

wrong, count = [], 0
for value in (2**70, '\ud800', 1j):
    expected = raised(ling.List().append, value)
    for source in sources([1, value, 3]):
        for position, (target, operation) in enumerate(targets()):
            result = raised(lambda: operation(source()))
            count += 1
            if result != expected or target is not None and list(target) != [9]:
                wrong.append(f'{position} of {type(source()).__name__} with {value!a}: {result!a}, {target!r}')
return '\n'.join([str(count), *wrong])
)";

TEST_F(PendingErrors, EndOperationsOnManyItemsAndChangeNothing) { EXPECT_EQ(script(kManyItems), "429"); }

/// What is raised as no `Exception`, out of every place where `ling` calls Python, is raised again as the same object
/// when control is back, and stops what was going on.
constexpr const char* kInterruptions = R"(
import asyncio
interruption = None
def stop(*arguments): raise interruption
class Stops:
    __repr__ = __str__ = __eq__ = __lt__ = __gt__ = __int__ = __getattr__ = stop
    __hash__ = object.__hash__
class Unhashable(Stops):
    __hash__ = stop
class Items(list):
    __getitem__ = __delitem__ = __len__ = __iter__ = __contains__ = append = index = remove = pop = stop
class Distinct(set):
    remove = add = __len__ = stop
class Keys(dict):
    keys = values = __getitem__ = __contains__ = stop
def generator():
    yield 1
    stop()
class Nameless(type):
    __module__ = property(stop)
class Refusal(things.Refusal.exception, metaclass=Nameless): pass
class Asked:
    count = 0
    def __eq__(self, other):
        Asked.count += 1
        return stop() if Asked.count == 5 else False
    __hash__ = lambda self: 1
many, some, pairs = ling.List([Asked() for _ in range(1000)]), ling.Set(), ling.Map()
for insert in [some.insert, lambda key: pairs.set(key, 1)] * 4:
    Asked.count = 0
    insert(Asked())

ATTEMPTS = [
    lambda: repr(ling.List([Stops()])), lambda: str(ling.List([Stops()])), lambda: ling.display(Stops()),
    lambda: ling.python.LanguagePython.toCode(Stops()), lambda: ling.List([Stops()]) == ling.List([Stops()]),
    lambda: ling.compare_objects(Stops(), Stops()), lambda: Stops() in ling.List([Stops()]),
    lambda: ling.List([Stops()]).indexOf(Stops()), lambda: ling.List().append(Stops()),
    lambda: ling.List([1, Stops()]), lambda: ling.hash_of(Unhashable()), lambda: call(stop, 'invoke', [1]),
    lambda: call(Items([1]), 'append', 1), lambda: call(Items([1]), 'indexOf', 1), lambda: call(Items([1]), 'at', 0),
    lambda: call(Items([1]), 'atOr', 0, 5), lambda: call(Items([1]), 'removeAt', 0), lambda: list(call(Items([1]), 'iter')),
    lambda: call(Items([1]), 'pop'), lambda: ling.List(Items([1])), lambda: call(Items([1]), 'contains', 1),
    lambda: call(Distinct([1]), 'remove', 1), lambda: call(Distinct([1]), 'insert', 1),
    lambda: call(Distinct([1]), 'extend', [1]), lambda: read(Keys(), 'keys'), lambda: call(Keys(), 'get', 1),
    lambda: ling.Map(Keys()), lambda: ling.List(generator()), lambda: call({1}, 'extend', generator()),
    lambda: read(Stops(), 'a'), lambda: ling.bound_method(Stops(), 'a'), lambda: setattr(ling.List(), 'a', Stops()),
    lambda: ling.python.evaluate('stop()', {}, {'stop': stop}), lambda: ling.python.evaluate_expr('stop()', {}, {'stop': stop}),
    lambda: Asked() in many, lambda: many.indexOf(Asked()), lambda: many.removeOne(Asked()),
    lambda: [some.insert(Asked()) for _ in range(3)],
    lambda: [pairs.set(Asked(), 1) for _ in range(3)], lambda: some.insert(Unhashable()),
    lambda: pairs.set(Unhashable(), 1), lambda: pairs.remove(Unhashable()), lambda: Refusal().__reduce_ex__(4),
]
wrong = []
for interruption in (SystemExit((7, 'status')), KeyboardInterrupt(3), asyncio.CancelledError('task')):
    for position, attempt in enumerate(ATTEMPTS):
        Asked.count = 0
        try:
            result = attempt()
        except Exception as error:
            result = f'swallowed {error!r}'
        except BaseException as error:
            result = error
        if result is not interruption or Asked.count > 9 or probe(len, ()) != '0':
            wrong.append(f'{position} with {interruption!r}: {result!r} {Asked.count}')
sizes = [len(ATTEMPTS), len(some), len(pairs)]
for container in (many, some, pairs):
    container.clear()  # Their items lead back to them, through both languages.
return sizes + wrong
)";

TEST_F(PendingErrors, InterruptionsReachTheProgram) { EXPECT_EQ(script(kInterruptions), "[43, 5, 5]"); }

constexpr ScriptRow kRows[] = {
    {"AttributeName", "setattr(l, '\\udfff', 1)",
     "UnicodeEncodeError: 'utf-8' codec can't encode character '\\udfff' in position 0: surrogates not allowed"},
    {"DeletedAttributeName", "delattr(l, 'a\\udfff')",
     "UnicodeEncodeError: 'utf-8' codec can't encode character '\\udfff' in position 1: surrogates not allowed"},
    {"Complex", "l.append(1j)",
     "TypeError: int() argument must be a string, a bytes-like object or a real number, not 'complex'"},
    {"CopyOfAContainer", "ling.python.from_python([2**64, Int()])", "OverflowError: int too big to convert"},
    {"IterationThatFails", "ling.List(__import__('collections').UserDict({1: 2}))", "KeyError: 0"},
    {"GeneratorThatFails", "ling.Set(1 // x for x in [1, 0])", "ZeroDivisionError: integer division or modulo by zero"},
    {"MappingThatFails",
     "class Keys(dict):\n    def __getitem__(self, key): raise LookupError(key)\nreturn probe(ling.Map, Keys(a=1))",
     "LookupError: a"},
    {"InsideAContainerOnlyWhenTaken", "x = ling.List([[2**64]])\nreturn x[0] == [2**64]", "true"},
    {"ItemOfAPythonList", "ling.bound_method([2**64], 'at')(0)", "OverflowError: int too big to convert"},
    {"ValuesOfAPythonMapping", "read({1: 2**64, 2: Int()}, 'values')", "OverflowError: int too big to convert"},
    {"KeysOfAPythonMapping", "read({Int(): 1, 2**64: 2}, 'keys')", "OverflowError: int too big to convert"},
    {"ClassMetBesideABadItem",
     "probe(lambda: read({1: 2**64, 2: string.Formatter}, 'values'))\n"
     "return ling.List([string.Formatter])[0] is string.Formatter",
     "true"},
    {"DefiningClassOfABoundMethod",
     "read(fractions.Fraction(1).limit_denominator, 'definingClass') is fractions.Fraction", "True"},
    {"DefaultsOfAFunction", "read(lambda a=2**64, b=Int(): 1, 'defaults')", "OverflowError: int too big to convert"},
    {"ExtendingAPythonSetStops", "s = {1}\nreturn probe(lambda: call(s, 'extend', [5, 2**64, 7])) + repr(s)",
     "OverflowError: int too big to convert{1, 5}"},
};
LING_TABLE(PendingErrorRows, PendingErrors, kRows);

TEST_P(PendingErrorRows, SayWhatWasWrong) {
    EXPECT_EQ(outcome("l = ling.List([1])\nclass Int:\n    def __int__(self): return int('7')\n"
                      "import fractions, string\n",
                      GetParam()),
              GetParam().expected);
}

}  // namespace
