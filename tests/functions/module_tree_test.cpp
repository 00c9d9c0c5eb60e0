#include "functions/module_tree.h"

#include "functions/module_python.h"
#include "ling/byte_array.h"
#include "ling/class.h"
#include "ling/error.h"
#include "ling/function.h"
#include "ling/members.h"
#include "ling/module.h"
#include "support/python_test.h"

using ling::python::exportModule;
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
sys.path.append(root)
)";

TEST_F(ModuleTreeTest, APackageBringsItsSubmodules) {
    const std::string name = freshName();
    std::string script = kPackage;
    script.replace(script.find("NAME"), 4, name);
    runLocked(script.c_str());
    const ling::Any package = exportModule(ling::String("python." + name), ling::String(name), 1);
    runLocked("import shutil\nsys.path.remove(root)\nshutil.rmtree(root)\n");
    EXPECT_EQ((*ling::I_Invokable_Generic::cast(member(member(package, "first"), "one")))().asInteger(), 1);
    EXPECT_FALSE(ling::find_class(ling::String("python." + name + ".inner.deep.Deep")).isNone());
    EXPECT_FALSE(hasMember(package, "_hidden"));
    EXPECT_FALSE(hasMember(package, "broken"));
    EXPECT_FALSE(hasMember(package, "leaves"));
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

}  // namespace
