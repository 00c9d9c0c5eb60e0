#include "bridge/convert.h"
#include "host/boxed_object.h"
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
#include "support/table.h"
#include "support/things.h"

#include <thread>

namespace {

class ProxyKeys : public PythonTest {};

TEST_F(ProxyKeys, AreTheSameObjectWhenTheyComeBack) {
    GilGuard gil;
    for (const char* expression : {"[1, 2]", "{1}", "type('Plain', (), {})()", "__import__('argparse').ArgumentParser",
                                   "(lambda a: a)", "[].append", "KeyboardInterrupt('x')"}) {
        PyRef object = eval(expression);
        const Py_ssize_t before = Py_REFCNT(object.get());
        {
            const List_Generic kept{toLing(object.get())};
            PyRef back = PyRef::steal(toPython(kept.at(0)));
            EXPECT_EQ(back.get(), object.get()) << expression;
        }
        // A class stays in the cache.
        EXPECT_TRUE(Py_REFCNT(object.get()) == before || PyType_Check(object.get())) << expression;
    }
}

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
    const auto cls = Class_Generic::cast(toLing(type.get()));
    ASSERT_TRUE(cls);
    EXPECT_EQ(cls->name(), u"Point");
    EXPECT_EQ(cls->doc(), u"A point.");
    std::string methods;
    for (const auto& method : cls->classMethods(Inherited::No))
        methods += std::string(method.id.utf8()) + " ";
    EXPECT_EQ(methods, "move ");
    EXPECT_TRUE(cls->propertyValue("ORIGIN").isSameAs(Any(0)));
    PyRef wrong = eval("Wrong");
    const auto error = Class_Generic::cast(toLing(wrong.get()));
    ASSERT_TRUE(error);
    EXPECT_TRUE(error->isAncestor(Error::getClass()));
    PyRef five = eval("5");
    EXPECT_EQ(messageOf(PythonType::fromPythonType(five.get())), "Not a type.");
    EXPECT_EQ(display((*cls)()), u"a point");  // Calling the class makes an instance.
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
        return *Class_Generic::cast(toLing(type.get()));
    };
    const auto called = [&](const char* type, const char* method, std::initializer_list<Any> arguments) {
        return display(classOf(type).callMethod(method_ident_untyped(method), arguments)).toStdString();
    };
    EXPECT_EQ(called("Maker", "make", {1}), "('Maker', 1, 2)");
    EXPECT_EQ(called("Derived", "make", {1}), "('Derived', 1, 2)");
    EXPECT_EQ(called("Derived", "static", {1}), "2");
    EXPECT_EQ(called("int", "from_bytes", {ByteArray(std::string_view("\1\2")), String(u"big")}), "258");
    EXPECT_EQ(called("bool", "from_bytes", {ByteArray(std::string_view("\1")), String(u"big")}), "true");
    EXPECT_EQ(called("dict", "fromkeys", {Tuple_Generic({5}), 6}), "{5: 6}");
    EXPECT_EQ(called("datetime.date", "fromordinal", {1}), "0001-01-01");
    EXPECT_EQ(called("str", "maketrans", {String(u"a"), String(u"b")}), "{97: 98}");
    const method_ident_untyped make("make");
    EXPECT_TRUE(method_of(classOf("Maker"), method_ident_untyped("refuses")).isNone());
    EXPECT_FALSE(property_of(classOf("Maker"), property_ident_untyped("make")).isNone());
    EXPECT_TRUE(property_of(classOf("int"), property_ident_untyped("from_bytes")).isNone());
    EXPECT_TRUE(method_of(classOf("Derived"), make)
                    .propertyValue(I_Invokable_Generic::$$definingClass)
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
import sys
if not hasattr(sys, '_test_healed'):
    class Once(type):
        failed = False
        def __getattribute__(cls, name):
            if name == '__bases__' and not Once.failed:
                Once.failed = True
                raise ValueError('not yet')
            return type.__getattribute__(cls, name)
    class Healed(metaclass=Once): member = 5
    sys._test_healed = probe(call, [Healed], 'at', 0), call([Healed], 'at', 0) is Healed, read(Healed, 'member')
return [outcome, gone() is None, sys._test_healed]
)"),
              "['RuntimeError: no bases', True, ('RuntimeError: not yet', True, 5)]");
}

/// Each of two threads is made to wait in the middle of the conversion until the other one has begun it.
TEST_F(PythonTypes, TwoThreadsGetOneClass) {
    EXPECT_EQ(script(R"(
import sys, threading
if not hasattr(sys, '_test_raced'):
    both = threading.Barrier(2)
    class Meta(type):
        def __getattribute__(cls, name):
            if name == '__bases__':
                try: both.wait(1)
                except threading.BrokenBarrierError: pass
            return type.__getattribute__(cls, name)
    class Raced(metaclass=Meta): member = 5
    found = []
    work = lambda: found.append(ling.object_id(call([Raced], 'at', 0)) and ling.class_of(Raced()))
    threads = [threading.Thread(target=work) for _ in range(2)]
    for thread in threads: thread.start()
    for thread in threads: thread.join()
    sys._test_raced = [ling.is_same(*found), found[0] == found[1]]
return sys._test_raced
)"),
              "[True, True]");
}

constexpr struct HostileCase {
    const char* name;
    const char* code;
    const char* expected;
} kHostile[] = {
    {"AttributeRaises", R"(
class X:
    def __getattr__(self, name): raise OSError(name)
    def __getitem__(self, i): return i
    def __str__(self): return 'an X'
return probe(call, X(), 'append', 1)
)",
     "RuntimeError: The method is missing: append, target object: an X."},
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
    {"ExitInAMethod", R"(
class X(list):
    def append(self, v): raise SystemExit(3)
return probe(call, X(), 'append', 1)
)",
     "SystemExit: 3"},
};
LING_TABLE(Hostile, PythonTest, kHostile);

TEST_P(Hostile, EndsInAValueOrAnError) { EXPECT_EQ(script(GetParam().code), GetParam().expected); }

class ProxyLifetime : public PythonTest {};

TEST_F(ProxyLifetime, LastReferenceMayGoOnAThreadWithoutTheLock) {
    Any proxy;
    runLocked("import weakref\nclass X: pass\nx = X()\nalive = weakref.ref(x)\n");
    {
        GilGuard gil;
        PyRef object = eval("x");
        proxy = toLing(object.get());
        run("del x");
    }
    EXPECT_EQ(text("alive() is not None"), "True");
    std::thread([taken = std::move(proxy)]() mutable { taken = Any(); }).join();
    EXPECT_EQ(text("alive() is None"), "True");
}

TEST_F(ProxyLifetime, AFieldReadsTheObjectAsABoxedPointer) {
    GilGuard gil;
    PyRef object = eval("[1]");
    const Any proxy = toLing(object.get());
    EXPECT_EQ(PythonProxy::pythonObject(proxy), object.get());
    EXPECT_TRUE(proxy.fieldValue(PythonProxy::$_pyobj).is(Kind::Boxed));
    EXPECT_EQ(PythonProxy::pythonObject(Any(1)), nullptr);
    // The object may be replaced: the field is what the proxy stands for.
    PyRef other = eval("(5,)");
    EXPECT_TRUE(proxy.setFieldValue(PythonProxy::$_pyobj, BoxedObject(other.get())).isNone());
    EXPECT_EQ(PythonProxy::pythonObject(proxy), other.get());
    const Any empty = PythonProxy::getClass().allocateInstance();
    EXPECT_EQ(messageOf(PythonProxy::callPythonMethod(empty, names::path)), "The object is null.");
    EXPECT_EQ(toPython(empty), nullptr);
}

}  // namespace
