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

using ling::Any;
using ling::String;
using ling::python::GilGuard;
using ling::python::PyRef;
using ling::python::toLing;
using ling::python::toPython;

namespace {

class ToPythonTest : public PythonTest {
protected:
    /// `repr` of what a value becomes, or what is pending instead. Wrappers show as such.
    static std::string shown(const Any& value) {
        PyRef object = PyRef::steal(toPython(value));
        if (!object)
            return takePending();
        if (ling::python::isLingObject(object.get()))
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
    const auto decimal = [](const char* text) { return ling::Decimal::fromString(text); };
    return {
        {"none", Any(), "None"},
        {"undefined", ling::Undefined(), "NotImplemented"},
        {"true", true, "True"},
        {"false", false, "False"},
        {"zero", 0, "0"},
        {"least", std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        {"greatest", std::numeric_limits<std::int64_t>::max(), "9223372036854775807"},
        {"float", 2.5, "2.5"},
        {"whole float", 2.0, "2.0"},
        {"nan", std::numeric_limits<double>::quiet_NaN(), "nan"},
        {"infinity", std::numeric_limits<double>::infinity(), "inf"},
        {"minus zero", -0.0, "-0.0"},
        {"empty text", String(), "''"},
        {"text", String("it's"), "\"it's\""},
        {"text with a zero", String(std::u16string_view(u"a\0b", 3)), "'a\\x00b'"},
        {"lone surrogate", String(std::u16string_view(u"\xD800", 1)), "'\xEF\xBF\xBD'"},
        {"empty bytes", ling::ByteArray(), "b''"},
        {"bytes", ling::ByteArray(std::string_view("a\0\xFF", 3)), "b'a\\x00\\xff'"},
        {"date", ling::Date(2024, 2, 29), "datetime.date(2024, 2, 29)"},
        {"year 0", ling::Date(0, 1, 1), "ValueError: year 0 is out of range"},
        {"year 10000", ling::Date(10000, 1, 1), "ValueError: year 10000 is out of range"},
        {"time", ling::Time(12, 30, 15, 123456789), "datetime.time(12, 30, 15, 123456)"},
        {"nanoseconds", ling::Time(1, 2, 3, 999), "datetime.time(1, 2, 3)"},
        {"zoned time", ling::Time(1, 2, 3, 0, 3600, "CET", 1), "datetime.time(1, 2, 3)"},
        {"date and time", ling::DateTime(ling::Date(2024, 2, 29), ling::Time(12, 30, 15, 5000)),
         "datetime.datetime(2024, 2, 29, 12, 30, 15, 5)"},
        {"decimal", decimal("1.10"), "Decimal('1.10')"},
        {"decimal zero", decimal("-0"), "Decimal('-0')"},
        {"decimal exponent", decimal("1E+5"), "Decimal('1E+5')"},
        {"long decimal", decimal("123456789012345678901234567890.50"), "Decimal('123456789012345678901234567890.50')"},
        {"decimal nan", decimal("NaN"), "Decimal('NaN')"},
        {"decimal infinity", decimal("-Infinity"), "Decimal('-Infinity')"},
        {"empty tuple", ling::Tuple_Generic(), "()"},
        {"single", ling::Tuple_Generic({Any(1)}), "(1,)"},
        {"tuple", ling::Tuple_Generic({Any(1), String("a"), Any(2.5)}), "(1, 'a', 2.5)"},
        {"nested tuple", ling::Tuple_Generic({ling::Tuple_Generic({Any()}), Any(true)}), "((None,), True)"},
        {"tuple with an error", ling::Tuple_Generic({Any(1), ling::Error("broken")}), "RuntimeError: broken"},
        {"error", ling::Error("broken", true), "RuntimeError: broken"},
        {"error value", ling::Error("plain"), "RuntimeError: plain"},
        {"list", ling::List_Generic{Any(1)}, "wrapper"},
        {"map", ling::Map_Generic(), "wrapper"},
        {"set", ling::Set_Generic(), "wrapper"},
        {"class", ling::Integer::getClass(), "wrapper"},
        {"function", ling::make_function("f", "", [] { return Any(); }), "wrapper"},
        {"boxed", ling::Boxed<int>(5), "wrapper"},
        {"lazy", ling::Lazy_Generic([] { return Any(5); }), "wrapper"},
        {"external", ling::External_Generic([] { return Any(5); }), "5"},
        {"external error", ling::External_Generic([] { return Any(ling::Error("lost", true)); }), "RuntimeError: lost"},
        {"nested external", ling::External_Generic([] { return ling::External_Generic([] { return Any(7); }); }), "7"},
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

TEST_F(ToPythonTest, APartOfAStringIsAString) {
    GilGuard gil;
    const String whole(std::u16string(5000, u'x'));
    const String part = whole.sliced(1, 4000);
    PyRef object = PyRef::steal(toPython(part));
    ASSERT_TRUE(object && PyUnicode_CheckExact(object.get()));
    EXPECT_EQ(PyUnicode_GET_LENGTH(object.get()), 4000);
}

TEST_F(ToPythonTest, AnyOtherObjectIsWrapped) {
    static const ling::Class_Generic& cls =
        *new ling::Class_Generic(ling::internal::defclass_impl("Thing", "").build());
    const Any thing = cls.allocateInstance();
    const ling::Weak_Generic weak(thing);
    GilGuard gil;
    for (const Any& value : {thing, Any(weak)}) {
        PyRef wrapper = PyRef::steal(toPython(value));
        ASSERT_TRUE(wrapper && ling::python::isLingObject(wrapper.get()));
        EXPECT_TRUE(toLing(wrapper.get()).isSameAs(value));
    }
}

TEST_F(ToPythonTest, WhatCameFromPythonComesBackAsTheSameObject) {
    GilGuard gil;
    define("to_python_test_classes", "class C: pass\nclass E(ValueError): pass");
    for (const char* expression :
         {"[1]", "{}", "set()", "iter([])", "object()", "int", "C", "E", "len", "KeyboardInterrupt()"}) {
        SCOPED_TRACE(expression);
        PyRef object = eval(expression);
        const Any value = toLing(object.get());
        PyRef back = PyRef::steal(toPython(value));
        EXPECT_EQ(back.get(), object.get());
    }
}

TEST_F(ToPythonTest, AProxyThatHoldsNothingGivesNullWithoutAnError) {
    const Any empty = ling::python::PythonProxy::getClass().allocateInstance();
    GilGuard gil;
    EXPECT_EQ(toPython(empty), nullptr);
    EXPECT_EQ(takePending(), "");
    EXPECT_EQ(toPython(ling::Tuple_Generic({Any(1), empty})), nullptr);
    EXPECT_EQ(takePending(), "");
}

TEST_F(ToPythonTest, TuplesBeyondTheStackEndInAnError) {
    Any nested = ling::Tuple_Generic();
    for (int depth = 0; depth < 20'000; ++depth)
        nested = ling::Tuple_Generic({nested});
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
    const ling::External_Generic external([&self] { return self; });
    self = external;
    GilGuard gil;
    EXPECT_EQ(toPython(external), nullptr);
    EXPECT_EQ(takePending(), "RecursionError: The value is nested too deeply.");
}

TEST_F(ToPythonTest, AWrapperHoldsOneReferenceAndDropsIt) {
    const ling::List_Generic list;
    const std::size_t before = ling::internal::live_object_count();
    {
        GilGuard gil;
        PyRef first = PyRef::steal(toPython(list));
        PyRef second = PyRef::steal(toPython(list));
        EXPECT_NE(first.get(), nullptr);
        EXPECT_EQ(Py_REFCNT(first.get()), 1);
    }
    EXPECT_EQ(ling::internal::live_object_count(), before);
}

}  // namespace
