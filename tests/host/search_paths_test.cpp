#include "host/search_paths.h"

#include "host/module_functions.h"
#include "ling/error.h"
#include "ling/members.h"
#include "ling/module.h"
#include "support/python_test.h"

#include <filesystem>

using ling::python::addSysPathOnce;
using ling::python::GilGuard;
using ling::python::ownDirectory;

namespace {

/// Each test gets its own `sys.path`, and the process's own one back.
class SearchPathsTest : public PythonTest {
protected:
    void SetUp() override {
        PythonTest::SetUp();
        runLocked("import sys\nkept = sys.path\n");
    }
    void TearDown() override {
        runLocked("sys.path = kept\n");
        PythonTest::TearDown();
    }
};

TEST_F(SearchPathsTest, OwnDirectoryHoldsTheFileOfThisCode) {
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(ownDirectory(), program.parent_path().string());
}

TEST_F(SearchPathsTest, TheStartTookTheQueuedPathsAsTheyWere) {
    GilGuard gil;
    const std::string directory = ownDirectory();
    const ling::List_Generic& queued = ling::python::pendingSysPaths();
    ASSERT_GE(queued.size(), 2U);
    EXPECT_EQ(textOf(queued.at(-2)), directory + "/site-packages");
    EXPECT_EQ(textOf(queued.at(-1)), directory + "/python3/lib/python313.zip");
}

struct AddRow {
    const char* name;
    const char* before;  // What `sys.path` is set to.
    const char16_t* path;
    const char* after;  // repr() of what it is then.
};

const AddRow kAddRows[] = {
    {"appended at the end", "['a']", u"b", "['a', 'b']"},
    {"first of all", "[]", u"b", "['b']"},
    {"there already", "['b', 'a']", u"b", "['b', 'a']"},
    {"another spelling is another path", "['b']", u"b/", "['b', 'b/']"},
    {"empty", "['a']", u"", "['a', '']"},
    {"not ASCII, with a surrogate pair", "[]", u"\u00e4\u4e2d\U0001F40D", "['\u00e4\u4e2d\U0001F40D']"},
    {"a lone surrogate is replaced", "[]", u"x\xD800", "['x\uFFFD']"},
    {"a tuple is no list", "('a',)", u"b", "('a',)"},
    {"none is no list", "None", u"b", "None"},
    {"a subclass of list is a list", "type('L', (list,), {})(['a'])", u"b", "['a', 'b']"},
    {"a comparison that raises", "[type('E', (), {'__eq__': lambda s, o: 1/0, '__repr__': lambda s: 'E'})()]", u"b",
     "[E]"},
    {"other things in the list", "[1, None]", u"b", "[1, None, 'b']"},
};

TEST_F(SearchPathsTest, AddsOnceToARunningInterpreter) {
    for (const AddRow& row : kAddRows) {
        runLocked((std::string("sys.path = ") + row.before).c_str());
        EXPECT_TRUE(addSysPathOnce(row.path).isNone()) << row.name;
        EXPECT_TRUE(addSysPathOnce(row.path).isNone()) << row.name;
        EXPECT_EQ(text("repr(sys.path)"), row.after) << row.name;
    }
}

TEST_F(SearchPathsTest, ANulInThePathDoesNotCutIt) {
    runLocked("sys.path = ['x']\n");
    EXPECT_TRUE(addSysPathOnce(ling::String(std::u16string_view(u"x\0y", 3))).isNone());
    EXPECT_EQ(text("repr(sys.path)"), R"(['x', 'x\x00y'])");
}

TEST_F(SearchPathsTest, WithoutASearchPathNothingIsAdded) {
    runLocked("del sys.path\n");
    EXPECT_TRUE(addSysPathOnce(u"b").isNone());
    EXPECT_EQ(text("hasattr(sys, 'path')"), "False");
}

TEST_F(SearchPathsTest, AnErrorOfTheImportIsTheResult) {
    runLocked("sys.modules['sys'] = None\n");
    const ling::Any result = addSysPathOnce(u"b");
    runLocked("import builtins\nkept_modules = sys.modules\nkept_modules['sys'] = sys\n");
    EXPECT_EQ(messageOf(result), "import of sys halted; None in sys.modules");
}

TEST_F(SearchPathsTest, IsAFunctionOfTheModule) {
    const ling::Module module = ling::find_module("ling.python");
    const ling::Any function = module.propertyValue(ling::property_ident_untyped("python_add_sys_path"));
    const auto callable = ling::I_Invokable_Generic::cast(function);
    ASSERT_TRUE(callable);
    runLocked("sys.path = []\n");
    EXPECT_TRUE((*callable)(u"p").isNone());
    EXPECT_EQ(text("repr(sys.path)"), "['p']");
    EXPECT_EQ(callable->signature()->parameters().at(0).name().toStdString(), "path");
    EXPECT_TRUE(ling::internal::is_error_result((*callable)()));
    EXPECT_TRUE(ling::internal::is_error_result((*callable)(1)));
}

}  // namespace
