#include "host/startup.h"

#include "host/interpreter.h"
#include "ling/class.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "ling/members.h"
#include "ling/module.h"
#include "support/python_test.h"

#include <algorithm>
#include <vector>

using ling::python::GilGuard;

namespace {

class StartupTest : public PythonTest {};

struct SettingRow {
    const char* expression;
    const char* value;
};

const SettingRow kSettings[] = {
    {"sys.flags.isolated", "1"},         {"sys.flags.ignore_environment", "1"},    {"sys.flags.no_site", "1"},
    {"sys.flags.no_user_site", "1"},     {"sys.dont_write_bytecode", "True"},      {"sys.flags.quiet", "1"},
    {"sys.flags.safe_path", "True"},     {"sys.getfilesystemencoding()", "utf-8"}, {"'site' in sys.modules", "False"},
    {"sys.version_info[:2]", "(3, 13)"},
};

TEST_F(StartupTest, TheInterpreterIsIsolated) {
    runLocked("import sys\n");
    for (const SettingRow& row : kSettings)
        EXPECT_EQ(text(row.expression), row.value) << row.expression;
}

TEST_F(StartupTest, TheModulePythonHasItsTextAndIcon) {
    const ling::Module module = ling::find_module("python");
    ASSERT_FALSE(module.isNone());
    const std::string doc = module.doc().toStdString();
    EXPECT_EQ(doc.substr(0, 64), "Python is an easy to learn, powerful programming language. It ha");
    EXPECT_NE(doc.find("programming. Python\u2019s elegant syntax"), std::string::npos);
    EXPECT_EQ(doc.size(), 359U + 2U);  // The apostrophe takes three bytes.
    EXPECT_EQ(textOf(module.propertyValue(ling::property_ident_untyped("icon"))), ":/ling/icons/py.svg");
}

TEST_F(StartupTest, TheStandardModulesAreReachableFromTheirParents) {
    for (const char* name : {"builtins", "collections", "datetime", "decimal", "sys", "types", "typing"}) {
        const ling::Module module = ling::find_module(ling::String(std::string("python.") + name));
        ASSERT_FALSE(module.isNone()) << name;
        const ling::Any member = ling::find_module("python").propertyValue(ling::property_ident_untyped(name));
        EXPECT_TRUE(member.isSameAs(module)) << name;
    }
    const ling::Any abc = ling::find_module("python.collections").propertyValue(ling::property_ident_untyped("abc"));
    EXPECT_TRUE(abc.isSameAs(ling::find_module("python.collections.abc")));
}

/// The list of what is exported at the start leaves no submodule out.
TEST_F(StartupTest, TheStandardModulesAreThereWithAllTheirSubmodules) {
    runLocked(R"(
import importlib, pkgutil
names = ['builtins', 'collections', 'datetime', 'decimal', 'sys', 'types', 'typing']
modules = [importlib.import_module(name) for name in names]
inside = [each.name for module in modules for each in pkgutil.iter_modules(getattr(module, '__path__', []))]
)");
    // The one that is in the tree as well; later versions have no file for it and do not list it.
    EXPECT_EQ(text("[name for name in inside if name != 'abc']"), "[]");
}

TEST_F(StartupTest, StartingAgainDoesNothing) {
    const ling::Any member = ling::find_module("python.sys");
    runLocked("import sys\nkept = list(sys.path)\n");
    ling::python::startInterpreter();
    EXPECT_TRUE(ling::python::ensureStarted().isNone());
    EXPECT_TRUE(ling::find_module("python.sys").isSameAs(member));
    EXPECT_EQ(text("sys.path == kept"), "True");
}

TEST_F(StartupTest, StartingIsHarmlessWithTheLockHeld) {
    GilGuard gil;
    EXPECT_TRUE(ling::python::ensureStarted().isNone());
    EXPECT_NE(PyThreadState_GetUnchecked(), nullptr);
}

TEST_F(StartupTest, TheLanguageModuleHasItsFunctionsInOrder) {
    std::vector<std::string> names;
    for (const auto& function : ling::find_module("ling.python").functions())
        names.emplace_back(function.id.utf8());
    const std::vector<std::string> expected = {"python_add_sys_path", "python_import"};
    std::vector<std::string> found;
    for (const std::string& name : names) {
        if (name.starts_with("python_"))
            found.push_back(name);
    }
    EXPECT_EQ(found, expected);
    for (const char* name : {"evaluate", "evaluate_expr", "evaluate_method"})
        EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << name;
}

}  // namespace
