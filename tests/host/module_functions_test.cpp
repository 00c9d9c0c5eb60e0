#include "host/module_functions.h"

#include "bridge/convert.h"
#include "ling/class.h"
#include "ling/error.h"
#include "ling/function.h"
#include "ling/module.h"
#include "support/python_test.h"

#include <thread>

using ling::python::GilGuard;
using ling::python::importObject;
using ling::python::PyRef;

namespace {

class ImportTest : public PythonTest {
protected:
    /// Puts modules of the test's own into `sys.modules`.
    void SetUp() override {
        PythonTest::SetUp();
        runLocked(
            "import sys, types\n"
            "m = types.ModuleType('host_test_module')\n"
            "m.text = 'abc'\nm.number = 42\nm.nothing = None\nm.__dict__['a.b'] = 'dotted'\n"
            "m.__getattr__ = lambda name: 'made up'\n"
            "m.__dict__[''] = 'unnamed'\nm.__dict__['\\u00e4'] = 'umlaut'\n"
            "sys.modules['host_test_module'] = m\n"
            "sys.modules['host_test_object'] = types.SimpleNamespace(text='no module')\n"
            "class Finder:\n"
            "    def find_spec(self, name, path=None, target=None):\n"
            "        if name == 'host_test_leaves': raise SystemExit(3)\n"
            "        if name == 'host_test_raises': raise ValueError('from the finder')\n"
            "finder = Finder()\nsys.meta_path.append(finder)\n");
    }
    void TearDown() override {
        runLocked(
            "sys.meta_path.remove(finder)\n"
            "for name in ('host_test_module', 'host_test_object'): del sys.modules[name]\n");
        PythonTest::TearDown();
    }
};

struct FailureRow {
    const char* path;
    const char* message;
};

const FailureRow kFailures[] = {
    {"no_such_module", "No module named 'no_such_module'"},
    {"no_such_module.name", "No module named 'no_such_module'"},
    {"sys.path.name", "No module named 'sys.path'; 'sys' is not a package"},
    {".", "Empty module name"},
    {".name", "Empty module name"},
    {"json.nothing", "Unable to find the object: json.nothing."},
    {"host_test_module.made_up", "Unable to find the object: host_test_module.made_up."},
    {"host_test_object.text", "Unable to get the module dict: host_test_object."},
    {"host_test_raises", "from the finder"},
    {"host_test_leaves", "The call was interrupted."},
    {"host_test_leaves.x", "The call was interrupted."},
    {" json", "No module named ' json'"},
};

TEST_F(ImportTest, FailsWithTheTextOfTheFailure) {
    for (const FailureRow& row : kFailures)
        EXPECT_EQ(messageOf(importObject(row.path)), row.message) << row.path;
}

TEST_F(ImportTest, ANulInTheNameDoesNotCutIt) {
    EXPECT_EQ(messageOf(importObject(ling::String(std::u16string_view(u"json\0x", 6)))),
              std::string("No module named 'json\\x00x'"));
    EXPECT_EQ(messageOf(importObject(ling::String(std::u16string_view(u"json.dumps\0x", 12)))),
              std::string("Unable to find the object: json.dumps\0x.", 40));
}

TEST_F(ImportTest, GivesAnEntryOfTheModulesDictionary) {
    EXPECT_EQ(textOf(importObject("host_test_module.text")), "abc");
    EXPECT_EQ(textOf(importObject(u"host_test_module.\u00e4")), "umlaut");
    EXPECT_EQ(importObject("host_test_module.number").asInteger(), 42);
    EXPECT_TRUE(importObject("host_test_module.nothing").isNone());
}

TEST_F(ImportTest, AnEmptyPathIsNone) { EXPECT_TRUE(importObject("").isNone()); }

TEST_F(ImportTest, OnlyTheLastDotSplits) {
    EXPECT_EQ(textOf(importObject("os.path.sep")), "/");
    EXPECT_EQ(textOf(importObject("collections.abc.__name__")), "collections.abc");
}

TEST_F(ImportTest, ASubmoduleIsGivenOnlyWhenItIsThere) {
    runLocked("for name in ('wsgiref', 'wsgiref.types'): sys.modules.pop(name, None)\n");
    EXPECT_EQ(messageOf(importObject("wsgiref.types")), "Unable to find the object: wsgiref.types.");
    EXPECT_EQ(text("'wsgiref.types' in sys.modules"), "False");
}

TEST_F(ImportTest, IsAFunctionOfTheModule) {
    const ling::Module module = ling::find_module("ling.python");
    const ling::Any function = module.propertyValue(ling::property_ident_untyped("python_import"));
    const auto callable = ling::I_Invokable_Generic::cast(function);
    ASSERT_TRUE(callable);
    EXPECT_EQ(textOf((*callable)("host_test_module.text")), "abc");
    EXPECT_EQ(callable->signature()->parameters().at(0).name().toStdString(), "path");
    EXPECT_TRUE(ling::internal::is_error_result((*callable)()));
}

TEST_F(ImportTest, WorksOnAnyThreadAndBelowPython) {
    std::thread([] { EXPECT_EQ(textOf(importObject("host_test_module.text")), "abc"); }).join();
    GilGuard gil;
    EXPECT_EQ(textOf(importObject("host_test_module.text")), "abc");
}

}  // namespace
