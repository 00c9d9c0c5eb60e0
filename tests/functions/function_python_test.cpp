#include "support/python_test.h"
#include "support/script.h"
#include "support/table.h"

#include "bridge/convert.h"
#include "functions/function_python.h"
#include "ling/comparison.h"
#include "ling/hash_containers.h"
#include "ling/interfaces.h"
#include "ling/list.h"
#include "proxies/python_proxy.h"

namespace {

constexpr struct SignatureCase {
    const char* name;
    const char* function;
    const char* expected;
} kSignatures[] = {
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
LING_TABLE(FunctionSignature, PythonTest, kSignatures);

TEST_P(FunctionSignature, ReadsAsInPython) {
    EXPECT_EQ(script(std::string("return ling.display(ling.property_value(") + GetParam().function + ", 'signature'))"),
              GetParam().expected);
}

class FunctionPython : public PythonTest {
protected:
    Any function(const char* expression) {
        GilGuard gil;
        PyRef object = eval(expression);
        return functionFromPython(object.get());
    }
};

TEST_F(FunctionPython, CarriesAnnotationsAsClasses) {
    runLocked("from typing import Any\ndef f(a: int, b: Any, c: 'text') -> str: pass\ndef g() -> Any: pass\n");
    const Any f = function("f");
    const auto signature = unchecked<I_Invokable_Generic>(f).signature();
    ASSERT_TRUE(signature);
    EXPECT_EQ(signature->toString(), u"(a: int, b: Any, c) -> str");
    EXPECT_TRUE(unchecked<I_Invokable_Generic>(function("g")).resultType().isUntyped());
    EXPECT_TRUE(f.propertyValue(I_Invokable_Generic::$$signature).isSameAs(*signature));  // Derived once.
}

TEST_F(FunctionPython, HasANameADocumentationAndDefaults) {
    runLocked("def f(a, b=1, c='x'):\n    'Says nothing.'\n    return (a, b, c)\n");
    const Any f = function("f");
    EXPECT_EQ(textOf(f.propertyValue(I_HasName::$$name)), "f");
    EXPECT_EQ(textOf(f.propertyValue(I_HasDoc::$$doc)), "Says nothing.");
    EXPECT_EQ(textOf(function("(lambda: 1)").propertyValue(I_HasDoc::$$doc)), "");
    const property_ident_untyped $$defaults = I_Invokable_Generic::$$defaults;
    EXPECT_EQ(display(f.propertyValue($$defaults)), u"[1, 'x']");
    EXPECT_TRUE(f.setPropertyValue($$defaults, List_Generic{7, String(u"y")}).isNone());
    EXPECT_EQ(text("f.__defaults__"), "(7, 'y')");
    EXPECT_EQ(text("f(0)"), "(0, 7, 'y')");
}

TEST_F(FunctionPython, CallsByPositionAndByName) {
    runLocked("calls = []\ndef f(a, b=2, *rest):\n    calls.append((a, b, rest))\n    return a\n");
    const Any f = function("f");
    const auto& call = unchecked<I_Invokable_Generic>(f);
    EXPECT_TRUE(call(1, 2, 3).isSameAs(Any(1)));
    const std::pair<Any, Any> named[] = {{String(u"b"), 5}, {String(u"a"), 4}};
    EXPECT_TRUE(call.invokeWith(Map_Generic(named)).isSameAs(Any(4)));
    EXPECT_TRUE(call.invokeWith(List_Generic{9}).isSameAs(Any(9)));
    EXPECT_EQ(text("calls"), "[(1, 2, (3,)), (4, 5, ()), (9, 2, ())]");
    EXPECT_EQ(messageOf(call(Error(u"kept away", true))), "kept away");
    EXPECT_EQ(messageOf(call(PythonProxy::getClass().allocateInstance())), "Unable to convert an argument: .");
    EXPECT_EQ(text("len(calls)"), "3");
}

/// Calls by name, beside what Python answers to the same call.
constexpr const char* kByName[] = {
    "a=1, c=2", "b=3, c=2, a=1", "c=2", "a=1", "a=1, c=2, x=5, y=6", "", "a=1, c=2, text='\\u00e4'",
};

TEST_F(FunctionPython, NamesAreKeywordsAndWhatIsLeftOutIsTheCallees) {
    {
        GilGuard gil;
        define("function_test_callables", R"(
def every(a, b=float('inf'), *rest, c, d=2**70, **more): return [a, b, rest, c, d, more]
class Made:
    def __init__(self, *all, **names): self.given = repr((all, names))
    def __str__(self): return self.given
    def method(self, a, *, b=3): return (a, b)
def one_name(*, a): return a
one_name.__signature__ = 5
def outcome(call):
    try: return repr(call())
    except Exception as error: return str(error)
def given(*all, **names): return all, names
)");
    }
    const std::string before =
        "import json\nfrom function_test_callables import every, Made, one_name, outcome, given\n";
    for (const char* arguments : kByName) {
        const std::string named = arguments;
        EXPECT_EQ(
            script(before + "names = given(" + named + ")[1]\nby_ling = outcome(lambda: call(every, 'invokeWith', " +
                   "names))\nreturn (by_ling == outcome(lambda: every(" + named + ")), by_ling)[0] or by_ling"),
            "true")
            << named;
    }
    const ScriptRow rows[] = {
        {"positions and names", "call(every, 'bindArgs', 1, 2, 3)(c=4, x=5)",
         "[1, 2, (3,), 4, 1180591620717411303424, {'x': 5}]"},
        {"no signature", "call(one_name, 'invokeWith', {'a': 7})", "7"},
        {"built-in", "call(json.dumps, 'bindArgs', [1])(indent=2)", "'[\\n  1\\n]'"},
        {"built-in without a signature", "sorted(call(dict, 'invokeWith', {'b': 1, 'a': 2}).items())",
         "[('a', 2), ('b', 1)]"},
        {"method", "call(Made().method, 'invokeWith', {'b': 1, 'a': 2})", "(2, 1)"},
        {"class", "str(call(Made, 'bindArgs', 1)(x=2))", "\"((1,), {'x': 2})\""},
        {"no text", "call(one_name, 'invokeWith', {1: 7})",
         "RuntimeError: Argument names of 'one_name' must be text, not 1."},
        {"an error", "call(one_name, 'invokeWith', {'a': ValueError('x')})", "RuntimeError: x"},
        {"raises", "ling.bound_method([], 'pop')()", "RuntimeError: pop from empty list"},
        {"missing", "call(every, 'invokeWith', ling.List())",
         "RuntimeError: every() missing 1 required positional argument: 'a'"},
    };
    for (const ScriptRow& row : rows)
        EXPECT_EQ(outcome(before, row), row.expected) << row.name;
}

TEST_F(FunctionPython, RefusesWhatCannotBeCalled) {
    GilGuard gil;
    PyRef five = eval("5");
    EXPECT_EQ(messageOf(functionFromPython(five.get())), "The source object isn't a function.");
    run("def opaque(): pass\nopaque.__signature__ = 5\n");
    PyRef opaque = eval("opaque");
    const Any function = functionFromPython(opaque.get());
    EXPECT_EQ(messageOf(function.propertyValue(I_Invokable_Generic::$$signature)), "Unable to fetch signature.");
    EXPECT_EQ(messageOf(unchecked<I_Invokable_Generic>(function).signature().error()), "Unable to fetch signature.");
    EXPECT_EQ(PyErr_Occurred(), nullptr);
}

}  // namespace
