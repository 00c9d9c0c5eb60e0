#include "support/python_test.h"
#include "support/script.h"

#include "bridge/convert.h"
#include "functions/function_python.h"
#include "ling/comparison.h"
#include "ling/hash_containers.h"
#include "ling/interfaces.h"
#include "ling/list.h"

namespace {

using ling::python::GilGuard;
using ling::python::PyRef;

struct SignatureCase {
    const char* name;
    const char* function;
    const char* expected;
};

class FunctionSignature : public PythonTest, public testing::WithParamInterface<SignatureCase> {};

TEST_P(FunctionSignature, ReadsAsInPython) {
    EXPECT_EQ(script(std::string("return ling.display(ling.property_value(") + GetParam().function + ", 'signature'))"),
              GetParam().expected);
}

constexpr SignatureCase kSignatures[] = {
    {"Nothing", "(lambda: 1)", "()"},
    {"Untyped", "(lambda a, b: 1)", "(a, b)"},
    {"Defaults", "(lambda a, b=2, c='x': 1)", "(a, b=2, c='x')"},
    {"Variadic", "(lambda *args, **options: 1)", "(*args, **options)"},
    {"NameOnly", "(lambda a, *, b, c=None: 1)", "(a, *, b, c=none)"},
    {"PositionalOnly", "(lambda a, /, b: 1)", "(a, /, b)"},
    {"EveryKind", "(lambda a, /, b, *rest, c, d=2.5, **more: 1)", "(a, /, b, *rest, c, d=2.5, **more)"},
    {"DefaultsOfAnyKind", "(lambda a=[1], b=int: 1)", "(a=[1], b=int)"},
    {"OfTheLibrary", "__import__('textwrap').wrap", "(text, width=70, **kwargs)"},
    {"BoundMethod", "[].append", "(object, /)"},
    {"BuiltInWithSignature", "len", "(obj, /)"},
};
INSTANTIATE_TEST_SUITE_P(Rows, FunctionSignature, testing::ValuesIn(kSignatures),
                         [](const auto& row) { return row.param.name; });

class FunctionPython : public PythonTest {
protected:
    ling::Any function(const char* expression) {
        GilGuard gil;
        PyRef object = eval(expression);
        return ling::python::functionFromPython(object.get());
    }
};

TEST_F(FunctionPython, CarriesAnnotationsAsClasses) {
    runLocked("from typing import Any\ndef f(a: int, b: Any, c: 'text') -> str: pass\ndef g() -> Any: pass\n");
    const ling::Any f = function("f");
    const auto signature = ling::unchecked<ling::I_Invokable_Generic>(f).signature();
    ASSERT_TRUE(signature);
    EXPECT_EQ(signature->toString(), u"(a: int, b: Any, c) -> str");
    EXPECT_TRUE(ling::unchecked<ling::I_Invokable_Generic>(function("g")).resultType().isUntyped());
    EXPECT_TRUE(f.propertyValue(ling::I_Invokable_Generic::$$signature).isSameAs(*signature));  // Derived once.
}

TEST_F(FunctionPython, HasANameADocumentationAndDefaults) {
    runLocked("def f(a, b=1, c='x'):\n    'Says nothing.'\n    return (a, b, c)\n");
    const ling::Any f = function("f");
    EXPECT_EQ(textOf(f.propertyValue(ling::I_HasName::$$name)), "f");
    EXPECT_EQ(textOf(f.propertyValue(ling::I_HasDoc::$$doc)), "Says nothing.");
    EXPECT_EQ(textOf(function("(lambda: 1)").propertyValue(ling::I_HasDoc::$$doc)), "");
    const ling::property_ident_untyped $$defaults = ling::I_Invokable_Generic::$$defaults;
    EXPECT_EQ(ling::display(f.propertyValue($$defaults)), u"[1, 'x']");
    EXPECT_TRUE(f.setPropertyValue($$defaults, ling::List_Generic{7, ling::String(u"y")}).isNone());
    EXPECT_EQ(text("f.__defaults__"), "(7, 'y')");
    EXPECT_EQ(text("f(0)"), "(0, 7, 'y')");
}

TEST_F(FunctionPython, CallsByPositionAndByName) {
    runLocked("calls = []\ndef f(a, b=2, *rest):\n    calls.append((a, b, rest))\n    return a\n");
    const ling::Any f = function("f");
    const auto& call = ling::unchecked<ling::I_Invokable_Generic>(f);
    EXPECT_TRUE(call(1, 2, 3).isSameAs(ling::Any(1)));
    const std::pair<ling::Any, ling::Any> named[] = {{ling::String(u"b"), 5}, {ling::String(u"a"), 4}};
    EXPECT_TRUE(call.invokeWith(ling::Map_Generic(named)).isSameAs(ling::Any(4)));
    EXPECT_TRUE(call.invokeWith(ling::List_Generic{9}).isSameAs(ling::Any(9)));
    EXPECT_EQ(text("calls"), "[(1, 2, (3,)), (4, 5, ()), (9, 2, ())]");
    EXPECT_EQ(messageOf(call(ling::Error(u"kept away", true))), "kept away");
    EXPECT_EQ(text("len(calls)"), "3");
}

struct FailureCase {
    const char* name;
    const char* code;
    const char* expected;
};

class FunctionFailure : public PythonTest, public testing::WithParamInterface<FailureCase> {};

TEST_P(FunctionFailure, IsAnErrorWithItsText) { EXPECT_EQ(script(GetParam().code), GetParam().expected); }

constexpr FailureCase kFailures[] = {
    {"Raises", "return probe(ling.bound_method([], 'pop'))", "RuntimeError: pop from empty list"},
    {"Missing", "def f(a): pass\nreturn probe(ling.bound_method(f, 'invokeWith'), ling.List())",
     "RuntimeError: ling_outer.<locals>.f() missing 1 required positional argument: 'a'"},
};
INSTANTIATE_TEST_SUITE_P(Rows, FunctionFailure, testing::ValuesIn(kFailures),
                         [](const auto& row) { return row.param.name; });

TEST_F(FunctionPython, RefusesWhatCannotBeCalled) {
    GilGuard gil;
    PyRef five = eval("5");
    EXPECT_EQ(messageOf(ling::python::functionFromPython(five.get())), "The source object isn't a function.");
    run("def opaque(): pass\nopaque.__signature__ = 5\n");
    PyRef opaque = eval("opaque");
    const ling::Any function = ling::python::functionFromPython(opaque.get());
    EXPECT_EQ(messageOf(function.propertyValue(ling::I_Invokable_Generic::$$signature)), "Unable to fetch signature.");
    EXPECT_EQ(PyErr_Occurred(), nullptr);
}

}  // namespace
