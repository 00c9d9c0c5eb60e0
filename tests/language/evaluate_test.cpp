#include "language/evaluate.h"

#include "bridge/convert.h"
#include "ling/byte_array.h"
#include "ling/class_builder.h"
#include "ling/comparison.h"
#include "ling/hash_containers.h"
#include "ling/indirect_values.h"
#include "ling/list.h"
#include "ling/module.h"
#include "support/describe.h"
#include "support/python_test.h"
#include "support/small_stack.h"

namespace {

Map_Generic mapOf(std::initializer_list<std::pair<Any, Any>> pairs) {
    return Map_Generic(std::span<const std::pair<Any, Any>>(pairs.begin(), pairs.size()));
}

class EvaluateTest : public PythonTest {
protected:
    static Any expression(const String& code, const Map_Generic& locals = Map_Generic()) {
        return evaluateExpression(code, locals, Map_Generic());
    }
    static Any block(const String& code, const Map_Generic& locals = Map_Generic(),
                     const Map_Generic& outLocals = Map_Generic()) {
        return evaluate(code, locals, Map_Generic(), outLocals);
    }
};

struct Row {
    const char* code;
    const char* expected;
};

constexpr Row kExpressions[] = {
    {"2 ** 10", "integer 1024"},
    {"'a' 'b'", "string 'ab'"},
    {"  1 + 1", "integer 2"},
    {"(1,\n 2)", "PythonProxySequence"},
    {"[1, 2, 3]", "PythonProxySequence"},
    {"None", "none"},
    {"'\\0' + 'x'", "string '\0x'"},
    {"1 / 0", "error: division by zero"},
    {"missing", "error: name 'missing' is not defined"},
    {"ValueError('v')", "error: v"},
    {"2 ** 63", "integer -1"},
    {"'\\ud800'", "string ''"},
    {"ling_store_local", "error: name 'ling_store_local' is not defined"},
    {"[n for n in (1, 2)][1]", "integer 2"},
    {"__name__", "string 'builtins'"},
};

TEST_F(EvaluateTest, ExpressionsGiveTheirValue) {
    for (const Row& row : kExpressions) {
        SCOPED_TRACE(row.code);
        EXPECT_EQ(std::string(describe(expression(row.code)).c_str()), std::string(row.expected));
    }
}

TEST_F(EvaluateTest, SyntaxErrorsShowTheText) {
    EXPECT_EQ(messageOf(expression("1 +")), "  File \"<string>\", line 1\n    1 +\nSyntaxError: invalid syntax\n");
    EXPECT_NE(messageOf(block("x =")).find("SyntaxError: invalid syntax\n"), std::string::npos);
    EXPECT_NE(messageOf(expression("a = 1")).find("SyntaxError: invalid syntax"), std::string::npos);
}

TEST_F(EvaluateTest, AZeroInTheCodeDoesNotEndIt) {
    const String code(std::u16string_view(u"1\0+ 1", 5));
    EXPECT_NE(messageOf(expression(code)).find("source code string cannot contain null bytes"), std::string::npos);
    EXPECT_NE(messageOf(block(code)).find("source code string cannot contain null bytes"), std::string::npos);
}

constexpr Row kBlocks[] = {
    {"return 42", "integer 42"},
    {"pass", "none"},
    {"", "error: "},
    {"x = 1\nif x:\n    return 'yes'\nreturn 'no'", "string 'yes'"},
    {"        a = 1\n        return a", "integer 1"},
    {"def f(n):\n    return n if n < 2 else f(n - 1)\nreturn f(5)", "integer 1"},
    {"import sys\nreturn sys.flags.isolated", "integer 1"},
    {"return 2 ** 70", "error: int too big to convert"},
    {"return '\\ud800'", "error: 'utf-8' codec can't encode character '\\ud800' in position 0: surrogates not allowed"},
    {"raise KeyError('k')", "error: 'k'"},
    {"raise KeyboardInterrupt", "error: The call was interrupted."},
    {"import sys\nsys.exit(3)", "error: The call was interrupted."},
    {"class Odd(Exception): ling = None\nraise Odd('no error')", "error: no error"},
    {"return ValueError('returned')", "error: returned"},
    {"return self", "none"},
    {"yield 1", "PythonProxyIterable"},
    {"return b'bytes'", "bytes 'bytes'"},
};

TEST_F(EvaluateTest, BlocksGiveWhatTheyReturn) {
    for (const Row& row : kBlocks) {
        SCOPED_TRACE(row.code);
        const std::string found = describe(block(row.code));
        if (std::string_view(row.expected) == "error: ") {
            EXPECT_NE(found.find("IndentationError: expected an indented block"), std::string::npos) << found;
        } else {
            EXPECT_EQ(found, row.expected);
        }
    }
}

/// As an error, which it converts to elsewhere, it would be what the evaluation answers.
TEST_F(EvaluateTest, AnExceptionIsAVariableLikeAnyOther) {
    const Any raised = block("raise KeyError(1)");
    const Map_Generic names = mapOf({{String("a"), ling::Error::cast(raised)->origin()}, {String("b"), 1}});
    EXPECT_EQ(textOf(block("b = a\nreturn repr(a)", names, names)), "KeyError(1)");
    EXPECT_EQ(describe(expression("a is b and a is c", mapOf({{String("a"), names.get(String("a"))},
                                                              {String("b"), names.get(String("b"))},
                                                              {String("c"), ling::Error::cast(raised)->origin()}}))),
              "true");
}

TEST_F(EvaluateTest, LaterVariablesOverrideEarlierOnes) {
    const Map_Generic globals = mapOf({{String("a"), 1}, {String("b"), 1}, {String("c"), 1}, {String("d"), 1}});
    const Map_Generic out = mapOf({{String("b"), 2}, {String("c"), 2}, {String("ling"), 2}});
    const Map_Generic locals = mapOf({{String("c"), 3}});
    EXPECT_EQ(textOf(evaluate("return str((a, b, c, d, ling))", locals, globals, out)), "(1, 2, 3, 1, 2)");
    EXPECT_EQ(textOf(evaluateExpression("str((a, b, c, d))", locals, globals)), "(1, 1, 3, 1)");
}

TEST_F(EvaluateTest, TheVariablesOfLocalsAreHandedBack) {
    const Map_Generic out;
    const Any result = evaluate("a = a + 1\nb = 'new'\nc = 5\nreturn a * 2",
                                mapOf({{String("a"), 1}, {String("b"), 2}}), Map_Generic(), out);
    EXPECT_EQ(describe(result), "integer 4");
    ASSERT_EQ(out.size(), 2U);
    EXPECT_EQ(describe(out.get(String("a"))), "integer 2");
    EXPECT_EQ(describe(out.get(String("b"))), "string 'new'");
    const Map_Generic none;
    constexpr Row kFailures[] = {
        {"a = 2\nraise ValueError('x')", "error: x"},
        {"del a", "error: name 'a' is not defined"},
        {"a = 2 ** 64", "error: int too big to convert"},
        {"    a = 1\n  return a", "error: "},
    };
    for (const Row& row : kFailures)
        EXPECT_EQ(describe(evaluate(row.code, mapOf({{String("a"), 1}}), none, none)).find(row.expected), 0U);
    EXPECT_EQ(none.size(), 0U) << "What fails hands nothing back.";
    const char* body = "\n  # a comment\n\n        a = a + 1\n        return a\n    ";
    EXPECT_EQ(describe(evaluate(body, mapOf({{String("a"), 1}}), Map_Generic(), out)), "integer 2");
    EXPECT_EQ(describe(evaluateMethod(5, "return self", mapOf({{String("self"), 1}}), Map_Generic(), none)),
              "integer 5");
}

TEST_F(EvaluateTest, NamesMustBeIdentifiers) {
    for (const char* name : {"no name", "", "1st", "class", "a-b", "a.b"}) {
        SCOPED_TRACE(name);
        const Map_Generic locals = mapOf({{String(name), 1}});
        EXPECT_NE(messageOf(evaluate("pass", locals, Map_Generic(), Map_Generic())).find("SyntaxError"),
                  std::string::npos);
        EXPECT_EQ(describe(evaluateExpression("1", locals, Map_Generic())), "integer 1");
    }
    EXPECT_EQ(messageOf(evaluate("pass", mapOf({{Any(5), 1}}), Map_Generic(), Map_Generic())),
              "Invalid variable name: 5.");
    EXPECT_EQ(messageOf(evaluateExpression("1", Map_Generic(), mapOf({{Any(5), 1}}))), "Invalid variable name: 5.");
    const Map_Generic locals = mapOf({{String("größe"), 2}});
    EXPECT_EQ(describe(evaluate("größe += 1\nreturn größe", locals, Map_Generic(), Map_Generic())), "integer 3");
}

TEST_F(EvaluateTest, ValuesWithoutAFormInPythonAreErrors) {
    const Map_Generic locals = mapOf({{String("a"), Error("stored")}});
    EXPECT_EQ(messageOf(evaluate("pass", locals, Map_Generic(), Map_Generic())), "stored");
    EXPECT_EQ(messageOf(evaluateExpression("1", locals, Map_Generic())), "stored");
    EXPECT_EQ(messageOf(evaluateMethod(Error("self"), "pass", mapOf({}), Map_Generic(), Map_Generic())), "self");
}

TEST_F(EvaluateTest, SeesTheHostsModules) {
    EXPECT_EQ(textOf(expression("type(ling).__name__[:5]")), "ling~");
    EXPECT_EQ(textOf(expression("type(python).__name__[:5]")), "ling~");
    (void)find_or_create_module("evaluate_test_later.inner");
    EXPECT_EQ(textOf(expression("type(evaluate_test_later).__name__[:5]")), "ling~");
    EXPECT_EQ(messageOf(expression("inner")), "name 'inner' is not defined");
}

TEST_F(EvaluateTest, BindsTheMembersOfModulesThatAskForIt) {
    const char* module = "evaluate_test_marked";
    if (find_module(module).isNone()) {
        (void)internal::register_function(module, make_function("bare_five", "", [] { return Any(5); }));
        (void)internal::defclass_impl("BareClass", module).build();
        (void)internal::register_function(module, make_function("ling", "", [] { return Any(6); }));
    }
    const Module marked = find_module(module);
    EXPECT_EQ(messageOf(expression("bare_five()")), "name 'bare_five' is not defined");
    (void)insert_property_value(marked, Module::$$bindMembers, true);
    EXPECT_EQ(describe(expression("bare_five()")), "integer 5");
    EXPECT_EQ(describe(expression("BareClass")), "class BareClass");
    EXPECT_EQ(textOf(expression("type(ling).__name__[:5]")), "ling~");  // A module goes before a function.
    (void)insert_property_value(marked, Module::$$bindMembers, false);
    EXPECT_EQ(messageOf(expression("bare_five()")), "name 'bare_five' is not defined");
}

/// A map of foreign making: variables under two names, and a record of what was stored.
Class_Generic foreignMap() {
    static const Class_Generic& cls = *new Class_Generic(
        internal::defclass_impl("ForeignMap", "")
            .parent(I_MutableMap_Generic::getClass())
            .field(field_ident_untyped("stored"))
            .method(I_Map_Generic::$get, "key, fallback",
                    [](const Any&, const Any& key, const Any&) -> Any {
                        return display(key) == String("one") ? Any(1) : Any(String("second"));
                    })
            .method(I_Map_Generic::$contains, "key", [](const Any&, const Any&) { return true; })
            .method(I_MutableMap_Generic::$set, "key, value",
                    [](const Any& self, const Any& key, const Any& value) -> Any {
                        if (display(value) == String("refuse"))
                            return Error("refused", true);
                        const String record = String(u"{}={}").arg(key, value);
                        return self.setFieldValue(field_ident_untyped("stored"), record);
                    })
            .property(I_Map_Generic::$$keys, internal::property_builder().getter([](const Any&) -> Any {
                return Tuple_Generic({String("one"), String("two")});
            }))
            .build());
    return cls;
}

TEST_F(EvaluateTest, MapsOfAnyClassServe) {
    const Any object = foreignMap().allocateInstance();
    const I_Map_Generic map = *I_Map_Generic::cast(object);
    EXPECT_EQ(textOf(evaluateExpression("f'{one} {two}'", map, map)), "1 second");
    EXPECT_EQ(textOf(evaluate("return f'{one} {two}'", Map_Generic(), map, map)), "1 second");
    EXPECT_EQ(describe(evaluate("one += 1", mapOf({{String("one"), 5}}), Map_Generic(), map)), "none");
    EXPECT_EQ(textOf(object.fieldValue(field_ident_untyped("stored"))), "one=6");
    EXPECT_EQ(messageOf(evaluate("one = 'refuse'", mapOf({{String("one"), 5}}), Map_Generic(), map)), "refused");
}

TEST_F(EvaluateTest, PythonDictionariesServe) {
    GilGuard gil;
    run("data = {'a': 1, 'b': [2]}");
    PyRef data = eval("data");
    const Any proxy = toLing(data.get());
    const I_Map_Generic map = *I_Map_Generic::cast(proxy);
    EXPECT_EQ(describe(evaluate("a += 1\nb.append(a)\nreturn a", map, Map_Generic(), map)), "integer 2");
    EXPECT_EQ(text("data"), "{'a': 2, 'b': [2, 2]}");
    run("data['huge'] = 2 ** 70");
    EXPECT_EQ(messageOf(evaluateExpression("a", map, Map_Generic())), "int too big to convert");
    EXPECT_EQ(takePending(), "");
}

TEST_F(EvaluateTest, CallbacksThatAreKeptRefuseLater) {
    GilGuard gil;
    run("kept = []");
    PyRef kept = eval("kept");
    const Map_Generic out;
    const Any result = evaluate(
        "import sys\n"
        "frame = sys._getframe(1).f_locals\n"
        "kept.append(frame['ling_store_local'])\n"
        "kept.append(frame['ling_store_result'])\n"
        "kept[0]('early', 1)\n"
        "kept[1]('first')\n"
        "return 'second'",
        mapOf({{String("kept"), toLing(kept.get())}}), Map_Generic(), out);
    EXPECT_EQ(textOf(result), "second");
    EXPECT_EQ(describe(out.get(String("early"))), "integer 1");
    out.clear();
    constexpr Row kCalls[] = {
        {"kept[0]('late', 1)", "RuntimeError: The evaluation has ended."},
        {"kept[1](1)", "RuntimeError: The evaluation has ended."},
        {"kept[0]('late')", "TypeError: ling_store_local() takes exactly 2 arguments (1 given)"},
        {"kept[0](5, 1)", "TypeError: ling_store_local() argument 1 must be str, not int"},
    };
    for (const Row& row : kCalls) {
        SCOPED_TRACE(row.code);
        run(("try:\n    " + std::string(row.code) + "\nexcept Exception as e:\n    shown = f'{type(e).__name__}: {e}'")
                .c_str());
        EXPECT_EQ(text("shown"), row.expected);
    }
    EXPECT_EQ(out.size(), 0U);
}

TEST_F(EvaluateTest, NothingIsKeptOfACall) {
    const Map_Generic out;
    const Any held = List_Generic();
    const std::size_t before = internal::live_object_count();
    for (int round = 0; round < 3; ++round) {
        (void)evaluate("a = [a]\nreturn a", mapOf({{String("a"), held}}), Map_Generic(), out);
        (void)evaluate("raise ValueError(a)", mapOf({{String("a"), held}}), Map_Generic(), out);
        (void)evaluate("not code", mapOf({{String("a"), held}}), Map_Generic(), out);
        out.clear();
    }
    EXPECT_EQ(internal::live_object_count(), before);
}

/// A function of the host that evaluates the same expression again.
FunctionCL_Generic againAndAgain() {
    return make_function("again", "again, depth", [](const Any& again, std::int64_t depth) -> Any {
        if (depth == 0)
            return String("bottom");
        return evaluateExpression("again(again, depth)",
                                  mapOf({{String("again"), again}, {String("depth"), depth - 1}}), Map_Generic());
    });
}

TEST_F(EvaluateTest, NestingBeyondASmallStackEndsInAnError) {
    onSmallStack([] {
        const FunctionCL_Generic again = againAndAgain();
        // The evaluation or the call of the callback, whichever comes where the room ends.
        const std::string message = messageOf(again(again, std::int64_t{1'000'000}));
        EXPECT_TRUE(message.ends_with(" is nested too deeply.")) << message;
    });
}

TEST_F(EvaluateTest, MutualCallsBeyondASmallStackEndInAnError) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "Under the thread checker a stack of this size does not even hold the first evaluation.";
#endif
    onSmallStack([] {
        const FunctionCL_Generic bounce = make_function("bounce", "f, bounce", [](const Any& f, const Any& again) {
            const Any arguments[] = {again, f};
            return I_Invokable_Generic::cast(f)->invoke(arguments);
        });
        const Any forward = expression("lambda bounce, f: bounce(f, bounce)");
        EXPECT_EQ(messageOf(bounce(forward, bounce)), "The call is nested too deeply.");
    });
}

TEST_F(EvaluateTest, AnErrorLeftPendingByTheLastCallIsForgotten) {
    EXPECT_EQ(describe(expression("2 ** 64")), "integer -1");
    EXPECT_EQ(describe(expression("1")), "integer 1");
    EXPECT_EQ(describe(block("return 1")), "integer 1");
}

}  // namespace
