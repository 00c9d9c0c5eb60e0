#include "functions/module_tree.h"

#include "functions/module_python.h"
#include "language/evaluate.h"
#include "ling/byte_array.h"
#include "ling/class.h"
#include "ling/error.h"
#include "ling/function.h"
#include "ling/hash_containers.h"
#include "ling/members.h"
#include "ling/module.h"
#include "proxies/python_proxy.h"
#include "support/python_test.h"
#include "support/table.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

/// Modules of the test's own, each under a name that is used once: an exported module stays for the process.
class ModuleTreeTest : public PythonTest {
protected:
    void SetUp() override {
        PythonTest::SetUp();
        expectValuesToStay();
        runLocked(R"(
import sys, types, os, tempfile, textwrap
def make(name, text):
    module = types.ModuleType(name)
    exec(textwrap.dedent(text), module.__dict__)
    sys.modules[name] = module
    made.append(name)
made = []
)");
    }
    void TearDown() override {
        runLocked("for name in made: sys.modules.pop(name, None)\n");
        PythonTest::TearDown();
    }

    /// A fresh pair of names: ("python.tree_test_7", "tree_test_7").
    std::string freshName() {
        static int count = 0;
        return "tree_test_" + std::to_string(++count);
    }
    void make(const std::string& name, const std::string& text) {
        runLocked(("make('" + name + "', '''" + text + "''')").c_str());
    }
};

Any exportAsChild(const std::string& name) { return exportModule(String("python." + name), String(name), 0); }

Any member(const Any& module, const char* name) { return module.propertyValue(property_ident_untyped(name)); }

bool hasMember(const Any& module, const char* name) {
    return !property_of(module, property_ident_untyped(name)).isNone();
}

TEST_F(ModuleTreeTest, ShowsClassesAndCallablesAndNothingElse) {
    const std::string name = freshName();
    make(name,
         "\"The doc.\"\nclass Item: pass\ndef call(x): return x + 1\ncounted = len\nnumber = 42\ntext = \"a\"\n"
         "import json\n_hidden = len\ndef _private(): pass\nclass __Odd: pass\n"
         "globals()[\"\"] = len\nglobals()[3] = len\nnothing = None\n");
    const Any module = exportAsChild(name);
    ASSERT_TRUE(Module::cast(module));
    EXPECT_EQ(unchecked<Module>(module).doc().toStdString(), "The doc.");
    EXPECT_EQ(unchecked<Module>(module).name().toStdString(), "python." + name);
    EXPECT_TRUE(find_class(String("python." + name + ".Item")).isSameAs(member(module, "Item")));
    EXPECT_TRUE(member(find_module("python"), name.c_str()).isSameAs(module));
    EXPECT_TRUE(exportAsChild(name).isSameAs(module)) << "It is exported once.";
    EXPECT_TRUE(internal::is_error_result(exportModule(String("python." + name), "json", 0)));
    EXPECT_EQ((*I_Invokable_Generic::cast(member(module, "call")))(1).asInteger(), 2);
    EXPECT_EQ((*I_Invokable_Generic::cast(member(module, "counted")))("abc").asInteger(), 3);
    for (const char* absent :
         {"number", "text", "json", "_hidden", "_private", "__Odd", "", "3", "nothing", "__name__"})
        EXPECT_FALSE(hasMember(module, absent)) << absent;
}

TEST_F(ModuleTreeTest, AnImportThatFailsIsTheResult) {
    EXPECT_EQ(messageOf(exportAsChild("no_such_module")), "No module named 'no_such_module'");
    EXPECT_EQ(messageOf(exportAsChild("")), "Empty module name");
    EXPECT_EQ(messageOf(exportModule("python.x_sub", "json.no_such", 0)), "No module named 'json.no_such'");
    EXPECT_TRUE(find_module("python.no_such_module").isNone());
}

constexpr struct HostileModule {
    const char* name;
    const char* code;
    const char* doc;
} kHostileModules[] = {
    {"DocIsANumber", "__doc__ = 5", ""},
    {"DocIsAClass", "class __doc__: pass", ""},
    {"PathIsNoList", "__path__ = 3", ""},
    {"MembersMisbehave",
     "class Meta(type):\n    def __getattribute__(cls, name): raise RuntimeError(name)\n"
     "class Hostile(metaclass=Meta): pass\n"
     "class Callable:\n    def __call__(self): pass\n    def __getattr__(self, name): raise RuntimeError(name)\n"
     "hostile = Callable()",
     ""},
    {"DocIsNoText", "__doc__ = chr(0xD800)", ""},
    {"GetattrRaises", "def __getattr__(name): raise RuntimeError(name)", ""},
    {"GetattrEndsAll", "def __getattr__(name): raise KeyboardInterrupt", ""},
    {"PathRaises", "def __getattr__(name):\n    if name == \"__path__\": raise SystemExit(1)\n    raise AttributeError",
     ""},
    {"PathIteratesBadly",
     "class Path:\n    def __iter__(self): return self\n    def __next__(self): 1/0\n__path__ = Path()", ""},
    {"PathHoldsNoTexts", "__path__ = [3, None, chr(0xD800)]", ""},
    {"NamesAreNoIdentifiers", "globals().update({\"not one\": len, \"a.b\": len, chr(0xD800): len, \"1\": len})", ""},
    {"ChangesWhileItIsWalked",
     "class Meta(type):\n    def __getattribute__(cls, name):\n        globals()[name + str(len(globals()))] = len\n"
     "        return type.__getattribute__(cls, name)\nclass Grows(metaclass=Meta): pass",
     ""},
};

LING_TABLE(HostileModuleTest, ModuleTreeTest, kHostileModules);

/// Nothing is pending afterwards: the fixture looks.
TEST_P(HostileModuleTest, IsExportedWithWhatCanBeHadOfIt) {
    const std::string name = freshName();
    make(name, std::string(GetParam().code) + "\ndef fine(): return 1\n");
    const Any module = exportAsChild(name);
    ASSERT_TRUE(Module::cast(module));
    EXPECT_EQ(unchecked<Module>(module).doc().toStdString(), GetParam().doc);
    EXPECT_EQ((*I_Invokable_Generic::cast(member(module, "fine")))().asInteger(), 1);
}

TEST_F(ModuleTreeTest, ALateModuleIsImportedByTheFirstLookIntoIt) {
    using Look = bool (*)(const Module&, const String&);
    constexpr Look kLooks[] = {
        [](const Module& module, const String&) { return hasMember(module, "Item"); },
        [](const Module& module, const String&) { return module.doc() == String("The doc."); },
        [](const Module& module, const String&) { return ModulePython::pythonModule(module) != nullptr; },
        [](const Module&, const String& path) { return !find_class(path + u".Item").isNone(); },
        [](const Module& module, const String&) {
            return raw_class_of(module).classProperties(Inherited::No).size() == 1;
        },
        [](const Module& module, const String&) { return !module.fieldValue(PythonProxy::$_pyobj).isNone(); },
    };
    for (const Look look : kLooks) {
        const std::string name = freshName();
        const String path("python." + name);
        const Any exported = exportModuleLater(path, String(name));
        make(name, "\"The doc.\"\nclass Item: pass\n");
        EXPECT_TRUE(find_module(path).isSameAs(exported));
        EXPECT_TRUE(look(find_module(path), path));
        EXPECT_TRUE(exportAsChild(name).isSameAs(exported));
    }
}

TEST_F(ModuleTreeTest, ALateModuleIsNotImportedByWhatDoesNotLookIntoIt) {
    const std::string name = freshName();
    const String path("python." + name);
    const Any exported = exportModuleLater(path, String(name));
    const Any child = find_or_create_module(path + u".child");
    EXPECT_TRUE(exported.propertyValue("child").isSameAs(child));
    EXPECT_EQ(qualname(exported), path);
    EXPECT_EQ(evaluateExpression("1 + 1", Map_Generic(), Map_Generic()).asInteger(), 2);
    EXPECT_TRUE(raw_class_of(exported).record()->expectsMembers());
}

String& logged() {
    static String& text = *new String;
    return text;
}

TEST_F(ModuleTreeTest, ALateModuleThatCannotBeImportedIsTriedAgain) {
    const std::string name = freshName();
    const Any module = exportModuleLater(String("python." + name), String(name));
    internal::set_assertion_log([](const String& line) { logged() = line; });
    EXPECT_FALSE(hasMember(module, "fine"));
    internal::set_assertion_log(nullptr);
    EXPECT_EQ(logged().toStdString(),
              "Unable to export the Python module " + name + ": No module named '" + name + "'");
    EXPECT_EQ(ModulePython::pythonModule(module), nullptr);
    make(name, "def fine(): return 1\n");
    EXPECT_TRUE(hasMember(module, "fine"));
}

TEST_F(ModuleTreeTest, APendingPythonErrorOutlivesTheImportOfALateModule) {
    const std::string name = freshName();
    const Any module = exportModuleLater(String("python." + name), String(name));
    make(name, "def fine(): return 1\n");
    GilGuard gil;
    PyErr_SetString(PyExc_KeyError, "pending");
    EXPECT_TRUE(hasMember(module, "fine"));
    EXPECT_TRUE(PyErr_ExceptionMatches(PyExc_KeyError));
    PyErr_Clear();
}

/// Nobody sees half a module, and nobody waits for ever: some look with the interpreter lock, some without.
TEST_F(ModuleTreeTest, ManyThreadsMayLookIntoALateModuleAtOnce) {
    const std::string name = freshName();
    const Any module = exportModuleLater(String("python." + name), String(name));
    runLocked(("class Slow(types.ModuleType):\n    @property\n    def __doc__(self):\n        import time\n"
               "        time.sleep(0.05)\n        return 'slow'\n"
               "module = sys.modules['" +
               name + "'] = Slow('slow')\nmodule.last = len\nmade.append('" + name + "')\n")
                  .c_str());
    std::atomic<int> seen = 0;
    std::vector<std::thread> threads;
    for (int index = 0; index < 6; ++index) {
        threads.emplace_back([&, withLock = index % 2 == 0] {
            const auto gil = withLock ? std::make_unique<GilGuard>() : nullptr;
            seen += hasMember(module, "last") ? 1 : 0;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(seen, 6);
}

/// A package on disk.
constexpr const char* kPackage = R"(
root = tempfile.mkdtemp()
package = os.path.join(root, 'NAME')
os.makedirs(os.path.join(package, 'inner'))
def write(path, text):
    with open(os.path.join(package, path), 'w') as file: file.write(text)
write('__init__.py', 'def top(): return 1\n')
write('first.py', 'def one(): return 1\n')
write('_hidden.py', '')
write('broken.py', '1/0\n')
write('leaves.py', 'raise SystemExit(3)\n')
write('inner/__init__.py', '')
write('inner/deep.py', 'class Deep: pass\n')
os.makedirs(os.path.join(package, 'tests'))
write('tests/__init__.py', '')
os.symlink('.', os.path.join(package, 'itself'))
write('one.py', 'import NAME.two\ndef name(): return NAME.two.__name__\n')
write('two.py', 'import NAME.one\ndef name(): return NAME.one.__name__\n')
write('everything.py', '__path__ = [' + repr(root) + ']\n')
sys.path.append(root)
)";

TEST_F(ModuleTreeTest, APackageBringsItsSubmodules) {
    const std::string name = freshName();
    std::string script = kPackage;
    for (std::size_t at = script.find("NAME"); at != script.npos; at = script.find("NAME"))
        script.replace(at, 4, name);
    runLocked(script.c_str());
    const Any package = exportModule(String("python." + name), String(name), 1);
    runLocked("import shutil\nsys.path.remove(root)\nshutil.rmtree(root)\n");
    EXPECT_EQ((*I_Invokable_Generic::cast(member(member(package, "first"), "one")))().asInteger(), 1);
    EXPECT_FALSE(find_class(String("python." + name + ".inner.deep.Deep")).isNone());
    EXPECT_FALSE(hasMember(package, "_hidden"));
    EXPECT_FALSE(hasMember(package, "broken"));
    EXPECT_FALSE(hasMember(package, "leaves"));
    EXPECT_FALSE(hasMember(package, "tests"));
    for (const char* circular : {"one", "two"})
        EXPECT_TRUE(hasMember(member(package, circular), "name")) << circular;
    for (const char* endless : {"itself", "everything"}) {
        EXPECT_TRUE(hasMember(package, endless)) << endless;
        EXPECT_FALSE(hasMember(member(package, endless), "first")) << endless;
        EXPECT_FALSE(hasMember(member(package, endless), name.c_str())) << endless;
    }
}

/// `unittest` binds the class that its submodule `main` defines to the same name.
TEST_F(ModuleTreeTest, ASubmoduleIsFoundBehindAMemberOfItsName) {
    ASSERT_FALSE(internal::is_error_result(exportAsChild("unittest")));
    const Any submodule = find_module("python.unittest.main");
    EXPECT_TRUE(ModulePython::isInstance(submodule));
    const Any member = find_module("python.unittest").propertyValue("main");
    EXPECT_EQ(Class_Generic::cast(member).valueOr(Class_Generic()).name(), u"TestProgram");
}

}  // namespace
