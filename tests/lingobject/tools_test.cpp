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

constexpr ScriptRow kCopies[] = {
    {"Copy", "__import__('copy').copy(l)", "TypeError: cannot pickle 'ling~ling`List' object"},
    {"DeepCopy", "__import__('copy').deepcopy([t])", "TypeError: cannot pickle 'ling~things`Thing' object"},
    {"CopyOfAFunction", "__import__('copy').copy(add)", "TypeError: cannot pickle 'ling~ling`Function' object"},
    {"Replace", "__import__('copy').replace(t)", "TypeError: replace() does not support ling~things`Thing objects"},
    {"PickleWithEachProtocol",
     "import pickle\nreturn {probe(pickle.dumps, l, p) for p in range(6)} == "
     "{\"TypeError: cannot pickle 'ling~ling`List' object\"}",
     "true"},
    {"PickleOfPlain", "__import__('pickle').dumps(things.Bare())", "TypeError: cannot pickle '>LingObject' object"},
    {"PickleOfAModule", "__import__('pickle').dumps(things)", "TypeError: cannot pickle 'ling~ling`Module' object"},
    {"PickleOfAClass", "__import__('pickle').dumps(things.Thing)", "TypeError: cannot pickle 'ling~ling`Class' object"},
    {"Json", "__import__('json').dumps(l)", "TypeError: Object of type ling~ling`List is not JSON serializable"},
    {"JsonOfAMap", "__import__('json').dumps(ling.Map({}))",
     "TypeError: Object of type ling~ling`Map is not JSON serializable"},
    {"JsonKey", "__import__('json').dumps({l: 1})",
     "TypeError: keys must be str, int, float, bool or None, not ling~ling`List"},
    {"JsonWithADefault", "__import__('json').dumps([l, l], default=list)", "'[[1, 2], [1, 2]]'"},
};
INSTANTIATE_TEST_SUITE_P(Copies, WrapperTools, testing::ValuesIn(kCopies),
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
     "['.Holder(held=[1, 2])', True, \"TypeError: cannot pickle 'ling~ling`List' object\"]"},
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
