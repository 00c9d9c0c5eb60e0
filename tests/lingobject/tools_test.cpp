#include "support/python_test.h"
#include "support/script.h"
#include "support/table.h"
#include "support/things.h"

/// Python's own tools on wrappers: each works, or refuses with an error that says what it cannot do.

namespace {

constexpr ScriptRow kTools[] = {
    {"GcDoesNotTrack", "[__import__('gc').is_tracked(v) for v in (t, l, add, things)]", "[False, False, False, False]"},
    {"GcSeesNothingInside", "__import__('gc').get_referents(t)", "[]"},
    {"WeakReference", "__import__('weakref').ref(l)",
     "TypeError: cannot create weak reference to 'ling~ling`List' object"},
    {"SizeOf", "__import__('sys').getsizeof(l)", "24"},
    {"SignatureOfAFunction", "str(__import__('inspect').signature(add))",
     "\"(a: 'Integer', b: 'Integer') -> 'Integer'\""},
    {"SignatureOfABoundMethod", "str(__import__('inspect').signature(t.greet))",
     "\"(whom: 'String' = 'you') -> 'String'\""},
    {"SignatureOfAMethodOfAContainer", "str(__import__('inspect').signature(l.append))", "'(item)'"},
    {"SignatureOfAClass", "str(__import__('inspect').signature(ling.List))", "\"(items=None) -> 'List'\""},
    {"SignatureOfWhatIsNotCallable", "__import__('inspect').signature(things.Bare())",
     "TypeError: {things.Bare} is not a callable object"},
    {"SignatureAttributeOfWhatIsNotCallable", "t.__signature__", "AttributeError: __signature__"},
    {"DocOfAFunction", "__import__('inspect').getdoc(add)",
     "'(a: Integer, b: Integer) -> Integer\\n\\nAdds two numbers.'"},
    {"DocOfABoundMethod", "__import__('inspect').getdoc(t.greet)",
     "\"(whom: String = 'you') -> String\\n\\nGreets somebody.\""},
    {"DocOfAProperty", "__import__('inspect').getdoc(type(t).stock)", "'How many there are.'"},
    {"MethodsOfAType", "[n for n, _ in __import__('inspect').getmembers(type(t)) if n[0] != '_']",
     "['broken', 'concat', 'fail', 'greet', 'lazy', 'name', 'size', 'stock']"},
    {"Dir", "[n for n in dir(t) if n[0] != '_']",
     "['broken', 'concat', 'fail', 'greet', 'lazy', 'name', 'size', 'stock']"},
    {"HelpOfATypeShowsItsMembers",
     "import pydoc\ntext = pydoc.plain(pydoc.render_doc(type(t)))\n"
     "wanted = ['A thing with a name.', 'greet(...)', '(self, whom: String) -> String', 'size\\n |      Always "
     "three.', "
     "'Data descriptors defined here:']\nreturn [part for part in wanted if part not in text]",
     "[]"},
    {"NoSource", "__import__('inspect').getsource(add)",
     "TypeError: module, class, method, function, traceback, frame, or code object was expected, got "
     "ling~ling`Function"},
    {"CompletionOfMembers",
     "import rlcompleter\nc = rlcompleter.Completer({'t': t})\nreturn [c.complete('t.s', 0), c.complete('t.s', 1)]",
     "['t.size', 't.stock']"},
    {"BoundMethodsAreEqual", "[t.greet == t.greet, t.greet != things.Thing('box').greet, len({t.greet, t.greet, add})]",
     "[True, True, 2]"},
    {"RemoveABoundMethod", "callbacks = [add, t.greet]\ncallbacks.remove(t.greet)\nreturn callbacks == [add]", "true"},
    {"Format", "f'{l} {l!r} {t}'", "'[1, 2] [1, 2] <things.Thing>'"},
    {"FormatWithASpecification", "f'{l:>9}'",
     "TypeError: unsupported format string passed to ling~ling`List.__format__"},
    {"Match", "match l:\n    case [1, *_]: return 'sequence'\n    case _: return 'value'", "value"},
    {"RunInExecutorFails",
     "import asyncio\nasync def main():\n"
     "    try: await asyncio.get_running_loop().run_in_executor(None, things.refuse, 'no')\n"
     "    except things.Refusal.exception as error: return repr(error.ling)\n"
     "return asyncio.run(main())",
     "{things.Refusal}"},
    {"DoneCallback",
     "import asyncio\nasync def main():\n    done = asyncio.get_running_loop().create_future()\n"
     "    done.add_done_callback(l.append)\n    done.set_result(5)\n    await done\n    await asyncio.sleep(0)\n"
     "asyncio.run(main())\nresult = l[2].result()\nl.clear()\nreturn result",
     "5"},
};
LING_TABLE(WrapperTools, ThingsTest, kTools);

TEST_P(WrapperTools, WorkOrRefuse) {
    EXPECT_EQ(outcome("t = things.Thing('box')\nl = ling.List([1, 2])\nadd = things.add\n", GetParam()),
              GetParam().expected);
}

constexpr ScriptRow kCopies[] = {
    {"List", "return same(lambda way: new(way, l))", "'[1, 2] True False'"},
    {"Map", "return same(lambda way: new(way, ling.Map({'a': None})))", "\"{'a': none} True False\""},
    {"Set", "return same(lambda way: new(way, ling.Set([1])))", "'{1} True False'"},
    {"AShallowCopyHasTheSameItems", "ling.is_same(copy.copy(ling.List([l]))[0], l)", "True"},
    {"SharedStaysShared",
     "def check(way):\n    a, b, m = way([ling.List([l, l]), l, ling.Map({'k': l})])\n"
     "    return [ling.is_same(a[0], x) for x in (a[1], b, m['k'], l)]\nreturn same(check, deep)",
     "[True, True, True, False]"},
    {"AListThatHoldsItself",
     "x = ling.List()\nx.append(x)\ndef check(way):\n    y = way(x)\n    seen = ling.is_same(y[0], y)\n    y.clear()\n"
     "    return seen\nseen = same(check, deep)\nx.clear()\nreturn seen",
     "True"},
    {"AMapAndASetThatHoldThemselves",
     "m = ling.Map()\nm['s'] = s = ling.Set([m])\ndef check(way):\n    y = way(m)\n"
     "    seen = [ling.is_same(x, y) for x in y['s']]\n    y.clear()\n    return seen\n"
     "seen = same(check, deep)\nm.clear()\nreturn seen",
     "[True]"},
    {"ACycleThroughBothWorlds",
     "p = []\np.append(ling.List([p]))\ndef check(way):\n    y = way(p)\n    seen = y[0][0] is y\n    y.clear()\n"
     "    return seen\nseen = same(check, deep)\np.clear()\nreturn seen",
     "True"},
    {"KindsStayWhatTheyAre",
     "r = things.rarities()\nreturn same(lambda way: ling.display(way(r)) == ling.display(r), deep) + ling.display(r)",
     "True[2.0, inf, 01:02:03.000000999, 01:02:03.000000004+01:00, 2024-02-29T01:02:03.000000004+01:00, (1, 2.0), "
     "(1, 2.0), undefined]"},
    {"WhatOneObjectCarries", "l.label = [1]\nreturn same(lambda way: [way(l), way(l).label])", "[[1, 2], [1]]"},
    {"WhatALazyValueStandsFor", "return same(lambda way: [way(things.later(l)), way(things.later(5))])", "[[1, 2], 5]"},
    {"ClassesFunctionsAndModulesByName",
     "values = [ling.List, things.Thing, add, things, ling.python.LanguagePython.typeName]\n"
     "return same(lambda way: [ling.is_same(way(v), v) for v in values])",
     "[True, True, True, True, True]"},
    {"AnObjectThatOptsIn",
     "return same(lambda way: [type(way(things.Keeper(l))).__name__, way(things.Keeper(l)).held])",
     "['ling~things`Keeper', [1, 2]]"},
    {"AnObjectThatHoldsItself",
     "k = things.Keeper(None)\nk.held = ling.List([k])\ndef check(way):\n    y = way(k)\n"
     "    seen = [ling.is_same(y.held[0], y), ling.is_same(y, k)]\n    y.held = None\n    return seen\n"
     "seen = same(check, deep)\nk.held = None\nreturn seen",
     "[True, False]"},
    {"AnExceptionThatStandsForAnError",
     "try: things.refuse('no')\nexcept things.Refusal.exception as error:\n    error.add_note('really')\n"
     "    return same(lambda way: [type(way(error)) is type(error), ling.display(way(error).ling), "
     "way(error).__notes__])",
     "[True, 'no', ['no', 'really']]"},
    {"AnotherObject", "return same(lambda way: way(t))",
     "TypeError: cannot copy or pickle 'things.Thing' object: its class has to have the methods __state__() and "
     "__restore__(state), and to be found by its name"},
    {"AMethodWithItsReceiver",
     "def check(way):\n    bound, items = way((l.append, l))\n    bound(3)\n    return [items, bound == items.append, "
     "l]\n"
     "return same(check, deep)",
     "[[1, 2, 3], True, [1, 2]]"},
    {"AStateThatDoesNotTravel", "return same(lambda way: way(things.Keeper(l.append.bindArgs(1))), deep)[:36]",
     "TypeError: cannot copy or pickle app"},
    {"ANameThatIsGone", "pickle.loads(pickle.dumps(things.Thing, 0).replace(b'Thing', b'Thong'))",
     "AttributeError: the host has nothing called 'things.Thong'"},
    {"NoPickleOfOurs", "__import__('ling.python').python._rebuild('tree', 1)",
     "RuntimeError: This is no pickle of a value of the host."},
    {"AnItemThatTakesTheStateApart",
     "class Hostile:\n    def __int__(self):\n        state.clear()\n        return 1\n"
     "state = {'a': Hostile(), 'b': 2}\nx = __import__('ling.python').python._rebuild('list', None)\n"
     "x.__setstate__((state,))\nreturn [state, l.__class__ is type(l)]",
     "[{}, True]"},
    {"Json", "__import__('json').dumps(l)", "TypeError: Object of type ling~ling`List is not JSON serializable"},
    {"JsonOfNestedContainers",
     "__import__('json').dumps([l, ling.Map({'a': ling.List([l])})], default=ling.python.to_python)",
     "'[[1, 2], {\"a\": [[1, 2]]}]'"},
    {"ToPython", "ling.python.to_python(ling.List([1, [l, (l,)], {'a': ling.Map({2: ling.Set([3])})}, t.size]))",
     "[1, [[1, 2], ([1, 2],)], {'a': {2: {3}}}, 3]"},
    {"ToPythonAndBack",
     "x = {'a': [1, (2, [3]), {4}], 'b': {}, 'c': frozenset([5])}\ny = ling.python.from_python(x)\n"
     "return [ling.display(y), ling.python.to_python(y) == x]",
     "[\"{'a': [1, (2, [3]), {4}], 'b': {}, 'c': {5}}\", True]"},
    {"SharedInBothDirections",
     "x = [[]]\nx += [x[0], x]\ny = ling.python.from_python(x)\nz = ling.python.to_python(y)\n"
     "seen = [ling.is_same(y[0], y[1]), ling.is_same(y[2], y), z[0] is z[1], z[2] is z, z is x]\n"
     "for c in (x, y, z): c.clear()\nreturn seen",
     "[True, True, True, True, False]"},
    {"AnItemThatDoesNotConvert", "ling.python.from_python([[2 ** 64]])", "OverflowError: int too big to convert"},
    {"AnItemThatCannotBeHashed", "ling.python.to_python(ling.Set([l]))", "TypeError: unhashable type: 'list'"},
};
LING_TABLE(WrapperCopies, ThingsTest, kCopies);

/// `same` runs a check with each way of copying and answers what all of them gave.
TEST_P(WrapperCopies, AreWholeOrRefused) {
    EXPECT_EQ(outcome(R"(
import copy, pickle
deep = [copy.deepcopy, *(lambda v, p=p: pickle.loads(pickle.dumps(v, p)) for p in range(6))]
def same(check, ways=[copy.copy, *deep]):
    given = {probe(check, way) for way in ways}
    return given.pop() if len(given) == 1 else given
def new(way, value):
    made = way(value)
    return f'{made} {type(made) is type(value)} {ling.is_same(made, value)}'
t = things.Thing('box')
l = ling.List([1, 2])
add = things.add
)",
                      GetParam()),
              GetParam().expected);
}

}  // namespace
