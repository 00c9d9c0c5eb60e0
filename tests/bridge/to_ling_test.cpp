#include "bridge/to_ling.h"

#include "bridge/convert.h"
#include "ling/list.h"
#include "support/describe.h"
#include "support/python_test.h"

#include <string_view>

namespace {

constexpr const char* kClasses = R"(
import collections, datetime, decimal, fractions, types

class Index:
    def __index__(self): return 7
class Floating:
    def __float__(self): return 7.5
class BadNumber:
    def __int__(self): raise KeyError('no number')
class DerivedInt(int):
    pass
class DerivedIntWithInt(int):
    def __int__(self): return 99
class DerivedFloat(float):
    pass
class DerivedBytes(bytes):
    pass
class DerivedBytearray(bytearray):
    pass
class DerivedStr(str):
    pass
class CallableStr(str):
    def __call__(self): pass
class DerivedDict(dict):
    pass
class DerivedList(list):
    pass
class DerivedSet(set):
    pass
class DerivedDecimal(decimal.Decimal):
    pass
class BadDecimalText(decimal.Decimal):
    def __str__(self): raise ValueError('no text')
class DerivedDate(datetime.date):
    pass
class Meta(type):
    pass
class OfMeta(metaclass=Meta):
    pass
class Items:
    def __getitem__(self, key): return key
class Loop:
    def __iter__(self): return iter(())
class NoLoop:
    __iter__ = None
class Called:
    def __call__(self): pass
class Plain:
    pass
class BadClass:
    @property
    def __class__(self): raise ValueError('no class')
class PretendError:
    __class__ = ValueError
    def __str__(self): return 'pretended'
)";

struct Row {
    const char* expression;
    const char* expected;
    const char* pending = "";
};

constexpr Row kRows[] = {
    {"None", "none"},
    {"NotImplemented", "undefined"},
    {"True", "true"},
    {"False", "false"},
    // Bytes.
    {"b'a\\0b'", "bytes 'a\\x00b'"},
    {"bytearray(b'xyz')", "bytes 'xyz'"},
    {"DerivedBytes(b'd')", "bytes 'd'"},
    // Decimals.
    {"decimal.Decimal('1.10')", "Decimal 1.10"},
    {"decimal.Decimal('1E+5')", "Decimal 1E+5"},
    {"decimal.Decimal('123456789012345678901234567890.5')", "Decimal 123456789012345678901234567890.5"},
    {"DerivedDecimal('1.10')", "integer 1"},
    {"BadDecimalText('2.5')", "integer 2"},
    // Floats.
    {"-0.0", "integer 0"},
    {"-3.0", "integer -3"},
    {"3.5", "float 3.5"},
    {"float('nan')", "float nan"},
    {"float('inf')", "integer -9223372036854775808"},
    {"float('-inf')", "integer -9223372036854775808"},
    {"1e300", "integer -9223372036854775808"},
    {"2.0 ** 63", "integer -9223372036854775808"},
    {"-(2.0 ** 63)", "integer -9223372036854775808"},
    {"DerivedFloat(2.5)", "float 2.5"},
    {"DerivedFloat(2.0)", "integer 2"},
    // Numbers.
    {"2 ** 63 - 1", "integer 9223372036854775807"},
    {"-(2 ** 63)", "integer -9223372036854775808"},
    {"2 ** 63", "integer -1", "OverflowError: int too big to convert"},
    {"-(2 ** 63) - 1", "integer -1", "OverflowError: int too big to convert"},
    {"DerivedInt(5)", "integer 5"},
    {"DerivedIntWithInt(5)", "integer 99"},
    {"fractions.Fraction(7, 2)", "integer 3"},
    {"Index()", "integer 7"},
    {"Floating()", "integer -1",
     "TypeError: int() argument must be a string, a bytes-like object or a real number, not 'Floating'"},
    {"BadNumber()", "integer -1", "KeyError: 'no number'"},
    {"1j", "integer -1",
     "TypeError: int() argument must be a string, a bytes-like object or a real number, not 'complex'"},
    // Exceptions.
    {"ValueError('x')", "error: x"},
    {"PretendError()", "error: pretended"},
    {"KeyboardInterrupt()", "PythonProxy"},
    {"SystemExit(3)", "PythonProxy"},
    // Types.
    {"int", "class int"},
    {"OfMeta", "class OfMeta"},
    // Callables.
    {"len", "FunctionPython"},
    {"lambda: 0", "FunctionPython"},
    {"Called()", "FunctionPython"},
    {"CallableStr('c')", "FunctionPython"},
    // Text.
    {"'abc'", "string 'abc'"},
    {"'\\U0001f600'", "string '\U0001F600'"},
    {"DerivedStr('d')", "string 'd'"},
    {"'\\ud800'", "string ''",
     "UnicodeEncodeError: 'utf-8' codec can't encode character '\\ud800' in position 0: surrogates not allowed"},
    // Containers.
    {"collections.defaultdict(int)", "PythonProxyMapping"},
    {"DerivedDict()", "PythonProxyMapping"},
    {"types.MappingProxyType({})", "PythonProxyIterable"},
    {"range(3)", "PythonProxySequence"},
    {"memoryview(b'a')", "PythonProxySequence"},
    {"collections.deque()", "PythonProxySequence"},
    {"Items()", "PythonProxySequence"},
    {"set()", "PythonProxySet"},
    {"frozenset()", "PythonProxyIterable"},
    {"iter([])", "PythonProxyIterable"},
    {"(i for i in ())", "PythonProxyIterable"},
    {"Loop()", "PythonProxyIterable"},
    {"NoLoop()", "PythonProxyIterable"},
    // Dates and times.
    {"datetime.date(2024, 2, 29)", "Date 2024-02-29"},
    {"datetime.time(1, 2, 3, 4)", "Time 01:02:03.000004000"},
    {"datetime.datetime(2024, 2, 29, 12, 30)", "DateTime 2024-02-29T12:30:00"},
    {"DerivedDate(2024, 2, 29)", "PythonProxy"},
    // The rest.
    {"Plain()", "PythonProxy"},
    {"BadClass()", "PythonProxy"},
    {"Ellipsis", "PythonProxy"},
};

class ToLingTest : public PythonTest {};

TEST_F(ToLingTest, TheFirstRuleThatTakesAnObjectDecides) {
    GilGuard gil;
    define("to_ling_test_classes", kClasses);
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.expression);
        PyRef object = eval(row.expression);
        ASSERT_TRUE(object);
        // There is a short way for common types, which changes nothing.
        for (const auto& convert : {&toLing, &toLingByRules}) {
            EXPECT_EQ(describe(convert(object.get())), row.expected);
            EXPECT_EQ(takePending(), row.pending);
        }
    }
}

/// What is remembered of a type holds until the type, or one that it derives from, is changed; an object whose class
/// does not decide alone is looked at each time.
TEST_F(ToLingTest, AChangedTypeIsLookedAtAnew) {
    constexpr const char* kChanges[] = {"pass",
                                        "Base.__iter__ = lambda self: iter(())",
                                        "Base.__getitem__ = lambda self, index: index",
                                        "del Base.__getitem__",
                                        "Derived.__call__ = lambda self: 1",
                                        "del Base.__iter__, Derived.__call__",
                                        "Base.__int__ = lambda self: 5",
                                        "del Base.__int__",
                                        "value.__class__ = Other",
                                        "value.__class__ = Derived",
                                        "value = Lying()",
                                        "answers.append(ValueError)",
                                        "answers.clear()",
                                        "value = Derived()",
                                        "Base.__getattribute__ = lambda self, name: ValueError",
                                        "del Base.__getattribute__",
                                        "Derived.__bases__ = Other,",
                                        "Other.__float__ = lambda self: 2.5"};
    GilGuard gil;
    run(R"(
answers = []
def told(): return answers[-1] if answers else int
class Base: pass
class Derived(Base): pass
class Other:
    def __iter__(self): return iter(())
class Lying: __class__ = property(lambda self: told())
value = Derived())");
    for (const char* change : kChanges) {
        SCOPED_TRACE(change);
        run(change);
        PyRef object = eval("value");
        const std::string expected = describe(toLingByRules(object.get()));
        const std::string pending = takePending();
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(describe(toLing(object.get())), expected);
            EXPECT_EQ(takePending(), pending);
        }
    }
}

TEST_F(ToLingTest, NullGivesNone) {
    EXPECT_TRUE(toLing(nullptr).isNone());
    GilGuard gil;
    EXPECT_TRUE(toLingByRules(nullptr).isNone());
}

TEST_F(ToLingTest, TakesTheLockItself) {
    PyObject* number = nullptr;
    {
        GilGuard gil;
        number = PyLong_FromLong(123456);
    }
    EXPECT_EQ(describe(toLing(number)), "integer 123456");
    GilGuard gil;
    Py_DecRef(number);
}

TEST_F(ToLingTest, AProxyOrAnErrorKeepsItsObjectAliveAndNothingElseDoes) {
    GilGuard gil;
    define("to_ling_test_classes", kClasses);
    const std::pair<const char*, int> rows[] = {{"[1]", 1},           {"iter([1])", 1},          {"Plain()", 1},
                                                {"lambda: 0", 1},     {"ValueError('x')", 1},    {"'text' * 50", 0},
                                                {"b'bytes' * 50", 0}, {"2 ** 40 + 1", 0},        {"1.5 + 1e-9", 0},
                                                {"2 ** 70", 0},       {"decimal.Decimal(1)", 0}, {"1j", 0}};
    for (const auto& [expression, kept] : rows) {
        SCOPED_TRACE(expression);
        PyRef object = eval(expression);
        const Py_ssize_t before = Py_REFCNT(object.get());
        {
            const Any value = toLing(object.get());
            (void)takePending();
            EXPECT_EQ(Py_REFCNT(object.get()), before + kept);
        }
        EXPECT_EQ(Py_REFCNT(object.get()), before);
    }
}

TEST_F(ToLingTest, AWrapperGivesBackTheVeryValue) {
    const List_Generic list{Any(1), Any(2)};
    GilGuard gil;
    PyRef wrapper = PyRef::steal(toPython(list));
    ASSERT_TRUE(wrapper);
    EXPECT_TRUE(toLing(wrapper.get()).isSameAs(list));
}

}  // namespace
