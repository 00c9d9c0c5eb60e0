#include "language/registration.h"

#include "bridge/convert.h"
#include "ling/basic_values.h"
#include "ling/byte_array.h"
#include "ling/comparison.h"
#include "ling/date_time.h"
#include "ling/error.h"
#include "ling/hash_containers.h"
#include "ling/indirect_values.h"
#include "ling/interfaces.h"
#include "ling/list.h"
#include "ling/module.h"
#include "support/describe.h"
#include "support/python_test.h"

#include <array>

using ling::Any;
using ling::Map_Generic;
using ling::String;

namespace {

Map_Generic mapOf(std::initializer_list<std::pair<Any, Any>> pairs) {
    return Map_Generic(std::span<const std::pair<Any, Any>>(pairs.begin(), pairs.size()));
}

class LanguagePythonTest : public PythonTest {
protected:
    static ling::Class_Generic language() { return ling::find_class("ling.python.LanguagePython"); }
    static Any call(const char* method, std::initializer_list<Any> arguments) {
        return language().callMethod(ling::method_ident_untyped(method), arguments);
    }
    static ling::I_Invokable_Generic function(const char* name) {
        for (const auto& each : ling::find_module("ling.python").functions()) {
            if (each.id.utf8() == name)
                return each.member;
        }
        ADD_FAILURE() << "No function " << name;
        return {};
    }
};

TEST_F(LanguagePythonTest, TheClassSaysWhatItIs) {
    const ling::Class_Generic cls = language();
    ASSERT_FALSE(cls.isNone());
    EXPECT_EQ(ling::qualname(cls).toStdString(), "ling.python.LanguagePython");
    EXPECT_TRUE(cls.isAncestor(ling::I_Language::getClass()));
    EXPECT_EQ(cls.doc().toStdString(), "Implementation of 'I_Language' interface for Python language.");
    EXPECT_EQ(cls.example(ling::lang_name_cpp).toStdString(),
              "LanguagePython::evaluateExpression( u\"[1, 2, 3]\"_bytea );");
    for (const ling::Language other : {ling::lang_name_js, ling::lang_name_python})
        EXPECT_EQ(cls.example(other).toStdString(), "ling.python.LanguagePython.evaluateExpression( '[1, 2, 3]' )");
}

TEST_F(LanguagePythonTest, ItsPropertiesAnswerOnTheClassAndOnTheInstance) {
    const Any instance = language().propertyValue(ling::I_Language::$$instance);
    EXPECT_TRUE(language().propertyValue(ling::I_Language::$$instance).isSameAs(instance));
    EXPECT_EQ(ling::raw_class_of(instance), language());
    for (const Any& receiver : {Any(language()), instance}) {
        EXPECT_EQ(describe(receiver.propertyValue(ling::I_Language::$$canEvaluate)), "true");
        EXPECT_EQ(describe(receiver.propertyValue(ling::I_HasName::$$name)), "string 'Python'");
        EXPECT_EQ(describe(receiver.callMethod(ling::I_Language::$evaluateExpression, {String("6 * 7")})),
                  "integer 42");
    }
}

TEST_F(LanguagePythonTest, EvaluatesWithAndWithoutVariables) {
    const Map_Generic locals = mapOf({{String("a"), 20}});
    const Map_Generic out;
    EXPECT_EQ(describe(call("evaluate", {String("return 1")})), "integer 1");
    EXPECT_EQ(describe(call("evaluate", {String("a += 1\nreturn a"), locals, Map_Generic(), out})), "integer 21");
    EXPECT_EQ(describe(out.get(String("a"))), "integer 21");
    EXPECT_EQ(describe(call("evaluateExpression", {String("a + b"), locals, mapOf({{String("b"), 2}})})), "integer 22");
    EXPECT_EQ(describe(call("evaluateMethod", {Any(5), String("return self + a"), locals})), "integer 25");
    EXPECT_EQ(describe(call("evaluateMethod", {Any(5), String("return self")})), "integer 5");
}

TEST_F(LanguagePythonTest, VariablesHandedBackIntoTheDefaultAreNotSeenByTheNextCall) {
    EXPECT_EQ(describe(call("evaluate", {String("leaked = 5"), mapOf({{String("leaked"), 1}})})), "none");
    EXPECT_EQ(messageOf(call("evaluate", {String("return leaked")})), "name 'leaked' is not defined");
    EXPECT_EQ(describe(function("evaluate")(String("leaked = 5"), mapOf({{String("leaked"), 1}}))), "none");
    EXPECT_EQ(messageOf(function("evaluate")(String("return leaked"))), "name 'leaked' is not defined");
}

TEST_F(LanguagePythonTest, TheModuleHasItsFunctions) {
    struct {
        const char* name;
        const char* parameters;
        const char* doc;
    } const rows[] = {
        {"evaluate", "code, locals, globals, outLocals", "Evaluates Python code."},
        {"evaluate_expr", "code, locals, globals", "Evaluates Python expression."},
        {"evaluate_method", "self, code, locals, globals, outLocals", "Evaluates Python method."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const ling::I_Invokable_Generic found = function(row.name);
        std::string names;
        for (const ling::Parameter& parameter : found.signature()->parameters()) {
            names += (names.empty() ? "" : ", ") + parameter.name().toStdString();
            EXPECT_EQ(parameter.hasDefault(), parameter.name() != String("self") && parameter.name() != String("code"));
        }
        EXPECT_EQ(names, row.parameters);
        EXPECT_EQ(ling::FunctionCL_Generic::cast(found)->record()->doc().toStdString(), row.doc);
    }
    EXPECT_FALSE(ling::find_module("ling.python").doc().isEmpty());
    EXPECT_EQ(describe(function("evaluate_expr")(String("1 + 1"))), "integer 2");
    EXPECT_EQ(describe(function("evaluate_method")(Any(5), String("return self"))), "integer 5");
}

TEST_F(LanguagePythonTest, ArgumentsOfTheWrongKindAreRefused) {
    EXPECT_NE(messageOf(call("evaluate", {Any(5)})).find("code"), std::string::npos);
    EXPECT_NE(messageOf(call("evaluate", {String("pass"), Any(5)})).find("locals"), std::string::npos);
}

TEST_F(LanguagePythonTest, NamesTypesAndRendersValues) {
    EXPECT_EQ(describe(call("toCode", {Any(ling::List_Generic{Any(1), String("a")})})), "string '[1, 'a']'");
    EXPECT_EQ(describe(call("typeName", {ling::Integer::getType()})), "string 'int'");
    EXPECT_EQ(describe(call("typeName", {ling::Integer::getClass()})), "string 'int'");
    EXPECT_EQ(messageOf(call("typeName", {Any(5)})), "Unable to cast a value of class 'ling.Integer' to 'ling.Class'.");
}

TEST_F(LanguagePythonTest, EachKindOfValueHasItsCode) {
    const ling::List_Generic list{Any(1)};
    const std::pair<Any, const char*> rows[] = {
        {true, "string 'True'"},
        {ling::ByteArray(std::string_view("a\0b", 3)), "string 'b'a\\x00b''"},
        {2.5, "string '2.5'"},
        {function("evaluate"), "string 'Function: 'evaluate'.'"},
        {mapOf({{String("a"), list}}), "string '{'a': [1]}'"},
        {ling::Set_Generic(std::span<const Any>(std::array{Any(1)})), "string 'Set([1])'"},
        {-3, "string '-3'"},
        {list, "string '[1]'"},
        {ling::Date(2024, 2, 29), "string '{ling.Date}'"},
        {ling::Integer::getClass(), "string 'ling.Integer'"},
        {ling::Error("x"), "string '{ling.Error}'"},
        {String("it's"), "string ''it''s''"},
        {ling::Tuple_Generic({Any(1), Any()}), "string '(1, None)'"},
        {ling::Boxed<int>(5), "error: Boxed object."},
        {ling::External_Generic([] { return Any(5); }), "error: External object."},
        {ling::Lazy_Generic([] { return Any(5); }), "string '5'"},
        {ling::Weak_Generic(list), "string '[1]'"},
        {ling::Undefined(), "string 'None'"},
        {Any(), "string 'None'"},
    };
    for (const auto& [value, expected] : rows)
        EXPECT_EQ(describe(call("toCode", {value})), expected);
    for (const char* expression : {"{'a': (1, None)}", "range(3)", "...", "[b'\\x00', 'it\\'s']"}) {
        const Any code = call(
            "evaluateExpression",
            {String("ling.python.LanguagePython.toCode(" + std::string(expression) + ") == repr(" + expression + ")")});
        EXPECT_EQ(describe(code), "true") << expression;
    }
}

TEST_F(LanguagePythonTest, ClassesOfBothSidesLeadToEachOther) {
    const ling::Class_Generic pythonInt = ling::find_class("python.builtins.int");
    const ling::Class_Generic pythonComplex = ling::find_class("python.builtins.complex");
    EXPECT_TRUE(call("toNativeClass", {ling::Integer::getClass()}).isSameAs(pythonInt));
    EXPECT_TRUE(call("toNativeClass", {pythonInt}).isSameAs(pythonInt));
    EXPECT_TRUE(call("toNativeClass", {ling::Any::getClass()}).isNone());
    EXPECT_TRUE(call("fromNativeClass", {pythonInt}).isSameAs(ling::Integer::getClass()));
    EXPECT_TRUE(call("fromNativeClass", {pythonComplex}).isSameAs(pythonComplex));
}

TEST_F(LanguagePythonTest, PythonReachesTheLanguageThroughTheHost) {
    ling::python::GilGuard gil;
    const Any proxy =
        call("evaluateExpression", {String("ling.python.LanguagePython.evaluateExpression( '[1, 2, 3]' )")});
    EXPECT_EQ(describe(proxy), "PythonProxySequence");
    EXPECT_EQ(describe(call("evaluateExpression", {String("ling.python.evaluate_expr('1 + 1')")})), "integer 2");
    EXPECT_EQ(describe(call("evaluate", {String("names = {'a': 1}\n"
                                                "result = ling.python.evaluate('a += 1\\nreturn a', names, {}, names)\n"
                                                "return f'{result} {names}'")})),
              "string '2 {'a': 2}'");
}

}  // namespace
