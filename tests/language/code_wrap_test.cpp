#include "language/code_wrap.h"

#include <gtest/gtest.h>

using ling::String;
using ling::python::wrapFunctionBody;
using ling::python::wrapMethod;

namespace {

struct Row {
    const char* name;
    const char* code;
    std::vector<String> variables;
    const char* expected;
};

const Row kRows[] = {
    {"two variables",
     "a = a + 1\nreturn a * 2",
     {"a", "b"},
     "def ling_outer():\n"
     "\tglobal a\n"
     "\tglobal b\n"
     "\ta = a + 1\n"
     "\treturn a * 2\n"
     "ling_store_result( ling_outer() )\n"
     "ling_store_local('a',a)\n"
     "ling_store_local('b',b)\n"},
    {"no variables", "pass", {}, "def ling_outer():\n\tpass\nling_store_result( ling_outer() )\n"},
    {"no code", "", {}, "def ling_outer():\n\t\nling_store_result( ling_outer() )\n"},
    {"empty lines and indentation stay",
     "\n    a\n\n      b\n",
     {},
     "def ling_outer():\n\t\n\t    a\n\t\n\t      b\n\t\nling_store_result( ling_outer() )\n"},
    {"variables of an indented body",
     "\n  # none of this counts\n \f\n    return a\n    ",
     {"a"},
     "def ling_outer():\n\t    global a\n\t\n\t  # none of this counts\n\t \f\n\t    return a\n\t    \n"
     "ling_store_result( ling_outer() )\nling_store_local('a',a)\n"},
    {"only line feeds divide", "a\r\nb", {}, "def ling_outer():\n\ta\r\n\tb\nling_store_result( ling_outer() )\n"},
    {"names are not looked at",
     "pass",
     {"no name", ""},
     "def ling_outer():\n\tglobal no name\n\tglobal \n\tpass\nling_store_result( ling_outer() )\n"
     "ling_store_local('no name',no name)\nling_store_local('',)\n"},
};

TEST(CodeWrapTest, AMethodIsAFunctionThatIsCalled) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(wrapMethod(row.code, row.variables).toStdString(), row.expected);
    }
}

TEST(CodeWrapTest, ABodyBecomesAFunctionOfPositionalArguments) {
    EXPECT_EQ(wrapFunctionBody("return 1").toStdString(), "def func(*args):\n\treturn 1");
    EXPECT_EQ(wrapFunctionBody("a\n\n  b").toStdString(), "def func(*args):\n\ta\n\t\n\t  b");
    EXPECT_EQ(wrapFunctionBody("").toStdString(), "def func(*args):\n\t");
}

}  // namespace
