#include "bridge/compile_helper.h"
#include "bridge/convert.h"
#include "ling/module.h"
#include "support/describe.h"
#include "support/python_test.h"

namespace {

class HelperTest : public PythonTest {};

struct Row {
    const char* source;
    const char* expected;  // What calling it with (3, 4) gives, or the error.
};

constexpr Row kRows[] = {
    {"lambda a, b: a + b", "integer 7"},
    {"  \n lambda *args: len(args) \n", "integer 2"},
    {"def add(a, b):\n    return a + b", "integer 7"},
    {"\n\tdef add(a, b): return a + b\n", "integer 7"},
    {"def  spaced (a, b): return b", "integer 4"},
    {"def generic[T](a: T, b: T) -> T: return a", "integer 3"},
    {"import functools\n", "none"},
    {"@staticmethod\ndef decorated(a, b): return a", "integer 3"},
    {"@(lambda f:\n  f)\n@staticmethod\ndef decorated(a, b): return b", "integer 4"},
    {"async def later(a, b): return a", "PythonProxy"},
    {"return args[0] * args[1]", "integer 12"},
    {"if args:\n\treturn 'some'\nreturn 'none'", "string 'some'"},
    {"", "error: Unable to compile the function."},
    {"return (", "error: Unable to compile the function."},
    {"lambda a, b: 0, 1", "error: Unable to compile the function."},
    {"def gone(): pass\ndel gone", "error: Unable to find the function: gone."},
    {"def number(): pass\nnumber = 5", "error: Unable to find the function: number."},
    {"def other(): pass\n1 / 0", "error: division by zero"},
    {"definitely = 1\nreturn definitely", "integer 1"},
};

TEST_F(HelperTest, SourceBecomesAFunction) {
    GilGuard gil;
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.source);
        Any error;
        PyRef helper = PyRef::steal(compileHelper(row.source, error));
        if (!helper) {
            EXPECT_EQ(describe(error), row.expected);
            EXPECT_EQ(PyErr_Occurred(), nullptr);
            continue;
        }
        PyRef result = PyRef::steal(PyObject_CallFunction(helper.get(), "ii", 3, 4));
        EXPECT_EQ(result ? describe(toLing(result.get())) : takePending(), row.expected);
        if (result && PyCoro_CheckExact(result.get()))  // One that is neither awaited nor closed warns.
            (void)PyRef::steal(PyObject_CallMethod(result.get(), "close", nullptr));
    }
}

TEST_F(HelperTest, ASyntaxErrorCarriesItsTraceback) {
    GilGuard gil;
    Any error;
    EXPECT_EQ(compileHelper("def broken(:", error), nullptr);
    EXPECT_NE(messageOf(error).find("SyntaxError: invalid syntax"), std::string::npos);
    EXPECT_EQ(compileHelper("lambda (", error), nullptr);
    EXPECT_NE(messageOf(error).find("SyntaxError: '(' was never closed"), std::string::npos);
}

TEST_F(HelperTest, SeesTheTopLevelModulesAndNoOthers) {
    (void)find_or_create_module("helper_test_top.inner");
    GilGuard gil;
    Any error;
    PyRef helper = PyRef::steal(compileHelper("lambda *args: sorted(n for n in globals() if n[0] != '_' )", error));
    ASSERT_TRUE(helper);
    PyRef names = PyRef::steal(PyObject_CallNoArgs(helper.get()));
    PyRef text = PyRef::steal(PyObject_Str(names.get()));
    const std::string shown = PyUnicode_AsUTF8(text.get());
    for (const char* name : {"'ling'", "'python'", "'helper_test_top'"})
        EXPECT_NE(shown.find(name), std::string::npos) << shown;
    EXPECT_EQ(shown.find('.'), std::string::npos) << shown;
}

}  // namespace
