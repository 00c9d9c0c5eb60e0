#include "bridge/convert.h"
#include "ling/byte_array.h"
#include "ling/class_builder.h"
#include "ling/date_time.h"
#include "ling/decimal.h"
#include "ling/hash_containers.h"
#include "ling/indirect_values.h"
#include "ling/list.h"
#include "lingobject/wrapper.h"
#include "proxies/python_proxy.h"
#include "support/describe.h"
#include "support/python_test.h"
#include "support/small_stack.h"

#include <limits>

namespace {

class ToPythonTest : public PythonTest {
protected:
    /// `repr` of what a value becomes, or what is pending instead. Wrappers show as such.
    static std::string shown(const Any& value) {
        PyRef object = PyRef::steal(toPython(value));
        if (!object)
            return takePending();
        if (isLingObject(object.get()))
            return "wrapper";
        PyRef text = PyRef::steal(PyObject_Repr(object.get()));
        return text ? PyUnicode_AsUTF8(text.get()) : takePending();
    }
};

struct Row {
    const char* name;
    Any value;
    const char* expected;
};

std::vector<Row> scalarRows() {
    const auto decimal = [](const char* text) { return Decimal::fromString(text); };
    return {
        {"none", Any(), "None"},
        {"undefined", Undefined(), "NotImplemented"},
        {"true", true, "True"},
        {"least", std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        {"greatest", std::numeric_limits<std::int64_t>::max(), "9223372036854775807"},
        {"float", 2.5, "2.5"},
        {"nan", std::numeric_limits<double>::quiet_NaN(), "nan"},
        {"minus zero", -0.0, "-0.0"},
        {"text", String("it's"), "\"it's\""},
        {"text with a zero", String(std::u16string_view(u"a\0b", 3)), "'a\\x00b'"},
        {"lone surrogate", String(std::u16string_view(u"\xD800", 1)), "'\xEF\xBF\xBD'"},
        {"bytes", ByteArray(std::string_view("a\0\xFF", 3)), "b'a\\x00\\xff'"},
        {"date", Date(2024, 2, 29), "datetime.date(2024, 2, 29)"},
        {"year 0", Date(0, 1, 1), "ValueError: year 0 is out of range"},
        {"time", Time(12, 30, 15, 123456789), "datetime.time(12, 30, 15, 123456)"},
        {"nanoseconds", Time(1, 2, 3, 999), "datetime.time(1, 2, 3)"},
        {"zoned time", Time(1, 2, 3, 0, 3600, "CET", 1), "datetime.time(1, 2, 3)"},
        {"date and time", DateTime(Date(2024, 2, 29), Time(12, 30, 15, 5000)),
         "datetime.datetime(2024, 2, 29, 12, 30, 15, 5)"},
        {"decimal", decimal("1.10"), "Decimal('1.10')"},
        {"long decimal", decimal("123456789012345678901234567890.50"), "Decimal('123456789012345678901234567890.50')"},
        {"decimal nan", decimal("NaN"), "Decimal('NaN')"},
        {"empty tuple", Tuple_Generic(), "()"},
        {"tuple", Tuple_Generic({Any(1), String("a"), Any(2.5)}), "(1, 'a', 2.5)"},
        {"nested tuple", Tuple_Generic({Tuple_Generic({Any()}), Any(true)}), "((None,), True)"},
        {"tuple with an error", Tuple_Generic({Any(1), Error("broken")}), "RuntimeError: broken"},
        {"error", Error("broken", true), "RuntimeError: broken"},
        {"list", List_Generic{Any(1)}, "wrapper"},
        {"map", Map_Generic(), "wrapper"},
        {"class", Integer::getClass(), "wrapper"},
        {"function", make_function("f", "", [] { return Any(); }), "wrapper"},
        {"boxed", Boxed<int>(5), "wrapper"},
        {"lazy", Lazy_Generic([] { return Any(5); }), "wrapper"},
        {"external", External_Generic([] { return Any(5); }), "5"},
        {"external error", External_Generic([] { return Any(Error("lost", true)); }), "RuntimeError: lost"},
        {"nested external", External_Generic([] { return External_Generic([] { return Any(7); }); }), "7"},
    };
}

TEST_F(ToPythonTest, EachKindHasItsForm) {
    GilGuard gil;
    for (const Row& row : scalarRows()) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(shown(row.value), row.expected);
        EXPECT_EQ(takePending(), "");
    }
}

TEST_F(ToPythonTest, AnyOtherObjectIsWrapped) {
    static const Class_Generic& cls = *new Class_Generic(internal::defclass_impl("Thing", "").build());
    const Any thing = cls.allocateInstance();
    const Weak_Generic weak(thing);
    GilGuard gil;
    for (const Any& value : {thing, Any(weak)}) {
        PyRef wrapper = PyRef::steal(toPython(value));
        ASSERT_TRUE(wrapper && isLingObject(wrapper.get()));
        EXPECT_TRUE(toLing(wrapper.get()).isSameAs(value));
    }
}

TEST_F(ToPythonTest, AProxyThatHoldsNothingGivesNullWithoutAnError) {
    const Any empty = PythonProxy::getClass().allocateInstance();
    GilGuard gil;
    EXPECT_EQ(toPython(empty), nullptr);
    EXPECT_EQ(takePending(), "");
    EXPECT_EQ(toPython(Tuple_Generic({Any(1), empty})), nullptr);
    EXPECT_EQ(takePending(), "");
}

TEST_F(ToPythonTest, TuplesBeyondTheStackEndInAnError) {
    Any nested = Tuple_Generic();
    for (int depth = 0; depth < 20'000; ++depth)
        nested = Tuple_Generic({nested});
    onSmallStack([&nested] {
        GilGuard gil;
        EXPECT_EQ(toPython(nested), nullptr);
        EXPECT_EQ(takePending(), "RecursionError: The value is nested too deeply.");
    });
    GilGuard gil;
    PyRef whole = PyRef::steal(toPython(nested));
    EXPECT_TRUE(whole);
}

TEST_F(ToPythonTest, AnExternalValueThatLoadsItselfEndsInAnError) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "The thread checker's own record of calls ends at 65536 of them, long before the stack does.";
#endif
    Any self;
    const External_Generic external([&self] { return self; });
    self = external;
    GilGuard gil;
    EXPECT_EQ(toPython(external), nullptr);
    EXPECT_EQ(takePending(), "RecursionError: The value is nested too deeply.");
}

TEST_F(ToPythonTest, AWrapperHoldsOneReferenceAndDropsIt) {
    const List_Generic list;
    const std::size_t before = internal::live_object_count();
    {
        GilGuard gil;
        PyRef first = PyRef::steal(toPython(list));
        PyRef second = PyRef::steal(toPython(list));
        EXPECT_NE(first.get(), nullptr);
        EXPECT_EQ(Py_REFCNT(first.get()), 1);
    }
    EXPECT_EQ(internal::live_object_count(), before);
}

}  // namespace
