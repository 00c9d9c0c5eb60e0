#include "support/puppets.h"
#include "support/python_test.h"
#include "support/script.h"
#include "support/table.h"
#include "support/things.h"

/// Native objects that answer badly: with errors, late, with values of the wrong kind, by calling back.

namespace {

/// `make(kind, name=answer...)` is an object that answers so; a function is called for the answer.
constexpr const char* kPrelude = R"(
class Late(Exception): pass
def make(kind, **answers):
    def answer(name, *arguments):
        given = answers[name.strip('_')]
        if isinstance(given, BaseException): raise given
        return given(*arguments) if callable(given) else given
    return getattr(puppets, kind)(answer)
def late(action): return puppets.late(action)[0]
def fail(*arguments): raise ValueError('as wanted')
)";

constexpr ScriptRow kRows[] = {
    {"GetterFails", "make('Puppet', value=fail).value", "RuntimeError: as wanted"},
    {"GetterFailsThroughTheType", "x = make('Puppet', value=fail)\nreturn probe(type(x).value.__get__, x)",
     "RuntimeError: as wanted"},
    {"GetterAnswersLate", "make('Puppet', value=lambda: late(lambda: 5)).value", "5"},
    {"GetterAnswersABigInteger", "make('Puppet', value=2**64).value", "OverflowError: int too big to convert"},
    {"GetterAttributeError", "make('Puppet', value=AttributeError('mine')).value", "RuntimeError: mine"},
    {"GetterStopsIteration", "make('Puppet', value=StopIteration('done')).value", "StopIteration: "},
    {"HasAttributeOfAFailingGetter", "hasattr(make('Puppet', value=fail), 'value')", "RuntimeError: as wanted"},
    {"SetterFails", "setattr(make('Puppet', value=fail), 'value', 1)", "RuntimeError: value: as wanted."},
    {"SetterFailsThroughTheType", "x = make('Puppet', value=fail)\nreturn probe(type(x).value.__set__, x, 1)",
     "RuntimeError: as wanted"},
    {"MethodFails", "make('Puppet', act=fail).act()", "RuntimeError: as wanted"},
    {"MethodCallsBack", "n = []\nreturn [puppets.thrice(lambda: n.append(1) or len(n)), n]", "[3, [1, 1, 1]]"},
    {"MethodReenters",
     "left = [5]\ndef act():\n    left[0] -= 1\n    return 'end' if left[0] == 0 else x.act()\n"
     "x = make('Puppet', act=act)\nresult = x.act()\ndel act, x\nreturn result",
     "end"},
    {"NamesThatAreNone",
     "x = ling.List()\nreturn [probe(x.__getattribute__, 1.5), probe(x.__setattr__, 2**3000, 1), probe(x.__delattr__, "
     "())]",
     "[\"TypeError: attribute name must be string, not 'float'\", \"TypeError: attribute name must be string, not "
     "'int'\", "
     "\"TypeError: attribute name must be string, not 'tuple'\"]"},
    {"EqualFunctionsAreOneKey",
     "x = ling.List()\nreturn [ling.Set([x.append, x.append, x.pop]).length, ling.Map({x.append: "
     "1, x.pop: 2}).get(x.append)]",
     "[2, 1]"},
    {"MethodsOfOnePythonListAreOneKey",
     "m, other = [1], [1]\ndef take(x=m): return ling.bound_method(x, 'append')\n"
     "calls = [take()]\ncalls.remove(take())\n"
     "return [take() == take(), hash(take()) == hash(take()), take() == take(other), ling.Set([take(), "
     "take()]).length]",
     "[True, True, False, 1]"},
    {"MemberAppearsAndVanishes",
     "x = make('Puppet')\nseen = []\nfor turn in range(3):\n    x.mark = turn\n    seen.append(x.mark)\n    del "
     "x.mark\n"
     "    seen.append(hasattr(x, 'mark'))\nreturn seen",
     "[0, False, 1, False, 2, False]"},
    {"MemberVanishesWhileItIsRead",
     "x = make('Puppet', value=lambda: delattr(x, 'mark') or 1)\nx.mark = 1\n"
     "result = [x.value, hasattr(x, 'mark')]\ndel x\nreturn result",
     "[1, False]"},
    {"ObjectGoesWhileItIsCalled", "box = [make('Puppet', act=lambda: box.clear() or 'done')]\nreturn box[0].act()",
     "done"},
    {"LengthIsText", "len(make('Sequence', length='x'))",
     "RuntimeError: Unable to cast a value of class 'ling.String' to 'ling.Integer'."},
    {"LengthIsAWholeFloat", "len(make('Sequence', length=2.0))", "2"},
    {"LengthIsNegative", "len(make('Sequence', length=-1))", "RuntimeError: The length is negative: -1."},
    {"TruthOfANegativeLength", "bool(make('Sequence', length=-5))", "RuntimeError: The length is negative: -5."},
    {"LengthIsHuge", "len(make('Sequence', length=2**63 - 1))", "9223372036854775807"},
    {"LengthFails", "len(make('Sequence', length=fail))", "RuntimeError: as wanted"},
    {"LengthIsLate", "len(make('Sequence', length=lambda: late(lambda: 3)))", "3"},
    {"LengthIsBeyond", "len(make('Sequence', length=2**64))", "OverflowError: int too big to convert"},
    {"ListOfABadLength", "list(make('Sequence', length='x', iter=lambda: iter(ling.List([1]))))",
     "RuntimeError: Unable to cast a value of class 'ling.String' to 'ling.Integer'."},
    {"ItemFails", "make('Sequence', at=fail)[0]", "RuntimeError: as wanted"},
    {"ItemIsLate", "make('Sequence', at=lambda i: late(lambda: i + 1))[4]", "5"},
    {"StoreFails", "x = make('Sequence', set=fail)\ntry: x[0] = 1\nexcept RuntimeError as e: return str(e)",
     "as wanted"},
    {"DeleteFails", "x = make('Sequence', removeAt=fail)\ntry: del x[0]\nexcept RuntimeError as e: return str(e)",
     "as wanted"},
    {"KeyFails", "make('Map', get=fail)['k']", "KeyError: 'k'"},
    {"KeyIsLate", "make('Map', get=lambda k, d: late(lambda: k * 2))['k']", "'kk'"},
    {"MapStoreFails", "x = make('Map', set=fail)\ntry: x['k'] = 1\nexcept RuntimeError as e: return str(e)",
     "as wanted"},
    {"MapDeleteFails", "x = make('Map', remove=fail)\ntry: del x['k']\nexcept RuntimeError as e: return str(e)",
     "as wanted"},
    {"ContainsAnswersANumber", "1 in make('Iterable', contains=lambda v: 1)",
     "RuntimeError: Unable to cast a value of class 'ling.Integer' to 'ling.Boolean'."},
    {"ContainsFails", "1 in make('Iterable', contains=fail)", "RuntimeError: as wanted"},
    {"ContainsIsLate", "1 in make('Iterable', contains=lambda v: late(lambda: True))", "True"},
    {"IterationFailsAtOnce", "list(make('Iterator', next=fail))", "[]"},
    {"IterationFailsMidway",
     "n = []\ndef step():\n    n.append(1)\n    if len(n) > 2: fail()\n    return len(n)\n"
     "return list(make('Iterator', next=step))",
     "[1, 2]"},
    {"IterationLeavesNothingPending", "x = make('Iterator', next=fail)\nreturn [probe(next, x), probe(len, ())]",
     "['StopIteration: ', '0']"},
    {"ItemsAreLate", "left = [1, 2]\nreturn list(make('Iterator', next=lambda: late(lambda: left.pop())))", "[2, 1]"},
    {"NextOfABigInteger", "next(make('Iterator', next=2**64))", "OverflowError: int too big to convert"},
    {"IterFails", "iter(make('Iterable', iter=fail))", "RuntimeError: as wanted"},
    {"IterIsNoIterator", "for item in make('Iterable', iter=5): pass\nreturn 'through'",
     "error: iter() returned non-iterator of type 'int'"},
    {"IterIsAPythonIterator", "list(make('Iterable', length=2, iter=lambda: iter([1, 2])))", "[1, 2]"},
    {"IterIsItself", "x = make('Iterable', iter=lambda: x)\nresult = probe(iter, x)\ndel x\nreturn result",
     "{puppets.Iterable}"},
    {"CompareFails", "x = make('Puppet', compare=fail)\nreturn [x == x, x == 5, x != 5]", "[True, False, True]"},
    {"CompareAnswersText", "make('Puppet', compare='x') == 5", "False"},
    {"CompareAnswersLate", "make('Puppet', compare=lambda o: late(lambda: 0)) == 5", "True"},
    {"CompareAnswersAHugeNumber", "[make('Puppet', compare=2**63 - 1) > 5, make('Puppet', compare=-2**63) < 5]",
     "[True, True]"},
    {"CompareAnswersABigInteger", "make('Puppet', compare=2**64) == 5", "OverflowError: int too big to convert"},
    {"HashFails", "isinstance(hash(make('Puppet', hash=fail)), int)", "True"},
    {"DisplayFails", "str(make('Puppet', display=fail))", "'<puppets.Puppet>'"},
    {"DisplayIsNoText", "str(make('Puppet', display=5))", "'<puppets.Puppet>'"},
    {"DisplayIsLate", "str(make('Puppet', display=lambda: late(lambda: 'shown')))", "'shown'"},
    {"DisplayReenters", "x = make('Puppet', display=lambda: str(x))\nresult = probe(str, x)\ndel x\nreturn result",
     "'...'"},
    {"OperatorFails", "make('Puppet', sub=fail) - 1", "RuntimeError: as wanted"},
    {"OperatorAnswersLate", "make('Puppet', sub=lambda o: late(lambda: o * 2)) - 4", "8"},
    {"OperatorFailsLate", "make('Puppet', sub=lambda o: late(fail)) - 4", "RuntimeError: as wanted"},
    {"OperatorAnswersUndefined", "make('Puppet', sub=lambda o: NotImplemented) - 4",
     "TypeError: unsupported operand type(s) for -: 'ling~puppets`Puppet' and 'int'"},
    {"LateIsNotAskedBeforeItIsNeeded", "n = []\nx = late(lambda: n.append(1))\nreturn n", "[]"},
    {"LateAttribute", "late(lambda: things.Thing('box')).name", "'box'"},
    {"LateAssignment", "t = things.Thing('box')\nlate(lambda: t).name = 'can'\nreturn t.name", "can"},
    {"LateItem", "late(lambda: ling.List([7]))[0]", "7"},
    {"LateStore", "l = ling.List([7])\nlate(lambda: l)[0] = 8\nreturn l[0]", "8"},
    {"LateLength", "len(late(lambda: ling.List([7])))", "1"},
    {"LateContains", "7 in late(lambda: ling.List([7]))", "True"},
    {"LateIteration", "list(late(lambda: ling.List([7])))", "[7]"},
    {"LateConcat", "late(lambda: ling.List([7])) + [8]", "[7, 8]"},
    {"LateComparison", "late(lambda: ling.List([7])) == ling.List([7])", "True"},
    {"LateText", "[str(late(lambda: ling.List([7]))), repr(late(lambda: ling.List([7])))]", "['[7]', '[7]']"},
    {"LateHash", "isinstance(hash(late(lambda: ling.List([7]))), int)", "True"},
    {"LateCall", "late(lambda: things.add)(1, 2)", "3"},
    {"LateFailure", "late(fail).name", "RuntimeError: as wanted"},
    {"LateFailureText", "[probe(repr, late(fail)), probe(str, late(fail))]",
     "['RuntimeError: as wanted', \"'as wanted'\"]"},
    {"LateFailureItem", "late(fail)[0]", "RuntimeError: as wanted"},
};
LING_TABLE(HostileObjects, ThingsTest, kRows);

TEST_P(HostileObjects, EndInAValueOrAnError) { EXPECT_EQ(outcome(kPrelude, GetParam()), GetParam().expected); }

}  // namespace
