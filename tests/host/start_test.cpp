#include "bridge/convert.h"
#include "host/interpreter.h"
#include "host/module_functions.h"
#include "host/search_paths.h"
#include "host/startup.h"
#include "ling/class.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "ling/function.h"
#include "ling/members.h"
#include "ling/module.h"
#include "support/python_test.h"

#include <filesystem>
#include <thread>

/// The start of the interpreter, its search path, and the import of single objects.

namespace {

class StartupTest : public PythonTest {};

constexpr std::pair<const char*, const char*> kSettings[] = {
    {"sys.flags.isolated", "1"},         {"sys.flags.ignore_environment", "1"},    {"sys.flags.no_site", "1"},
    {"sys.flags.no_user_site", "1"},     {"sys.dont_write_bytecode", "True"},      {"sys.flags.quiet", "1"},
    {"sys.flags.safe_path", "True"},     {"sys.getfilesystemencoding()", "utf-8"}, {"'site' in sys.modules", "False"},
    {"sys.version_info[:2]", "(3, 13)"},
};

TEST_F(StartupTest, TheInterpreterIsIsolated) {
    runLocked("import sys\n");
    for (const auto& [expression, value] : kSettings)
        EXPECT_EQ(text(expression), value) << expression;
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
    const Any member = find_module("python.sys");
    runLocked("import sys\nkept = list(sys.path)\n");
    startInterpreter();
    EXPECT_TRUE(ensureStarted().isNone());
    EXPECT_TRUE(find_module("python.sys").isSameAs(member));
    const Any abc = find_module("python.collections").propertyValue("abc");
    EXPECT_TRUE(abc.isSameAs(find_module("python.collections.abc")));
    EXPECT_EQ(text("sys.path == kept"), "True");
}

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

TEST_F(SearchPathsTest, TheStartTookTheQueuedPathsAsTheyWere) {
    GilGuard gil;
    const std::string directory = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const List_Generic& queued = pendingSysPaths();
    ASSERT_GE(queued.size(), 2U);
    EXPECT_EQ(textOf(queued.at(-2)), directory + "/site-packages");
    EXPECT_EQ(textOf(queued.at(-1)), directory + "/python3/lib/python313.zip");
}

const struct AddRow {
    const char* name;
    const char* before;  // What `sys.path` is set to.
    std::u16string_view path;
    const char* after;  // repr() of what it is then.
} kAddRows[] = {
    {"appended at the end", "['a']", u"b", "['a', 'b']"},
    {"there already", "['b', 'a']", u"b", "['b', 'a']"},
    {"another spelling is another path", "['b']", u"b/", "['b', 'b/']"},
    {"empty", "['a']", u"", "['a', '']"},
    {"a NUL inside", "['x']", {u"x\0y", 3}, R"(['x', 'x\x00y'])"},
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
        EXPECT_TRUE(addSysPathOnce(String(row.path)).isNone()) << row.name;
        EXPECT_TRUE(addSysPathOnce(String(row.path)).isNone()) << row.name;
        EXPECT_EQ(text("repr(sys.path)"), row.after) << row.name;
    }
}

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

constexpr std::pair<const char*, const char*> kFailures[] = {
    {"no_such_module", "No module named 'no_such_module'"},
    {"sys.path.name", "No module named 'sys.path'; 'sys' is not a package"},
    {".", "Empty module name"},
    {"json.nothing", "Unable to find the object: json.nothing."},
    {"host_test_module.made_up", "Unable to find the object: host_test_module.made_up."},
    {"host_test_object.text", "Unable to get the module dict: host_test_object."},
    {"host_test_raises", "from the finder"},
    {"host_test_leaves", "The call was interrupted."},
    {" json", "No module named ' json'"},
};

TEST_F(ImportTest, FailsWithTheTextOfTheFailure) {
    for (const auto& [path, message] : kFailures)
        EXPECT_EQ(messageOf(importObject(path)), message) << path;
}

TEST_F(ImportTest, ANulInTheNameDoesNotCutIt) {
    EXPECT_EQ(messageOf(importObject(String(std::u16string_view(u"json\0x", 6)))),
              std::string("No module named 'json\\x00x'"));
    EXPECT_EQ(messageOf(importObject(String(std::u16string_view(u"json.dumps\0x", 12)))),
              std::string("Unable to find the object: json.dumps\0x.", 40));
}

TEST_F(ImportTest, GivesAnEntryOfTheModulesDictionary) {
    EXPECT_EQ(textOf(importObject("host_test_module.text")), "abc");
    EXPECT_EQ(textOf(importObject(u"host_test_module.\u00e4")), "umlaut");
    EXPECT_EQ(importObject("host_test_module.number").asInteger(), 42);
    EXPECT_TRUE(importObject("host_test_module.nothing").isNone());
    EXPECT_TRUE(importObject("").isNone());
    EXPECT_EQ(textOf(importObject("os.path.sep")), "/") << "Only the last dot splits.";
    GilGuard gil;
    EXPECT_EQ(textOf(importObject("host_test_module.text")), "abc");
}

TEST_F(ImportTest, ASubmoduleIsGivenOnlyWhenItIsThere) {
    runLocked("for name in ('wsgiref', 'wsgiref.types'): sys.modules.pop(name, None)\n");
    EXPECT_EQ(messageOf(importObject("wsgiref.types")), "Unable to find the object: wsgiref.types.");
    EXPECT_EQ(text("'wsgiref.types' in sys.modules"), "False");
}

}  // namespace
