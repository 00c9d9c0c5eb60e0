#include "support/python_test.h"
#include "support/script.h"
#include "support/things.h"

/// Python's own tools on wrappers: each works, or refuses with an error that says what it cannot do.

namespace {

class WrapperTools : public PythonTest, public testing::WithParamInterface<ScriptRow> {
protected:
    WrapperTools() { defineThings(); }
};

TEST_P(WrapperTools, WorkOrRefuse) {
    EXPECT_EQ(outcome("t = things.Thing('box')\nl = ling.List([1, 2])\nadd = things.add\n", GetParam()),
              GetParam().expected);
}

constexpr ScriptRow kMemory[] = {
    {"GcDoesNotTrack", "[__import__('gc').is_tracked(v) for v in (t, l, add, things)]", "[False, False, False, False]"},
    {"GcSeesNothingInside", "__import__('gc').get_referents(t)", "[]"},
    {"GcCollectsAround", "import gc\nx = [l]\nx.append(x)\ndel x\nreturn gc.collect() > 0 and list(l) == [1, 2]",
     "true"},
    {"WeakReference", "__import__('weakref').ref(l)",
     "TypeError: cannot create weak reference to 'ling~ling`List' object"},
    {"WeakReferenceToAFunction", "__import__('weakref').ref(add)",
     "TypeError: cannot create weak reference to 'ling~ling`Function' object"},
    {"WeakDictionary", "__import__('weakref').WeakValueDictionary({1: t})",
     "TypeError: cannot create weak reference to 'ling~things`Thing' object"},
    {"WeakFinalizer", "__import__('weakref').finalize(t, print)",
     "TypeError: cannot create weak reference to 'ling~things`Thing' object"},
    {"SizeOf", "__import__('sys').getsizeof(l)", "24"},
};
INSTANTIATE_TEST_SUITE_P(Memory, WrapperTools, testing::ValuesIn(kMemory),
                         [](const auto& row) { return row.param.name; });

class WrapperCopies : public WrapperTools {};

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

constexpr ScriptRow kCopies[] = {
    {"List", "return same(lambda way: new(way, l))", "'[1, 2] True False'"},
    {"Map", "return same(lambda way: new(way, ling.Map({'a': None})))", "\"{'a': none} True False\""},
    {"Set", "return same(lambda way: new(way, ling.Set([1])))", "'{1} True False'"},
    {"JsonObject", "return same(lambda way: new(way, ling.JsonObject()))", "'{} True False'"},
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
    {"AnExceptionOfAScriptsOwn", "return same(lambda way: type(way(things.Refusal.exception())).__name__)",
     "'Refusal'"},
    {"AnotherObject", "return same(lambda way: way(t))",
     "TypeError: cannot copy or pickle 'things.Thing' object: its class has to have the methods __state__() and "
     "__restore__(state), and to be found by its name"},
    {"AnotherObjectInside", "return same(lambda way: way([ling.List([t])]), deep)[:51]",
     "TypeError: cannot copy or pickle 'things.Thing' obj"},
    {"ABoundMethod", "return same(lambda way: way(l.append), deep)",
     "TypeError: cannot copy or pickle append(item): no name leads to it"},
    {"AStateThatDoesNotTravel", "return same(lambda way: way(things.Keeper(l.append)), deep)",
     "TypeError: cannot copy or pickle append(item): no name leads to it"},
    {"ANameThatIsGone", "pickle.loads(pickle.dumps(things.Thing, 0).replace(b'Thing', b'Thong'))",
     "AttributeError: the host has nothing called 'things.Thong'"},
    {"NoPickleOfOurs", "__import__('ling.python').python._rebuild('tree', 1)",
     "RuntimeError: This is no pickle of a value of the host."},
    {"AClassThatIsNotPickled", "__import__('ling.python').python._rebuild('new', 'ling.Class')",
     "RuntimeError: This is no pickle of a value of the host."},
    {"AnItemThatTakesTheStateApart",
     "class Hostile:\n    def __int__(self):\n        state.clear()\n        return 1\n"
     "state = {'a': Hostile(), 'b': 2}\nx = __import__('ling.python').python._rebuild('list', None)\n"
     "x.__setstate__((state,))\nreturn [state, l.__class__ is type(l)]",
     "[{}, True]"},
    {"Json", "__import__('json').dumps(l)", "TypeError: Object of type ling~ling`List is not JSON serializable"},
    {"JsonKey", "__import__('json').dumps({l: 1})",
     "TypeError: keys must be str, int, float, bool or None, not ling~ling`List"},
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
    {"NoContainerToConvert", "[ling.python.to_python(v) for v in (5, None, 'a', add)] == [5, None, 'a', add]", "True"},
    {"AnItemThatDoesNotConvert", "ling.python.from_python([[2 ** 64]])", "RuntimeError: int too big to convert"},
    {"AnItemThatCannotBeHashed", "ling.python.to_python(ling.Set([l]))", "RuntimeError: unhashable type: 'list'"},
};
INSTANTIATE_TEST_SUITE_P(Copies, WrapperCopies, testing::ValuesIn(kCopies),
                         [](const auto& row) { return row.param.name; });

constexpr ScriptRow kInspection[] = {
    {"SignatureOfAFunction", "str(__import__('inspect').signature(add))",
     "\"(a: 'Integer', b: 'Integer') -> 'Integer'\""},
    {"SignatureOfABoundMethod", "str(__import__('inspect').signature(t.greet))",
     "\"(whom: 'String' = 'you') -> 'String'\""},
    {"SignatureOfAMethodOfAContainer", "str(__import__('inspect').signature(l.append))", "'(item)'"},
    {"SignatureOfAClass", "str(__import__('inspect').signature(ling.List))", "\"(items=None) -> 'List'\""},
    {"SignatureOfAPartial", "str(__import__('inspect').signature(__import__('functools').partial(add, b=1)))",
     "\"(a: 'Integer', *, b: 'Integer' = 1) -> 'Integer'\""},
    {"SignatureBindsArguments", "__import__('inspect').signature(t.greet).bind('me').arguments", "{'whom': 'me'}"},
    {"SignatureOfWhatIsNotCallable", "__import__('inspect').signature(things.Bare())",
     "TypeError: {things.Bare} is not a callable object"},
    {"SignatureAttributeOfWhatIsNotCallable", "t.__signature__", "AttributeError: __signature__"},
    {"DocOfAFunction", "__import__('inspect').getdoc(add)",
     "'(a: Integer, b: Integer) -> Integer\\n\\nAdds two numbers.'"},
    {"DocOfABoundMethod", "__import__('inspect').getdoc(t.greet)",
     "\"(whom: String = 'you') -> String\\n\\nGreets somebody.\""},
    {"DocOfAnObject", "__import__('inspect').getdoc(t)", "'A thing with a name.'"},
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
    {"HelpOfAnObjectIsThatOfItsType",
     "import pydoc\nreturn pydoc.render_doc(t).split('\\n', 1)[1] == pydoc.render_doc(type(t)).split('\\n', 1)[1]",
     "true"},
    {"HelpOfAListShowsItsMembers",
     "import pydoc\ntext = pydoc.plain(pydoc.render_doc(type(l)))\n"
     "return [name for name in l.__dir__ if name[0] != '_' and name not in text]",
     "[]"},
    {"NoSource", "__import__('inspect').getsource(add)",
     "TypeError: module, class, method, function, traceback, frame, or code object was expected, got "
     "ling~ling`Function"},
    {"CompletionOfMembers",
     "import rlcompleter\nc = rlcompleter.Completer({'t': t})\nreturn [c.complete('t.s', 0), c.complete('t.s', 1)]",
     "['t.size', 't.stock']"},
    {"CompletionOfAMethod", "__import__('rlcompleter').Completer({'t': t}).complete('t.gr', 0)", "'t.greet('"},
};
INSTANTIATE_TEST_SUITE_P(Inspection, WrapperTools, testing::ValuesIn(kInspection),
                         [](const auto& row) { return row.param.name; });

constexpr ScriptRow kFunctions[] = {
    {"Partial", "__import__('functools').partial(add, b=40)(2)", "42"},
    {"LruCache", "f = __import__('functools').lru_cache(add)\nreturn [f(1, 2), f(1, 2), f.cache_info().hits]",
     "[3, 3, 1]"},
    {"BoundMethodsAreEqual", "[t.greet == t.greet, t.greet != things.Thing('box').greet, len({t.greet, t.greet, add})]",
     "[True, True, 2]"},
    {"RemoveABoundMethod", "callbacks = [add, t.greet]\ncallbacks.remove(t.greet)\nreturn callbacks == [add]", "true"},
    {"LruCacheOfAnUnhashableArgument", "__import__('functools').lru_cache(len)([l])",
     "TypeError: unhashable type: 'list'"},
    {"Wraps",
     "f = __import__('functools').wraps(add)(lambda *a: add(*a))\nreturn [f.__name__, f.__wrapped__ == add, f(1, 2)]",
     "['add', True, 3]"},
    {"Reduce", "__import__('functools').reduce(add, l, 10)", "13"},
    {"ReduceOfLists", "__import__('functools').reduce(lambda a, b: a + b, [l, l])", "[1, 2, 1, 2]"},
    {"CompareToKey",
     "key = __import__('functools').cmp_to_key(ling.compare_objects)\nreturn sorted([[2], 1, [1]][::2], key=key)",
     "[[1], [2]]"},
    {"TotalOrdering",
     "import functools\n@functools.total_ordering\nclass Ranked:\n"
     "    def __init__(self, rank): self.rank = ling.List([rank])\n"
     "    def __eq__(self, other): return self.rank == other.rank\n"
     "    def __lt__(self, other): return self.rank < other.rank\n"
     "return [Ranked(1) <= Ranked(2), Ranked(2) <= Ranked(1), Ranked(1) >= Ranked(1)]",
     "[True, False, True]"},
    {"Map", "list(map(add, l, [10, 20]))", "[11, 22]"},
    {"Enumerate", "list(enumerate(l, 1))", "[(1, 1), (2, 2)]"},
    {"Chain", "list(__import__('itertools').chain(l, ling.List([3])))", "[1, 2, 3]"},
    {"Starred", "add(*l)", "3"},
    {"Counter", "__import__('collections').Counter(ling.List(['a', 'b', 'a']))['a']", "2"},
    {"Format", "f'{l} {l!r} {t}'", "'[1, 2] [1, 2] <things.Thing>'"},
    {"FormatWithASpecification", "f'{l:>9}'",
     "TypeError: unsupported format string passed to ling~ling`List.__format__"},
    {"Match", "match l:\n    case [1, *_]: return 'sequence'\n    case _: return 'value'", "value"},
    {"Dataclass",
     "import dataclasses\n@dataclasses.dataclass\nclass Holder:\n    held: object\n"
     "return [repr(Holder(l))[-20:], Holder(l) == Holder(ling.List([1, 2])), probe(dataclasses.asdict, Holder(l))]",
     "['.Holder(held=[1, 2])', True, \"{'held': [1, 2]}\"]"},
};
INSTANTIATE_TEST_SUITE_P(Functions, WrapperTools, testing::ValuesIn(kFunctions),
                         [](const auto& row) { return row.param.name; });

constexpr ScriptRow kConcurrency[] = {
    {"RunInExecutor",
     "import asyncio\nasync def main():\n    loop = asyncio.get_running_loop()\n"
     "    return await asyncio.gather(*(loop.run_in_executor(None, add, i, 1) for i in range(5)))\n"
     "return asyncio.run(main())",
     "[1, 2, 3, 4, 5]"},
    {"RunInExecutorFails",
     "import asyncio\nasync def main():\n"
     "    try: await asyncio.get_running_loop().run_in_executor(None, things.refuse, 'no')\n"
     "    except things.Refusal.exception as error: return repr(error.ling)\n"
     "return asyncio.run(main())",
     "{things.Refusal}"},
    {"CallSoon",
     "import asyncio\nasync def main():\n    loop = asyncio.get_running_loop()\n    loop.call_soon(l.append, 3)\n"
     "    loop.call_later(0.001, l.append, 4)\n    await asyncio.sleep(0.05)\nasyncio.run(main())\nreturn repr(l)",
     "[1, 2, 3, 4]"},
    {"DoneCallback",
     "import asyncio\nasync def main():\n    done = asyncio.get_running_loop().create_future()\n"
     "    done.add_done_callback(l.append)\n    done.set_result(5)\n    await done\n    await asyncio.sleep(0)\n"
     "asyncio.run(main())\nresult = l[2].result()\nl.clear()\nreturn result",
     "5"},
    {"EightThreadsOnOneList",
     "import threading\nx = ling.List()\n"
     "def work(k):\n    for i in range(500):\n        x.append(k)\n        len(x), x[i], k in x\n"
     "threads = [threading.Thread(target=work, args=(k,)) for k in range(8)]\n"
     "for thread in threads: thread.start()\nfor thread in threads: thread.join()\n"
     "return sorted(x) == sorted(list(range(8)) * 500)",
     "true"},
    {"EightThreadsOnOneObject",
     "import threading\nfailures = []\n"
     "def work(k):\n    for i in range(300):\n        t.name = str(k)\n"
     "        if not (t.name in '01234567' and t.greet() and t.size == 3): failures.append(k)\n"
     "threads = [threading.Thread(target=work, args=(k,)) for k in range(8)]\n"
     "for thread in threads: thread.start()\nfor thread in threads: thread.join()\nreturn failures",
     "[]"},
    {"ThreadPool",
     "from concurrent.futures import ThreadPoolExecutor\nwith ThreadPoolExecutor(4) as pool:\n"
     "    return list(pool.map(add, range(4), l * 2))",
     "[1, 3, 3, 5]"},
};
INSTANTIATE_TEST_SUITE_P(Concurrency, WrapperTools, testing::ValuesIn(kConcurrency),
                         [](const auto& row) { return row.param.name; });

}  // namespace
