#include "support/python_test.h"
#include "support/script.h"
#include "support/table.h"
#include "support/things.h"

/// The host's modules as Python programs import them.

namespace {

class ImportingTest : public ThingsTest {
protected:
    ImportingTest() { expectValuesToStay(); }
};

/// Imported anew for each row, whatever the one before has done to them.
constexpr const char* kBefore = R"(
import importlib, sys
for name in [name for name in sys.modules if name.partition('.')[0] in ('things', 'ling')]:
    del sys.modules[name]
host = ling.find_module('things')
import things
def outcome(statement):
    return probe(exec, statement, {}).replace('None', 'done')
)";

constexpr ScriptRow kRows[] = {
    {"TheFinderStandsLast",
     "[type(f).__name__ for f in sys.meta_path].index('HostModuleFinder') == len(sys.meta_path) - 1", "True"},
    {"OneObjectWhicheverWayItIsReached",
     "import ling as l, ling.python as a\nfrom ling import python as b\n"
     "return [m is sys.modules['ling.python'] for m in (a, b, l.python, importlib.import_module('ling.python'))]",
     "[True, True, True, True]"},
    {"AChildIsImportedWhenItIsRead",
     "import ling as l\nbefore = 'ling.python' in sys.modules\nreturn [before, l.python is sys.modules['ling.python']]",
     "[False, True]"},
    {"ExportedPythonModules",
     "import python.builtins\nfrom python.collections.abc import Set\n"
     "return [python.builtins.len([1]), Set.__name__]",
     "[1, 'Set']"},
    {"FromAThread",
     "import threading\nfound = []\nwork = lambda: found.append(importlib.import_module('ling.python'))\n"
     "threads = [threading.Thread(target=work) for _ in range(4)]\nfor t in threads: t.start()\n"
     "for t in threads: t.join()\nreturn [m is found[0] for m in found]",
     "[True, True, True, True]"},
    {"Attributes",
     "import ling as l\nreturn [things.__name__, things.__package__, things.__spec__.origin, repr(things), "
     "l.__package__, l.__doc__[:18], l.__path__]",
     "['things', '', 'host', \"<module 'things' (host)>\", 'ling', 'The object runtime', []]"},
    {"NoPathWithoutChildren", "hasattr(things, '__path__')", "False"},
    {"MembersAreThoseOfTheHost", "[things.add(1, 2), things.Thing == host.Thing]", "[3, True]"},
    {"NamesForAll", "[n for n in things.__all__ if n in ('Thing', 'add', 'doc', 'classes', 'nothing')]",
     "['Thing', 'add']"},
    {"LaterMembersAreThere",
     "host.newcomer = 5\nseen = [things.newcomer, 'newcomer' in things.__all__, 'newcomer' in dir(things)]\n"
     "del host.newcomer\nreturn seen + [hasattr(things, 'newcomer')]",
     "[5, True, True, False]"},
    {"NamesThatCannotBeBound",
     "names = ('no identifier', 'class', 'None')\nfor name in names: setattr(host, name, 1)\n"
     "scope = {}\nexec('from things import *', scope)\n"
     "seen = [name in dir(things) for name in names], [name in scope for name in names]\n"
     "for name in names: delattr(host, name)\nreturn seen",
     "([True, True, True], [False, False, False])"},
    {"Directory", "[n for n in ('__doc__', '__spec__', 'Thing', 'add', 'doc') if n in dir(things)]",
     "['__doc__', '__spec__', 'Thing', 'add']"},
    {"MissingModule", "outcome('import things.nothing')",
     "\"ModuleNotFoundError: No module named 'things.nothing'; 'things' is not a package\""},
    {"MissingModuleInAPackage", "outcome('import ling.nothing')",
     "\"ModuleNotFoundError: No module named 'ling.nothing'\""},
    {"MissingName", "outcome('from ling import nothing')",
     "\"ImportError: cannot import name 'nothing' from 'ling' (unknown location)\""},
    {"MissingAttribute", "things.nothing", "AttributeError: module 'things' has no attribute 'nothing'"},
    {"APropertyThatFails", "host.Thing('x').broken", "RuntimeError: Cannot be read."},
    {"ReloadIsHarmless", "[importlib.reload(things) is things, things.add(1, 1)]", "[True, 2]"},
    {"ReplacedAndPutBack",
     "from unittest import mock\nwith mock.patch('things.add', return_value=9):\n"
     "    seen = [things.add(1, 2), host.add(1, 2)]\nreturn seen + [things.add(1, 2), 'add' in vars(things)]",
     "[9, 3, 3, False]"},
    {"ASetterIsTheHosts",
     "things.doc = 'Changed.'\nseen = [host.doc, things.__doc__, 'doc' in vars(things)]\nhost.doc = ''\nreturn seen",
     "['Changed.', 'Changed.', False]"},
    {"WhatIsTheHostsCannotBeDeleted", "delattr(things, 'add')",
     "AttributeError: module 'things' has no attribute 'add' of its own"},
    {"CopiedAndPickledByName",
     "import copy, pickle\nreturn [f(things) is things for f in (copy.copy, copy.deepcopy, lambda m: "
     "pickle.loads(pickle.dumps(m)))]",
     "[True, True, True]"},
    {"NobodyElseMakesOne", "type(things)('x')", "TypeError: cannot create 'HostModule' instances"},
    {"IsNoProgram", "import runpy\nreturn probe(runpy.run_module, 'things')",
     "ImportError: No code object available for things"},
    {"AModuleThatIsGone", "class Spec: name = 'gone'\nreturn probe(sys.meta_path[-1].create_module, Spec)",
     "ImportError: the host has no module 'gone'"},
    {"DirectoryOfANameBoundByEvaluation", "[n for n in dir(host) if n in ('Thing', 'add', 'nothing')]",
     "['Thing', 'add']"},
};
LING_TABLE(HostModules, ImportingTest, kRows);

TEST_P(HostModules, AreImported) { EXPECT_EQ(outcome(kBefore, GetParam()), GetParam().expected); }

constexpr ScriptRow kHelp[] = {
    {"OfAModule", "ling_module()", "The object runtime as its languages see it|List = ling.List|display = "},
    {"OfAnImportedModule", "things", "Thing = things.Thing|(name) -> Thing|add = |Adds two numbers."},
    {"OfAClass", "host.Thing", "(name) -> Thing|A thing with a name."},
    {"OfAFunction", "host.add", "(a: Integer, b: Integer) -> Integer|Adds two numbers."},
    {"OfAMethodOfAList", "ling.List().append", "(item)|Adds an item at the end."},
};
LING_TABLE(HelpOn, ImportingTest, kHelp);

TEST_P(HelpOn, ShowsTheTextAndSignatureOfTheThingItself) {
    const std::string code = std::string(
                                 "import pydoc\ndef ling_module():\n    import ling\n    return ling\n"
                                 "text = pydoc.plain(pydoc.render_doc(") +
                             GetParam().code + "))\nreturn [part for part in '" + GetParam().expected +
                             "'.split('|') if part not in text] and text";
    EXPECT_EQ(script(kBefore + code), "[]");
}

}  // namespace
