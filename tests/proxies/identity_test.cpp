#include "bridge/convert.h"
#include "host/gil_guard.h"
#include "ling/byte_array.h"
#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/list.h"
#include "ling/map_interface.h"
#include "ling/members.h"
#include "ling/set_interface.h"
#include "proxies/python_proxy.h"
#include "proxies/python_type.h"
#include "support/python_test.h"
#include "support/script.h"
#include "support/things.h"

#include <atomic>
#include <thread>

namespace {

using ling::python::GilGuard;
using ling::python::PyRef;
using ling::python::PythonProxy;

struct ObjectCase {
    const char* name;
    const char* expression;
};

class ProxyKeys : public PythonTest {};

class Identity : public PythonTest, public testing::WithParamInterface<ObjectCase> {};

TEST_P(Identity, ComesBackAsTheSameObject) {
    GilGuard gil;
    PyRef object = eval(GetParam().expression);
    ASSERT_TRUE(object);
    const Py_ssize_t before = Py_REFCNT(object.get());
    {
        const ling::Any value = ling::python::toLing(object.get());
        const ling::List_Generic kept{value};
        PyRef back = PyRef::steal(ling::python::toPython(kept.at(0)));
        EXPECT_EQ(back.get(), object.get());
    }
    EXPECT_TRUE(Py_REFCNT(object.get()) == before || PyType_Check(object.get()));  // A class stays in the cache.
}

constexpr ObjectCase kObjects[] = {
    {"List", "[1, 2]"},
    {"Tuple", "(1, [2])"},
    {"Dict", "{'a': 1}"},
    {"Set", "{1}"},
    {"FrozenSet", "frozenset({1})"},
    {"Generator", "(i for i in ())"},
    {"Module", "__import__('json')"},
    {"PlainObject", "type('Plain', (), {})()"},
    {"Class", "__import__('argparse').ArgumentParser"},
    {"BuiltInClass", "int"},
    {"Function", "(lambda a: a)"},
    {"BoundMethod", "[].append"},
    {"BuiltIn", "len"},
    {"CallableInstance", "type('Callable', (), {'__call__': lambda self: 1})()"},
    {"Ellipsis", "..."},
    {"MemoryView", "memoryview(b'abc')"},
    {"Interrupt", "KeyboardInterrupt('x')"},
    {"DateSubclass", "type('D', (__import__('datetime').date,), {})(2024, 1, 1)"},
};
INSTANTIATE_TEST_SUITE_P(Objects, Identity, testing::ValuesIn(kObjects),
                         [](const auto& row) { return row.param.name; });

/// Each crossing makes a new proxy; as a key of `ling` containers an object is found again all the same.
TEST_F(ProxyKeys, AreFoundByPythonsHashAndEquality) {
    EXPECT_EQ(script(R"(
class Plain: pass
class Unhashable:
    __hash__ = None
    def __eq__(self, other): return True
class Equal:
    def __init__(self, key): self.key = key
    def __eq__(self, other): return self.key == other.key
    def __hash__(self): return hash(self.key)
plain, unhashable, listed = Plain(), Unhashable(), [1]
rows = [(plain, plain), (plain, Plain()), ((1, (2,)), (1, (2,))), ((1, 2), (2, 1)), (len, len), (len, repr),
        (Equal('a'), Equal('a')), (Equal('a'), Equal('b')), (frozenset({1}), frozenset({1})),
        (unhashable, unhashable), (unhashable, Unhashable()), (listed, listed), (int, int), (int, str), (..., ...)]
found = []
for key, other in rows:
    map, set = ling.Map(), ling.Set()
    map.set(key, 'value')
    found.append(map.get(other, None) is not None)
    set.insert(key)
    set.insert(other)
    found[-1] = found[-1] and len(set) == 1
return repr([int(f) for f in found])
)"),
              "[1, 0, 1, 0, 1, 0, 1, 0, 1, 1, 0, 1, 1, 0, 1]");
}

class PythonTypes : public PythonTest {};

TEST_F(PythonTypes, AreConvertedOnceWhateverTheyHold) {
    // Classes stay converted for the life of the process, so the second run takes those of the first.
    EXPECT_EQ(script(R"(
import abc, collections, dataclasses, enum, sys
def define():
    class SelfHolder: pass
    SelfHolder.me = SelfHolder
    class A: pass
    class B: pass
    A.other, B.other = B, A
    class Lister: pass
    class Listed(Lister): pass
    Lister.all = [Lister, Listed]
    class Colour(enum.Enum): RED = 1
    class Flags(enum.IntFlag): A = 1
    @dataclasses.dataclass
    class Point:
        x: int = 0
    Named = collections.namedtuple('Named', 'a b')
    class Abstract(abc.ABC):
        @abc.abstractmethod
        def f(self): ...
    class Meta(type):
        def __call__(cls, *args): return ('made', args)
    class Made(metaclass=Meta): pass
    class HostileMeta(type):
        def __getattribute__(cls, name):
            if name in ('__bases__', '__doc__', '__module__'): return type.__getattribute__(cls, name)
            raise ValueError(name)
    class Hostile(metaclass=HostileMeta): pass
    class Carrier:
        err = ValueError('kept')
        big = 2**70
        text = '\ud800'
    return [SelfHolder, A, B, Lister, Listed, Colour, Flags, Point, Named, Abstract, Made, Hostile, Carrier, int, type,
            object, collections.OrderedDict, BaseException, StopIteration]
classes = sys.__dict__.setdefault('_test_classes', None) or define()
sys._test_classes = classes
wrong = [c for c in classes if call([c], 'at', 0) is not c or not ling.is_same(c, c)]
return repr(wrong)
)"),
              "[]");
}

TEST_F(PythonTypes, BecomeClassesWithTheirOwnMembers) {
    GilGuard gil;
    // Once per process: a class that was converted stays.
    run("import sys\nif not hasattr(sys, '_test_point'):\n"
        "  class Point:\n"
        "    '''A point.'''\n"
        "    ORIGIN = 0\n"
        "    _x = 1\n"
        "    def move(self): pass\n"
        "    def __str__(self): return 'a point'\n"
        "  class Wrong(ValueError): pass\n"
        "  sys._test_point = Point, Wrong\n"
        "Point, Wrong = sys._test_point\n");
    PyRef type = eval("Point");
    const auto cls = ling::Class_Generic::cast(ling::python::toLing(type.get()));
    ASSERT_TRUE(cls);
    EXPECT_EQ(cls->name(), u"Point");
    EXPECT_EQ(cls->doc(), u"A point.");
    std::string methods;
    for (const auto& method : cls->classMethods(ling::Inherited::No))
        methods += std::string(method.id.utf8()) + " ";
    EXPECT_EQ(methods, "move ");
    EXPECT_TRUE(cls->propertyValue(ling::property_ident_untyped("ORIGIN")).isSameAs(ling::Any(0)));
    PyRef wrong = eval("Wrong");
    const auto error = ling::Class_Generic::cast(ling::python::toLing(wrong.get()));
    ASSERT_TRUE(error);
    EXPECT_TRUE(error->isAncestor(ling::Error::getClass()));
    PyRef five = eval("5");
    EXPECT_EQ(messageOf(ling::python::PythonType::fromPythonType(five.get())), "Not a type.");
    EXPECT_EQ(ling::display((*cls)()), u"a point");  // Calling the class makes an instance.
}

TEST_F(PythonTypes, ClassMethodsAreBoundToTheirType) {
    {
        GilGuard gil;
        define("identity_test_makers", R"(
import datetime
class Maker:
    @classmethod
    def make(cls, a, *, b=2): return (cls.__name__, a, b)
    @staticmethod
    def static(a): return a + 1
    refuses = type('Refuses', (classmethod,), {'__get__': lambda *all: 1 / 0})(len)
class Derived(Maker): pass
)");
    }
    const auto classOf = [&](const char* expression) {
        GilGuard gil;
        PyRef type = eval(expression);
        return *ling::Class_Generic::cast(ling::python::toLing(type.get()));
    };
    const auto called = [&](const char* type, const char* method, std::initializer_list<ling::Any> arguments) {
        return ling::display(classOf(type).callMethod(ling::method_ident_untyped(method), arguments)).toStdString();
    };
    EXPECT_EQ(called("Maker", "make", {1}), "('Maker', 1, 2)");
    EXPECT_EQ(called("Derived", "make", {1}), "('Derived', 1, 2)");
    EXPECT_EQ(called("Derived", "static", {1}), "2");
    EXPECT_EQ(called("int", "from_bytes", {ling::ByteArray(std::string_view("\1\2")), ling::String(u"big")}), "258");
    EXPECT_EQ(called("bool", "from_bytes", {ling::ByteArray(std::string_view("\1")), ling::String(u"big")}), "true");
    EXPECT_EQ(called("dict", "fromkeys", {ling::Tuple_Generic({5}), 6}), "{5: 6}");
    EXPECT_EQ(called("datetime.date", "fromordinal", {1}), "0001-01-01");
    EXPECT_EQ(called("str", "maketrans", {ling::String(u"a"), ling::String(u"b")}), "{97: 98}");
    const ling::method_ident_untyped make("make");
    EXPECT_TRUE(ling::method_of(classOf("Maker"), ling::method_ident_untyped("refuses")).isNone());
    EXPECT_FALSE(ling::property_of(classOf("Maker"), ling::property_ident_untyped("make")).isNone());
    EXPECT_TRUE(ling::property_of(classOf("int"), ling::property_ident_untyped("from_bytes")).isNone());
    EXPECT_TRUE(ling::method_of(classOf("Derived"), make)
                    .propertyValue(ling::I_Invokable_Generic::$$definingClass)
                    .isSameAs(classOf("Derived")));
}

TEST_F(PythonTypes, AnAttributeThatStandsForAnErrorIsAValue) {
    defineThings();
    EXPECT_EQ(script(R"(
import sys, unittest.mock
if not hasattr(sys, '_test_mocked'):
    def provoke():
        try: things.refuse('no')
        except RuntimeError as error: return error.ling
    class Mocked:
        mocked = unittest.mock.Mock(spec=ValueError('x'))
        refused = provoke()
        after = 5
    sys._test_mocked = Mocked
return read(sys._test_mocked, 'after')
)"),
              "5");
}

TEST_F(PythonTypes, ATypeThatDoesNotConvertIsLetGo) {
    EXPECT_EQ(script(R"(
import gc, weakref
class WithoutBases(type):
    def __getattribute__(cls, name):
        if name == '__bases__': raise ValueError('no bases')
        return type.__getattribute__(cls, name)
class Broken(metaclass=WithoutBases): pass
gone = weakref.ref(Broken)
outcome = probe(call, [Broken], 'at', 0)
del Broken
gc.collect()
return [outcome, gone() is None]
)"),
              "['RuntimeError: no bases', True]");
}

TEST_F(PythonTypes, TwoThreadsGetOneClass) {
    runLocked(
        "import sys\nif not hasattr(sys, '_test_raced'):\n"
        "  class Raced: members = [object() for _ in range(100)]\n"
        "  sys._test_raced = Raced\n");
    std::vector<ling::Any> classes(4);
    PyRef type;
    {
        GilGuard gil;
        type = eval("sys._test_raced");
    }
    std::vector<std::thread> threads;
    for (ling::Any& cls : classes)
        threads.emplace_back([&] { cls = ling::python::toLing(type.get()); });
    for (std::thread& thread : threads)
        thread.join();
    for (const ling::Any& cls : classes)
        EXPECT_TRUE(cls.isSameAs(classes.front()));
    GilGuard gil;
    type = PyRef();
}

struct HostileCase {
    const char* name;
    const char* code;
    const char* expected;
};

class Hostile : public PythonTest, public testing::WithParamInterface<HostileCase> {};

TEST_P(Hostile, EndsInAValueOrAnError) { EXPECT_EQ(script(GetParam().code), GetParam().expected); }

constexpr HostileCase kHostile[] = {
    {"AttributeRaises", R"(
class X:
    def __getattr__(self, name): raise OSError(name)
    def __getitem__(self, i): return i
    def __str__(self): return 'an X'
return probe(call, X(), 'append', 1)
)",
     "RuntimeError: The method is missing: append, target object: an X."},
    {"AttributeIsNotCallable", R"(
class X(list):
    append = 5
return probe(call, X([1]), 'append', 1)
)",
     "RuntimeError: The method is missing: append, target object: [1]."},
    {"NegativeLength", R"(
class X(list):
    def __len__(self): return -1
return probe(read, X(), 'length')
)",
     "-1"},
    {"LengthIsNoNumber", R"(
class X(list):
    def __len__(self): return 'many'
return probe(read, X(), 'length')
)",
     "RuntimeError: Unable to cast a value of class 'ling.String' to 'ling.Integer'."},
    {"ContainsIsNoBoolean", R"(
class X(list):
    def __contains__(self, v): return 'maybe'
return probe(call, X(), 'contains', 1)
)",
     "RuntimeError: Unable to cast a value of class 'ling.String' to 'ling.Boolean'."},
    {"IteratorRaisesInTheMiddle", R"(
def numbers():
    yield 1
    raise ValueError('second')
return probe(call, numbers(), 'collect')
)",
     "RuntimeError: second"},
    {"CompareRaises", R"(
class X:
    def __lt__(self, other): raise ValueError('lt')
    def __gt__(self, other): return True
return probe(ling.compare_objects, X(), X())
)",
     "1"},
    {"EqualityRaises", R"(
class X:
    def __eq__(self, other): raise ValueError('eq')
    __hash__ = object.__hash__
a = X()
return probe(ling.compare_objects, a, a)
)",
     "0"},
    {"ReprAndStrRaise", R"(
class X:
    def __str__(self): raise ValueError('str')
    __repr__ = __str__
return repr(ling.display(X()))
)",
     "''"},
    {"ClassLies", R"(
class X:
    @property
    def __class__(self): return ValueError
    def __str__(self): return 'no error'
return probe(call, [X()], 'at', 0)
)",
     "RuntimeError: no error"},
    {"EveryNameAnswers", R"(
class X:
    def __getattr__(self, name): return lambda *a: name
x = X()
return probe(call, x, 'anything') + repr(call([x], 'at', 0) is x)
)",
     "'anything'True"},
    {"DescriptorRaisesThroughTheClass", R"(
class Raises:
    def __get__(self, instance, owner): raise OSError('read through ' + owner.__name__)
class X:
    field = Raises()
    append = Raises()
    def __str__(self): return 'an X'
return probe(call, X(), 'append', 1) + probe(read, X(), 'field') + str(ling.find_class('X'))
)",
     "RuntimeError: Method 'append' not found in: an X.RuntimeError: Property 'field' not found in: an X.None"},
    {"HashRaises", R"(
class X:
    def __hash__(self): raise OSError('hash')
x = X()
return probe(call, {}, 'set', x, 1) + probe(call, set(), 'insert', x) + probe(call, set(), 'remove', x)
)",
     "RuntimeError: hashRuntimeError: hashFalse"},
    {"MethodReenters", R"(
class X(list):
    depth = 0
    def __getitem__(self, index):
        X.depth += 1
        if X.depth < 50: return call(self, 'at', index)
        return super().__getitem__(index)
return probe(call, X([7]), 'at', 0) + str(X.depth)
)",
     "750"},
    {"MethodRemovesItself", R"(
class X(list):
    def append(self, value):
        del X.append
        super().append(value)
x = X()
return probe(call, x, 'append', 1) + probe(call, x, 'append', 2) + repr(x)
)",
     "NoneNone[1, 2]"},
    {"ErrorWithoutText", R"(
class Silent(Exception):
    def __str__(self): raise OSError('silent')
class X(list):
    def append(self, v): raise Silent
return probe(call, X(), 'append', 1)
)",
     "RuntimeError: "},
    {"ErrorWhoseArgumentIsNoText", R"(
class Odd(Exception):
    def __str__(self): return 5
class X(list):
    def append(self, v): raise Odd
return probe(call, X(), 'append', 1)
)",
     "RuntimeError: "},
    {"ExitInAMethod", R"(
class X(list):
    def append(self, v): raise SystemExit(3)
return probe(call, X(), 'append', 1)
)",
     "SystemExit: 3"},
};
INSTANTIATE_TEST_SUITE_P(Rows, Hostile, testing::ValuesIn(kHostile), [](const auto& row) { return row.param.name; });

class ProxyLifetime : public PythonTest {};

TEST_F(ProxyLifetime, LastReferenceMayGoOnAThreadWithoutTheLock) {
    ling::Any proxy;
    runLocked("import weakref\nclass X: pass\nx = X()\nalive = weakref.ref(x)\n");
    {
        GilGuard gil;
        PyRef object = eval("x");
        proxy = ling::python::toLing(object.get());
        run("del x");
    }
    EXPECT_EQ(text("alive() is not None"), "True");
    std::thread([taken = std::move(proxy)]() mutable { taken = ling::Any(); }).join();
    EXPECT_EQ(text("alive() is None"), "True");
}

TEST_F(ProxyLifetime, AFieldReadsTheObjectAsABoxedPointer) {
    GilGuard gil;
    PyRef object = eval("[1]");
    const ling::Any proxy = ling::python::toLing(object.get());
    EXPECT_EQ(PythonProxy::pythonObject(proxy), object.get());
    EXPECT_TRUE(proxy.fieldValue(PythonProxy::$_pyobj).is(ling::Kind::Boxed));
    EXPECT_EQ(PythonProxy::pythonObject(ling::Any(1)), nullptr);
    const ling::Any empty = PythonProxy::getClass().allocateInstance();
    EXPECT_EQ(messageOf(PythonProxy::callPythonMethod(empty, ling::python::names::path)), "The object is null.");
    EXPECT_EQ(ling::python::toPython(empty), nullptr);
}

/// Eight threads use one proxy of each class at once; each operation is whole, and nothing is lost.
TEST_F(ProxyLifetime, EightThreadsShareProxies) {
    constexpr int kTurns = 200;
    ling::Any list, map, set, iterator, function;
    {
        GilGuard gil;
        run("class Counter:\n  calls = 0\n  def __call__(self, by): self.calls += by\ncounter = Counter()\n");
        auto proxy = [this](const char* expression) {
            PyRef object = eval(expression);
            return ling::python::toLing(object.get());
        };
        list = proxy("list(range(100))");
        map = proxy("{}");
        set = proxy("set()");
        function = proxy("counter");
        iterator = proxy("frozenset(range(1600))").callMethod(ling::I_Iterable_Generic::$iter);
    }
    std::atomic<int> stepped = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < kTurns; ++i) {
                const ling::Any item = list.callMethod(ling::I_Sequence_Generic::$at, {i % 100});
                EXPECT_TRUE(item.isSameAs(ling::Any(i % 100)));
                (void)list.callMethod(ling::I_MutableSequence_Generic::$append, {i});
                (void)map.callMethod(ling::I_MutableMap_Generic::$set, {i, t});
                (void)set.callMethod(ling::I_MutableSet_Generic::$extend, {ling::List_Generic{i, t, i}});
                if (iterator.callMethod(ling::I_Iterator_Generic::$next).is(ling::Kind::Integer))
                    ++stepped;
                EXPECT_FALSE(ling::internal::is_error_result(ling::unchecked<ling::I_Invokable_Generic>(function)(0)));
                EXPECT_NE(ling::display(map), u"");
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(list.propertyValue(ling::I_Sequence_Generic::$$length).isSameAs(ling::Any(1700)));
    EXPECT_TRUE(map.propertyValue(ling::I_Map_Generic::$$length).isSameAs(ling::Any(kTurns)));
    EXPECT_TRUE(set.propertyValue(ling::I_Set_Generic::$$length).isSameAs(ling::Any(kTurns)));
    EXPECT_EQ(stepped, 8 * kTurns);
}

}  // namespace
