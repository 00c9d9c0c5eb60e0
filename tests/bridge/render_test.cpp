#include "bridge/render.h"

#include "bridge/convert.h"
#include "ling/byte_array.h"
#include "ling/class_builder.h"
#include "ling/date_time.h"
#include "ling/hash_containers.h"
#include "ling/indirect_values.h"
#include "ling/list.h"
#include "support/describe.h"
#include "support/python_test.h"
#include "support/small_stack.h"

#include <limits>

namespace {

class RenderTest : public PythonTest {
protected:
    static std::string shown(const Any& value) {
        const Any text = renderPython(value);
        return internal::is_error_result(text) ? describe(text) : textOf(text);
    }
};

struct Row {
    const char* name;
    Any value;
    const char* expected;
};

Map_Generic mapOf(std::initializer_list<std::pair<Any, Any>> pairs) {
    return Map_Generic(std::span<const std::pair<Any, Any>>(pairs.begin(), pairs.size()));
}

std::vector<Row> rows() {
    const Any items[] = {Any(1), String("a")};
    const Any boxed = Boxed<int>(5);
    return {
        {"none", Any(), "None"},
        {"undefined", Undefined(), "None"},
        {"true", true, "True"},
        {"integer", -5, "-5"},
        {"float", 2.0, "2.0"},
        {"text", String("it's"), "'it''s'"},
        {"quotes", String("'\""), "'''\"'"},
        {"empty bytes", ByteArray(), "b''"},
        {"bytes", ByteArray("a'\n"), "b'a\\'\\n'"},
        {"list", List_Generic{Any(1), List_Generic{Any()}, String("x")}, "[1, [None], 'x']"},
        {"empty map", Map_Generic(), "{}"},
        {"map", mapOf({{Any(1), String("a")}, {String("b"), List_Generic{Any(true)}}}), "{1: 'a', 'b': [True]}"},
        {"empty set", Set_Generic(), "Set([])"},
        {"set", Set_Generic(items), "Set([1, 'a'])"},
        {"empty tuple", Tuple_Generic(), "()"},
        {"single", Tuple_Generic({Any(1)}), "(1,)"},
        {"function", make_function("f", "a", [](const Any& a) { return a; }), "Function: 'f'."},
        {"boxed", boxed, "error: Boxed object."},
        {"external", External_Generic([] { return Any(5); }), "error: External object."},
        {"lazy", Lazy_Generic([] { return Any(5); }), "5"},
        {"lazy error", Lazy_Generic([] { return Any(Error("late", true)); }), "error: late"},
        {"boxed in a map", mapOf({{Any(1), List_Generic{boxed}}}), "error: Boxed object."},
        {"boxed in a tuple", Tuple_Generic({boxed}), "error: Boxed object."},
        {"date", Date(2024, 2, 29), "{ling.Date}"},
        {"error", Error("x"), "{ling.Error}"},
        {"class", List_Generic::getClass(), "ling.List"},
    };
}

TEST_F(RenderTest, EachKindHasItsText) {
    for (const Row& row : rows()) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(shown(row.value), row.expected);
    }
}

TEST_F(RenderTest, ObjectsShowTheNameOfTheirClass) {
    static const Class_Generic& cls = *new Class_Generic(internal::defclass_impl("Hidden", "").build());
    EXPECT_EQ(shown(cls.allocateInstance()), "{Hidden}");
    EXPECT_EQ(shown(cls), "error: Non-reachable class.");
}

TEST_F(RenderTest, PythonObjectsShowAsPythonShowsThem) {
    GilGuard gil;
    define("render_test_classes",
           "class Named:\n    def __repr__(self): return 'Named()'\n"
           "class Mute:\n    def __repr__(self): raise ValueError\n"
           "class Odd:\n    def __repr__(self): return '\\ud800'\n");
    struct {
        const char* expression;
        const char* expected;
    } const cases[] = {
        {"[1, 2]", "[1, 2]"},
        {"{'a': (1,)}", "{'a': (1,)}"},
        {"Named()", "Named()"},
        {"Mute()", "{ling.python.PythonProxy}"},
        {"Odd()", "{ling.python.PythonProxy}"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.expression);
        PyRef object = eval(each.expression);
        EXPECT_EQ(shown(toLing(object.get())), each.expected);
        EXPECT_EQ(takePending(), "");
    }
    PyRef list = eval("[1]");
    EXPECT_EQ(shown(List_Generic{toLing(list.get())}), "[[1]]");
}

TEST_F(RenderTest, NestingBeyondTheStackEndsInAnError) {
    Any nested;
    for (int depth = 0; depth < 20'000; ++depth)
        nested = Tuple_Generic({nested});
    onSmallStack([&nested] { EXPECT_EQ(shown(nested), "error: The value is nested too deeply."); });
}

}  // namespace
