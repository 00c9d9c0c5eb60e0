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

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

using ling::python::exportModule;
using ling::python::exportModuleLater;
using ling::python::GilGuard;
using ling::python::ModulePython;

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

ling::Any exportAsChild(const std::string& name) {
    return exportModule(ling::String("python." + name), ling::String(name), 0);
}

ling::Any member(const ling::Any& module, const char* name) {
    return module.propertyValue(ling::property_ident_untyped(name));
}

bool hasMember(const ling::Any& module, const char* name) {
    return !ling::property_of(module, ling::property_ident_untyped(name)).isNone();
}

TEST_F(ModuleTreeTest, ShowsClassesAndCallablesAndNothingElse) {
    const std::string name = freshName();
    make(name,
         "\"The doc.\"\nclass Item: pass\ndef call(x): return x + 1\ncounted = len\nnumber = 42\ntext = \"a\"\n"
         "import json\n_hidden = len\ndef _private(): pass\nclass __Odd: pass\n"
         "globals()[\"\"] = len\nglobals()[3] = len\nnothing = None\n");
    const ling::Any module = exportAsChild(name);
    ASSERT_TRUE(ling::Module::cast(module));
    EXPECT_EQ(ling::unchecked<ling::Module>(module).doc().toStdString(), "The doc.");
    EXPECT_EQ(ling::unchecked<ling::Module>(module).name().toStdString(), "python." + name);
    EXPECT_TRUE(ling::Class_Generic::cast(member(module, "Item")));
    EXPECT_EQ((*ling::I_Invokable_Generic::cast(member(module, "call")))(1).asInteger(), 2);
    EXPECT_EQ((*ling::I_Invokable_Generic::cast(member(module, "counted")))("abc").asInteger(), 3);
    for (const char* absent :
         {"number", "text", "json", "_hidden", "_private", "__Odd", "", "3", "nothing", "__name__"})
        EXPECT_FALSE(hasMember(module, absent)) << absent;
}

TEST_F(ModuleTreeTest, HasAClassOfItsOwnAndHoldsTheModule) {
    const std::string name = freshName();
    make(name, "");
    const ling::Any module = exportAsChild(name);
    const ling::Class_Generic cls = ling::raw_class_of(module);
    EXPECT_NE(cls, ModulePython::getClass());
    EXPECT_TRUE(cls.isAncestor(ModulePython::getClass()));
    EXPECT_EQ(ModulePython::getClass().doc().toStdString(), "Class to export a python module.");
    GilGuard gil;
    const ling::python::PyRef held = eval(("sys.modules['" + name + "']").c_str());
    EXPECT_EQ(ModulePython::pythonModule(module), held.get());
}

TEST_F(ModuleTreeTest, IsFoundInTheTreeAndItsClassesByName) {
    const std::string name = freshName();
    make(name, "class Item: pass\n");
    const ling::Any module = exportAsChild(name);
    EXPECT_TRUE(ling::find_module(ling::String("python." + name)).isSameAs(module));
    EXPECT_TRUE(member(ling::find_module("python"), name.c_str()).isSameAs(module));
    EXPECT_TRUE(ling::find_class(ling::String("python." + name + ".Item")).isSameAs(member(module, "Item")));
    EXPECT_FALSE(ling::find_class("python.collections.abc.Set").isNone());
}

TEST_F(ModuleTreeTest, TheSameModuleIsExportedOnce) {
    const std::string name = freshName();
    make(name, "");
    const ling::Any first = exportAsChild(name);
    EXPECT_TRUE(exportAsChild(name).isSameAs(first));
}

TEST_F(ModuleTreeTest, ANameThatIsTakenIsAnError) {
    const std::string name = freshName();
    make(name, "");
    const ling::Any first = exportAsChild(name);
    EXPECT_TRUE(ling::internal::is_error_result(exportModule(ling::String("python." + name), "json", 0)));
    EXPECT_TRUE(ling::find_module(ling::String("python." + name)).isSameAs(first));
}

TEST_F(ModuleTreeTest, AnImportThatFailsIsTheResult) {
    EXPECT_EQ(messageOf(exportAsChild("no_such_module")), "No module named 'no_such_module'");
    EXPECT_EQ(messageOf(exportAsChild("")), "Empty module name");
    EXPECT_EQ(messageOf(exportModule("python.x_sub", "json.no_such", 0)), "No module named 'json.no_such'");
    EXPECT_TRUE(ling::find_module("python.no_such_module").isNone());
}

TEST_F(ModuleTreeTest, MembersThatMisbehaveAreLeftOut) {
    const std::string name = freshName();
    make(name,
         "class Meta(type):\n"
         "    def __getattribute__(cls, name): raise RuntimeError(name)\n"
         "class Hostile(metaclass=Meta): pass\n"
         "class Callable:\n    def __call__(self): pass\n    def __getattr__(self, name): raise RuntimeError(name)\n"
         "hostile = Callable()\n"
         "def fine(): return 1\n"
         "class __doc__: pass\n");
    const ling::Any module = exportAsChild(name);
    EXPECT_EQ((*ling::I_Invokable_Generic::cast(member(module, "fine")))().asInteger(), 1);
}

struct HostileModule {
    const char* name;
    const char* code;
    const char* doc;
};

class HostileModuleTest : public ModuleTreeTest, public testing::WithParamInterface<HostileModule> {};

/// Nothing is pending afterwards: the fixture looks.
TEST_P(HostileModuleTest, IsExportedWithWhatCanBeHadOfIt) {
    const std::string name = freshName();
    make(name, std::string(GetParam().code) + "\ndef fine(): return 1\n");
    const ling::Any module = exportAsChild(name);
    ASSERT_TRUE(ling::Module::cast(module));
    EXPECT_EQ(ling::unchecked<ling::Module>(module).doc().toStdString(), GetParam().doc);
    EXPECT_EQ((*ling::I_Invokable_Generic::cast(member(module, "fine")))().asInteger(), 1);
}

constexpr HostileModule kHostileModules[] = {
    {"DocIsANumber", "__doc__ = 5", ""},
    {"DocIsAClass", "class __doc__: pass", ""},
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

INSTANTIATE_TEST_SUITE_P(Rows, HostileModuleTest, testing::ValuesIn(kHostileModules),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(ModuleTreeTest, AMemberKeepsItsNameWhateverItIs) {
    const std::string name = freshName();
    make(name, "globals().update({\"not one\": len, \"class\": len, chr(233): len})\n");
    const ling::Any module = exportAsChild(name);
    for (const char* present : {"not one", "class", "\u00e9"})
        EXPECT_TRUE(hasMember(module, present)) << present;
}

TEST_F(ModuleTreeTest, WhatStandsForAModuleInSysModulesIsExported) {
    const std::string name = freshName();
    runLocked(("class Stand:\n    __doc__ = 'Stands in.'\nstand = sys.modules['" + name +
               "'] = Stand()\nmade.append('" + name + "')\n")
                  .c_str());
    const ling::Any module = exportAsChild(name);
    EXPECT_EQ(ling::unchecked<ling::Module>(module).doc().toStdString(), "Stands in.");
    GilGuard gil;
    const ling::python::PyRef stand = eval("stand");
    EXPECT_EQ(ModulePython::pythonModule(module), stand.get());
}

TEST_F(ModuleTreeTest, ALateModuleIsImportedByTheFirstLookIntoIt) {
    using Look = bool (*)(const ling::Module&, const ling::String&);
    constexpr Look kLooks[] = {
        [](const ling::Module& module, const ling::String&) { return hasMember(module, "Item"); },
        [](const ling::Module& module, const ling::String&) { return module.doc() == ling::String("The doc."); },
        [](const ling::Module& module, const ling::String&) { return ModulePython::pythonModule(module) != nullptr; },
        [](const ling::Module&, const ling::String& path) { return !ling::find_class(path + u".Item").isNone(); },
        [](const ling::Module& module, const ling::String&) {
            return ling::raw_class_of(module).classProperties(ling::Inherited::No).size() == 1;
        },
        [](const ling::Module& module, const ling::String&) {
            return !module.fieldValue(ling::python::PythonProxy::$_pyobj).isNone();
        },
    };
    for (const Look look : kLooks) {
        const std::string name = freshName();
        const ling::String path("python." + name);
        const ling::Any exported = exportModuleLater(path, ling::String(name));
        make(name, "\"The doc.\"\nclass Item: pass\n");
        EXPECT_TRUE(ling::find_module(path).isSameAs(exported));
        EXPECT_TRUE(look(ling::find_module(path), path));
        EXPECT_TRUE(exportAsChild(name).isSameAs(exported));
    }
}

TEST_F(ModuleTreeTest, ALateModuleIsNotImportedByWhatDoesNotLookIntoIt) {
    const std::string name = freshName();
    const ling::String path("python." + name);
    const ling::Any exported = exportModuleLater(path, ling::String(name));
    const ling::Any child = ling::find_or_create_module(path + u".child");
    EXPECT_TRUE(exported.propertyValue(ling::property_ident_untyped("child")).isSameAs(child));
    EXPECT_EQ(ling::qualname(exported), path);
    EXPECT_EQ(ling::python::evaluateExpression("1 + 1", ling::Map_Generic(), ling::Map_Generic()).asInteger(), 2);
    EXPECT_TRUE(ling::raw_class_of(exported).record()->expectsMembers());
}

ling::String& logged() {
    static ling::String& text = *new ling::String;
    return text;
}

TEST_F(ModuleTreeTest, ALateModuleThatCannotBeImportedIsTriedAgain) {
    const std::string name = freshName();
    const ling::Any module = exportModuleLater(ling::String("python." + name), ling::String(name));
    ling::internal::set_assertion_log([](const ling::String& line) { logged() = line; });
    EXPECT_FALSE(hasMember(module, "fine"));
    ling::internal::set_assertion_log(nullptr);
    EXPECT_EQ(logged().toStdString(),
              "Unable to export the Python module " + name + ": No module named '" + name + "'");
    EXPECT_EQ(ModulePython::pythonModule(module), nullptr);
    make(name, "def fine(): return 1\n");
    EXPECT_TRUE(hasMember(module, "fine"));
}

TEST_F(ModuleTreeTest, APendingPythonErrorOutlivesTheImportOfALateModule) {
    const std::string name = freshName();
    const ling::Any module = exportModuleLater(ling::String("python." + name), ling::String(name));
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
    const ling::Any module = exportModuleLater(ling::String("python." + name), ling::String(name));
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
    const ling::Any package = exportModule(ling::String("python." + name), ling::String(name), 1);
    runLocked("import shutil\nsys.path.remove(root)\nshutil.rmtree(root)\n");
    EXPECT_EQ((*ling::I_Invokable_Generic::cast(member(member(package, "first"), "one")))().asInteger(), 1);
    EXPECT_FALSE(ling::find_class(ling::String("python." + name + ".inner.deep.Deep")).isNone());
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

TEST_F(ModuleTreeTest, APackageWithoutSubmodulesIsAModule) {
    const std::string name = freshName();
    make(name, "__path__ = []\ndef f(): return 1\n");
    EXPECT_TRUE(hasMember(exportAsChild(name), "f"));
}

TEST_F(ModuleTreeTest, APathThatIsNoListEndsInNoSubmodules) {
    const std::string name = freshName();
    make(name, "__path__ = 3\ndef f(): return 1\n");
    EXPECT_TRUE(hasMember(exportAsChild(name), "f"));
}

TEST_F(ModuleTreeTest, ANewInstanceOfTheClassHoldsNoModule) {
    const ling::Any module = ModulePython::getClass().allocateInstance();
    EXPECT_TRUE(ling::Module::cast(module));
    EXPECT_EQ(ModulePython::pythonModule(module), nullptr);
    EXPECT_EQ(ModulePython::pythonModule(ling::Any(1)), nullptr);
}

/// `unittest` binds the class that its submodule `main` defines to the same name.
TEST_F(ModuleTreeTest, ASubmoduleIsFoundBehindAMemberOfItsName) {
    ASSERT_FALSE(ling::internal::is_error_result(exportAsChild("unittest")));
    const ling::Any submodule = ling::find_module("python.unittest.main");
    EXPECT_TRUE(ModulePython::isInstance(submodule));
    const ling::Any member = ling::find_module("python.unittest").propertyValue(ling::property_ident_untyped("main"));
    EXPECT_EQ(ling::Class_Generic::cast(member).valueOr(ling::Class_Generic()).name(), u"TestProgram");
}

}  // namespace
