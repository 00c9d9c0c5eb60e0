#include "language/registration.h"

#include "bridge/convert.h"
#include "ling/basic_values.h"
#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/hash_containers.h"
#include "ling/interfaces.h"
#include "ling/list.h"
#include "ling/module.h"
#include "support/describe.h"
#include "support/python_test.h"

namespace {

Map_Generic mapOf(std::initializer_list<std::pair<Any, Any>> pairs) {
    return Map_Generic(std::span<const std::pair<Any, Any>>(pairs.begin(), pairs.size()));
}

class LanguagePythonTest : public PythonTest {
protected:
    static Class_Generic language() { return find_class("ling.python.LanguagePython"); }
    static Any call(const char* method, std::initializer_list<Any> arguments) {
        return language().callMethod(method_ident_untyped(method), arguments);
    }
    static I_Invokable_Generic function(const char* name) {
        for (const auto& each : find_module("ling.python").functions()) {
            if (each.id.utf8() == name)
                return each.member;
        }
        ADD_FAILURE() << "No function " << name;
        return {};
    }
};

TEST_F(LanguagePythonTest, ItsPropertiesAnswerOnTheClassAndOnTheInstance) {
    const Any instance = language().propertyValue(I_Language::$$instance);
    EXPECT_TRUE(language().propertyValue(I_Language::$$instance).isSameAs(instance));
    EXPECT_EQ(raw_class_of(instance), language());
    for (const Any& receiver : {Any(language()), instance}) {
        EXPECT_EQ(describe(receiver.propertyValue(I_Language::$$canEvaluate)), "true");
        EXPECT_EQ(describe(receiver.propertyValue(I_HasName::$$name)), "string 'Python'");
        EXPECT_EQ(describe(receiver.callMethod(I_Language::$evaluateExpression, {String("6 * 7")})), "integer 42");
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
    EXPECT_EQ(describe(function("evaluate_method")(Any(5), String("return self"))), "integer 5");
    EXPECT_NE(messageOf(call("evaluate", {String("pass"), Any(5)})).find("locals"), std::string::npos);
    for (const char* name : {"evaluate", "evaluate_expr", "evaluate_method"})
        for (const Parameter& parameter : function(name).signature()->parameters())
            EXPECT_EQ(parameter.hasDefault(), parameter.name() != String("self") && parameter.name() != String("code"));
}

TEST_F(LanguagePythonTest, VariablesHandedBackIntoTheDefaultAreNotSeenByTheNextCall) {
    EXPECT_EQ(describe(call("evaluate", {String("leaked = 5"), mapOf({{String("leaked"), 1}})})), "none");
    EXPECT_EQ(messageOf(call("evaluate", {String("return leaked")})), "name 'leaked' is not defined");
    EXPECT_EQ(describe(function("evaluate")(String("leaked = 5"), mapOf({{String("leaked"), 1}}))), "none");
    EXPECT_EQ(messageOf(function("evaluate")(String("return leaked"))), "name 'leaked' is not defined");
}

TEST_F(LanguagePythonTest, NamesTypesAndRendersValues) {
    EXPECT_EQ(describe(call("toCode", {Any(List_Generic{Any(1), String("a")})})), "string '[1, 'a']'");
    for (const char* expression : {"{'a': (1, None)}", "range(3)", "...", "[b'\\x00', 'it\\'s']"}) {
        const std::string code = "ling.python.LanguagePython.toCode(" + std::string(expression) + ")";
        EXPECT_EQ(describe(call("evaluateExpression", {String(code + " == repr(" + expression + ")")})), "true");
    }
    EXPECT_EQ(describe(call("typeName", {Integer::getType()})), "string 'int'");
    EXPECT_EQ(describe(call("typeName", {Integer::getClass()})), "string 'int'");
    EXPECT_EQ(messageOf(call("typeName", {Any(5)})), "Unable to cast a value of class 'ling.Integer' to 'ling.Class'.");
}

TEST_F(LanguagePythonTest, ClassesOfBothSidesLeadToEachOther) {
    const Class_Generic pythonInt = find_class("python.builtins.int");
    const Class_Generic pythonComplex = find_class("python.builtins.complex");
    EXPECT_TRUE(call("toNativeClass", {Integer::getClass()}).isSameAs(pythonInt));
    EXPECT_TRUE(call("toNativeClass", {pythonInt}).isSameAs(pythonInt));
    EXPECT_TRUE(call("toNativeClass", {Any::getClass()}).isNone());
    EXPECT_TRUE(call("fromNativeClass", {pythonInt}).isSameAs(Integer::getClass()));
    EXPECT_TRUE(call("fromNativeClass", {pythonComplex}).isSameAs(pythonComplex));
}

TEST_F(LanguagePythonTest, PythonReachesTheLanguageThroughTheHost) {
    GilGuard gil;
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
