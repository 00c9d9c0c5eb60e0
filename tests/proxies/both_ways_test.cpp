#include "bridge/convert.h"
#include "ling/ling.h"
#include "proxies/python_proxy.h"
#include "support/describe.h"
#include "support/python_test.h"

#include <algorithm>
#include <functional>
#include <regex>
#include <thread>
#include <vector>

namespace {

using ling::Any;
using ling::I_Iterable_Generic;
using ling::I_Map_Generic;
using ling::I_Sequence_Generic;
using ling::iteration;
using ling::List_Generic;
using ling::unchecked;
using ling::python::GilGuard;
using ling::python::PyRef;
using ling::python::PythonProxy;

/// `log` is told of each question that an object is asked.
constexpr const char* kObjects = R"(
import array, collections, functools, warnings
warnings.simplefilter('ignore')
log = []
def told(name, value):
    log.append(name)
    return value
class Index:
    def __init__(self, value): self.value = value
    def __index__(self): return told('index', self.value)
    def __hash__(self): return told('hash', 1)
    def __eq__(self, other): return other == 'same'  # Asked once or twice: a short way looks a key up once.
class Changing:
    def __init__(self, items, change): self.items, self.change = items, change
    def __index__(self): return told('change', self.change(self.items) or 7)
class Raising:
    def __index__(self): raise told('raising', ValueError('no index'))
def changing(items, change, *after):
    items += [1, Changing(items, change), *after]
    return items
class PlainList(list): pass
class OddList(list):
    def __getitem__(self, index): return told('getitem', super().__getitem__(index))
    def __iter__(self): return told('iter', iter('xy'))
class LongerList(list):
    def __len__(self): return told('len', super().__len__() + 2)
class OddDeque(collections.deque):
    def __getitem__(self, index): return told('getitem', index)
class OddDict(dict):
    def __contains__(self, key): return told('contains', True)
    def __getitem__(self, key): return told('getitem', key)
    def keys(self): return told('keys', ['k'])
class PlainDict(dict): pass
class OddSet(set):
    def __iter__(self): return told('iter', iter('xyz'))
class Items:
    def __getitem__(self, index):
        if index > 2: raise IndexError
        return told('getitem', index)
    def __len__(self): return told('len', 5)
def growing_dict():
    made = {}
    made.update({Index(1): 1, 'a': Changing(made, lambda d: d.setdefault(len(d)))})
    return made

class Plain:
    def __init__(self):
        self.field = 5
        self.stored = lambda *a: repr(('stored', a))
        self.shadow = lambda *a: repr(('own', a))
    def method(self, *a): return repr(('method', a))
    def shadow(self, *a): return repr(('shadowed', a))
    def fails(self, *a): raise AttributeError('inside')
    def answers(self, *a): return 2 ** 70
    @staticmethod
    def static(*a): return repr(('static', a))
    @classmethod
    def cls(cls, *a): return repr(('cls', a))
    @property
    def prop(self): return told('prop', lambda *a: repr(('prop', a)))
    @property
    def raising(self): raise told('raising', KeyError('prop'))
    partial = functools.partial(lambda *a: repr(('partial', a)), 1)
    class Inner:
        def __init__(self, *a): log.append(repr(a))
    class Called:
        def __call__(self, *a): return repr(('called', a))
        def __get__(self, one, cls): return told('get', self)
    called = Called()
    number = 7
class Slots:
    __slots__ = 'stored',
    def __init__(self): self.stored = lambda *a: repr(('stored', a))
    method = Plain.method
class GetAttr(Plain):
    def __getattr__(self, name):
        log.append(name)
        if name == 'other': raise ZeroDivisionError
        return lambda *a: repr((name, a))
class GetAttribute(Plain):
    def __getattribute__(self, name): return told(name, super().__getattribute__(name))
class Meta(type):
    def meta(cls, *a): return repr(('meta', a))
class Made(metaclass=Meta): pass
)";

/// A value in one line, with what is in it.
std::string shown(const Any& value) {
    const bool isList = value.is(ling::Kind::List);
    return describe(value) + (isList ? " " + ling::display(value).toStdString() : "");
}

struct Operation {
    const char* name;
    std::function<std::string(const Any& value)> run;
};

/// Where the runtime may go past a call, it is made to call as well: nobody sees which it was. A proxy that carries a
/// member of its own, whichever, is asked for everything.
class BothWays : public PythonTest {
protected:
    static Any marked(const Any& proxy) {
        static const ling::method_ident_untyped unrelated("both ways, unrelated");
        (void)ling::raw_insert_method(proxy, unrelated, ling::make_function("unrelated", "", [] {}));
        return proxy;
    }

    /// What comes of an operation, and what it leaves behind.
    std::string outcome(const char* expression, const Operation& operation, bool isMarked) {
        std::string text;
        {
            GilGuard gil;
            run("log.clear()");
            PyRef object = eval(expression);
            const Any proxy = ling::python::toLing(object.get());
            EXPECT_EQ(takePending(), "") << expression;
            text = operation.run(isMarked ? marked(proxy) : proxy);
            text += " | " + takePending();
            PyRef left = PyRef::steal(PyObject_Repr(object.get()));
            text += " | " + std::string(left ? PyUnicode_AsUTF8(left.get()) : takePending());
        }
        return std::regex_replace(text + " | " + this->text("log"), std::regex(" at 0x[0-9a-f]+"), "");
    }

    void compare(std::span<const char* const> expressions, const std::vector<Operation>& operations) {
        {
            GilGuard gil;
            define("both_ways_test_objects", kObjects);
        }
        for (const char* expression : expressions)
            for (const Operation& operation : operations)
                EXPECT_EQ(outcome(expression, operation, false), outcome(expression, operation, true))
                    << expression << ", " << operation.name;
    }
};

std::string walk(const Any& iterable) {
    iteration steps = unchecked<I_Iterable_Generic>(iterable).beginImpl();
    std::string line;
    for (int i = 0; i < 20 && steps.advance(); ++i)
        line += shown(steps.item()) + ", ";
    return line + (steps.failed() ? shown(steps.error()) : "end");
}

std::string collected(const Any& iterable) {
    const auto items = unchecked<I_Iterable_Generic>(iterable).collectImpl();
    return shown(items ? Any(*items) : items.error());
}

TEST_F(BothWays, AgreeForSequences) {
    constexpr const char* kSequences[] = {
        "[1, 2, 3]",
        "(1, -5, 2**40, 2**62)",
        "[]",
        "()",
        "[1, 2.5, 'x', None, True, [1], {}, (2,), b'', 1.0, Index, len, 'x' * 40]",
        "[1, 2**70, 3]",
        "[1, '\\ud800', 3]",
        "[float('inf'), float('nan'), 1e300]",
        "[1, Index(5), 2, Index(2**70)]",
        "[1, Raising(), 3]",
        "changing([], list.clear, 3, 4)",
        "changing([], lambda items: items.append(items[-1]) if len(items) < 9 else None)",
        "changing([], lambda items: items.insert(0, 0) if len(items) < 9 else None, 3)",
        "PlainList([1, 'a'])",
        "OddList([1, 'a'])",
        "LongerList([1, 'a'])",
        "Items()",
        "range(5)",
        "range(0)",
        "range(3, 4)",
        "range(10, 0, -3)",
        "range(2**70, 2**70 + 3)",
        "range(2**70, 2**70 + 1)",
        "range(-2**63, 2**63, 2**62)",
        "range(2**63 - 2, 2**63 + 2)",
        "array.array('b', [-1, 2])",
        "array.array('B', [255])",
        "array.array('h', [-5, 6])",
        "array.array('H', [2**16 - 1])",
        "array.array('i', [-2**31])",
        "array.array('I', [2**32 - 1])",
        "array.array('l', [-2**63, 2**63 - 1])",
        "array.array('L', [1, 2**64 - 1])",
        "array.array('q', [-2**63])",
        "array.array('Q', [2**64 - 1])",
        "array.array('d', [1.5, 2])",
        "array.array('f', [1.5, float('inf')])",
        "array.array('w', 'ab')",
        "array.array('i')",
        "collections.deque([1, 'a', None, 2.5])",
        "collections.deque([1, Index(3), 4])",
        "collections.deque()",
        "OddDeque([1, 2])",
        "collections.UserList([1, 2])",
        "memoryview(b'ab')",
    };
    std::vector<Operation> operations{
        {"length", [](const Any& it) { return shown(unchecked<I_Sequence_Generic>(it).length().toAny()); }},
        {"walk", &walk},
        {"collect", &collected}};
    static const Any kIndexes[] = {0, 1, 2, -1, -3, 3, -4, 99, std::int64_t(1) << 62, "a", Any(), 1.5, true};
    for (const Any& index : kIndexes)
        operations.push_back({"at", [&](const Any& it) { return shown(unchecked<I_Sequence_Generic>(it).at(index)); }});
    compare(kSequences, operations);
}

TEST_F(BothWays, AgreeForMappingsAndSets) {
    constexpr const char* kIterables[] = {
        "{'a': 1, 2: 'b', 'same': 3, (1,): 2.5}",
        "{}",
        "{Index(1): 1, 1: 2}",
        "growing_dict()",
        "{'a': 2**70}",
        "{'a': Index(4), 'same': Raising()}",
        "{'\\ud800': 1, 'a': '\\ud800'}",
        "PlainDict(a=1)",
        "OddDict(a=1)",
        "collections.OrderedDict(a=1, b=2)",
        "collections.defaultdict(list, a=1)",
    };
    constexpr const char* kOthers[] = {
        "{1, 2, 3}",
        "set()",
        "{Index(3)}",
        "{2**70}",
        "frozenset(['a'])",
        "frozenset([Raising()])",
        "OddSet([1])",
        "{'a': 1, 'b': 2}.keys()",
        "{'a': 1, 'b': Index(2)}.values()",
        "{'a': 1, 'b': 2}.items()",
        "growing_dict().values()",
        "collections.OrderedDict(a=1).keys()",
        "dict.keys(collections.OrderedDict(a=1))",
        "iter([1, 2])",
        "(told('step', i) for i in range(3))",
    };
    compare(kOthers, {{"walk", &walk}, {"collect", &collected}});
    std::vector<Operation> operations{
        {"walk", &walk},
        {"collect", &collected},
        {"keys", [](const Any& it) { return shown(unchecked<I_Map_Generic>(it).keys()); }},
        {"values", [](const Any& it) { return shown(unchecked<I_Map_Generic>(it).values()); }},
        {"length", [](const Any& it) { return shown(unchecked<I_Map_Generic>(it).length().toAny()); }}};
    static const Any kKeys[] = {"a", "same", "absent", 1, 2, 2.5, Any(), true};
    for (const Any& key : kKeys) {
        operations.push_back({"get", [&](const Any& it) { return shown(unchecked<I_Map_Generic>(it).get(key)); }});
        operations.push_back(
            {"get or", [&](const Any& it) { return shown(unchecked<I_Map_Generic>(it).get(key, "or")); }});
    }
    compare(kIterables, operations);
}

TEST_F(BothWays, AgreeForMethodsByName) {
    constexpr const char* kObjectsWithMethods[] = {
        "Plain()", "Slots()", "GetAttr()", "GetAttribute()",     "[3, 1]", "{'a': 1}", "{1, 2}", "(i for i in 'ab')",
        "Made",    "Plain",   "len",       "lambda *a: repr(a)", "...",    "array"};
    constexpr const char* kNames[] = {"method",   "shadow",  "stored",    "field",   "fails",         "answers",
                                      "static",   "cls",     "prop",      "raising", "partial",       "Inner",
                                      "called",   "number",  "absent",    "other",   "sort",          "append",
                                      "at",       "length",  "popitem",   "send",    "meta",          "mro",
                                      "__call__", "__len__", "__class__", "",        "no identifier", "\u00E9"};
    static const Any kArguments[] = {1, "text", 2.5, Any(), true, 6, 7, 8, 9};
    std::vector<Operation> operations;
    for (const char* name : kNames)
        for (const std::size_t count : {0, 1, 3, 9})
            operations.push_back({name, [name, count](const Any& it) {
                                      const ling::method_ident_untyped id{std::string_view(name)};
                                      return shown(it.callMethod(id, std::span(kArguments, count)));
                                  }});
    compare(kObjectsWithMethods, operations);
}

TEST_F(BothWays, AgreeForCalls) {
    constexpr const char* kCallables[] = {
        "lambda *a: repr(a)", "len",           "lambda a, b=2: a", "Plain().method",   "[].append",
        "Plain().fails",      "Plain.partial", "Plain.called",     "lambda *a: 2**70", "lambda *a: '\\ud800'",
        "lambda *a: Index(4)"};
    GilGuard gil;
    define("both_ways_test_objects", kObjects);
    const std::vector<Any> arguments[] = {{},
                                          {1},
                                          {1, "two", Any()},
                                          {ling::failure("An argument."), 1},
                                          {ling::Lazy_Generic([] { return Any(5); })},
                                          {ling::Lazy_Generic([]() -> Any { return ling::failure("Late."); })},
                                          {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}};
    for (const char* expression : kCallables)
        for (const std::vector<Any>& given : arguments) {
            PyRef object = eval(expression);
            const Any function = ling::python::toLing(object.get());
            const std::string direct = shown(unchecked<ling::I_Invokable_Generic>(function).invoke(given));
            const std::string left = takePending();
            EXPECT_EQ(direct, shown(function.callMethod(ling::I_Invokable_Generic::$invoke, {List_Generic(given)})))
                << expression << ", " << given.size();
            EXPECT_EQ(left, takePending());
        }
}

/// A callee may overwrite the very value that it was called through, and drop all that it held.
TEST_F(BothWays, SurviveTheLossOfTheReceiver) {
    static Any receiver;
    const struct {
        const char* expression;
        std::function<Any()> use;
        const char* expected;
    } rows[] = {
        {"[Dropping()]", [] { return unchecked<I_Sequence_Generic>(receiver).at(0); }, "integer 7"},
        {"Measured()", [] { return unchecked<I_Sequence_Generic>(receiver).length().toAny(); }, "integer 7"},
        {"[Dropping()]", [] { return Any(*unchecked<I_Iterable_Generic>(receiver).collectImpl()); }, "list [7]"},
        {"{Dropping()}", [] { return Any(*unchecked<I_Iterable_Generic>(receiver).collectImpl()); }, "list [7]"},
        {"{Dropping(): 1}", [] { return unchecked<I_Map_Generic>(receiver).get(7, "or"); }, "string 'or'"},
        {"Owner()", [] { return receiver.callMethod("method"); }, "integer 7"},
        {"lambda: drop() or 7", [] { return unchecked<ling::I_Invokable_Generic>(receiver)(); }, "integer 7"},
        {"Owner().method", [] { return unchecked<ling::I_Invokable_Generic>(receiver)(); }, "integer 7"},
    };
    GilGuard gil;
    for (const auto& row : rows) {
        const Any drop = ling::make_function("drop", "", [] { receiver = Any(); });
        PyRef dropper = PyRef::steal(ling::python::toPython(drop));
        run("");
        PyRef names = eval("globals()");
        PyDict_SetItemString(names.get(), "drop", dropper.get());
        run(R"(
class Dropping:
    def __index__(self): return drop() or 7
    def __hash__(self): return 7
    def __eq__(self, other): return drop() or False
class Owner:
    def method(self): return drop() or 7
class Measured(list):
    def __len__(self): return drop() or 7
)");
        {
            PyRef object = eval(row.expression);
            receiver = ling::python::toLing(object.get());
        }
        EXPECT_EQ(shown(row.use()), row.expected) << row.expression;
        EXPECT_TRUE(receiver.isNone()) << row.expression;
        run("globals().clear()");
    }
}

/// A member that the proxy is given during the iteration counts from then on; so does one that a class overrides.
TEST_F(BothWays, GiveWayToMembersOfTheirOwn) {
    GilGuard gil;
    PyRef object = eval("[1, 2, 3]");
    const auto ten = ling::make_method("at", "index", [](const Any&, const Any&) { return 10; });
    const Any list = ling::python::toLing(object.get());
    iteration steps = unchecked<I_Iterable_Generic>(list).beginImpl();
    ASSERT_TRUE(steps.advance());
    EXPECT_EQ(describe(steps.item()), "integer 1");
    (void)ling::raw_insert_method(list, I_Sequence_Generic::$at, ten);
    EXPECT_EQ(describe(unchecked<I_Sequence_Generic>(list).at(1)), "integer 10");
    ASSERT_TRUE(steps.advance());
    EXPECT_EQ(describe(steps.item()), "integer 10");

    using ling::internal::defclass_impl;
    const auto derived = [](const char* name) {
        return std::move(defclass_impl(name, "").parent(ling::python::PythonProxySequence::getClass()));
    };
    const Any odd = PythonProxy::create(derived("OddAt").method(I_Sequence_Generic::$at, ten).build(), object.get());
    EXPECT_EQ(walk(odd), "integer 10, integer 10, integer 10, end");
    const auto one = ling::internal::property_builder().getter([](const Any&) { return 1; });
    const Any shorter =
        PythonProxy::create(derived("OddLength").property(I_Sequence_Generic::$$length, one).build(), object.get());
    EXPECT_EQ(walk(shorter), "integer 1, end");
    const Any same = PythonProxy::create(derived("Same").build(), object.get());
    EXPECT_EQ(walk(same), "integer 1, integer 2, integer 3, end");
    const auto none = ling::make_method("contains", "key", [](const Any&, const Any&) { return false; });
    PyRef dict = eval("{'a': 1}");
    const Any map = PythonProxy::create(defclass_impl("OddContains", "")
                                            .parent(ling::python::PythonProxyMapping::getClass())
                                            .method(I_Map_Generic::$contains, none)
                                            .build(),
                                        dict.get());
    EXPECT_EQ(describe(unchecked<I_Map_Generic>(map).get("a", "or")), "string 'or'");
}

TEST_F(BothWays, GiveEachThreadOtherItems) {
    constexpr std::size_t kItems = 20'000;
    Any list;
    {
        GilGuard gil;
        PyRef object = eval(
            "[i if i % 7 else type('Index', (), {'__index__': lambda s: i})() for i in range(1)] + "
            "list(range(1, 20000))");
        list = ling::python::toLing(object.get());
    }
    const Any iterator = unchecked<I_Iterable_Generic>(list).iter();
    std::vector<std::int64_t> found[2];
    const auto take = [&](std::vector<std::int64_t>& items) {
        for (iteration steps(iterator); steps.advance();)
            items.push_back(steps.item().asInteger());
    };
    std::thread other([&] { take(found[1]); });
    take(found[0]);
    other.join();
    std::vector<std::int64_t> all = found[0];
    all.insert(all.end(), found[1].begin(), found[1].end());
    std::sort(all.begin(), all.end());
    ASSERT_EQ(all.size(), kItems);
    EXPECT_TRUE(std::adjacent_find(all.begin(), all.end()) == all.end());
}

}  // namespace
