#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "process/support/process.h"

/// Other people's packages beside the plug-in: as folders, in archives, with native modules. Each test has a copy of
/// the staged tree, with the shell in it.

namespace {

namespace fs = std::filesystem;
using process::Command;
using process::Ended;
using Lines = std::vector<std::string>;

class Packages : public testing::Test {
protected:
    Packages() {
        fs::copy_file(process::stage() / "lingsh", tree_.path() / "lingsh");
        const fs::path packages = tree_.extensions() / "site-packages";
        const Ended made = shell({LING_TEST_SCRIPTS "/make_packages.py", packages.string()});
        EXPECT_EQ(made.status, 0) << made.err;
        fs::create_directory(packages / "native");
        for (const char* name : {"single_phase.so", "multi_phase.so"})
            fs::copy_file(fs::path(LING_TEST_NATIVE) / name, packages / "native" / name);
    }

    /// What the shell of the copy does.
    Ended shell(const Lines& arguments) const {
        Command command = process::shell(arguments);
        command.program = tree_.path() / "lingsh";
        command.directory = tree_.path();
        return process::run(command);
    }

    /// What a host in native code sees: the values of expressions, and of functions of Python that it calls.
    Lines host(const Lines& questions) const {
        Lines arguments = {"plain", tree_.extensions().string()};
        arguments.insert(arguments.end(), questions.begin(), questions.end());
        const Ended ended = process::run(process::host("start_host", arguments));
        EXPECT_EQ(ended.status, 0) << ended.err;
        EXPECT_EQ(ended.err, "");
        Lines lines = ended.lines();
        EXPECT_EQ(lines.empty() ? "" : lines.front(), "module python: yes");
        return {lines.begin() + (lines.empty() ? 0 : 1), lines.end()};
    }

    process::ScratchTree tree_;
};

TEST_F(Packages, AreImportedFromFoldersAndArchives) {
    for (const char* name : {"plain", "packed", "squeezed", "linked"}) {
        SCOPED_TRACE(name);
        const std::string package = name;
        const std::string data = "data of " + package;
        const Ended ended = shell({"-c",
                                   "import importlib.metadata, importlib.resources, inspect, pkgutil, sys\n"
                                   "name = sys.argv[1]\n"
                                   "package = __import__(name)\n"
                                   "print(package.answer(), package.part.deep.VALUE)\n"
                                   "table = importlib.resources.files(package) / 'data' / 'table.txt'\n"
                                   "print(table.read_text())\n"
                                   "with importlib.resources.as_file(table) as path:\n"
                                   "    print(path.read_text())\n"
                                   "print(pkgutil.get_data(name, 'data/table.txt').decode())\n"
                                   "print(inspect.getsource(package.answer).splitlines()[0])\n"
                                   "print(importlib.metadata.version(name))\n"
                                   "print(ling.python.python_import(name).answer())\n"
                                   "print(ling.python.python_import(name) is package)\n",
                                   package});
        EXPECT_EQ(ended.err, "");
        EXPECT_EQ(ended.lines(), (Lines{"answer of " + package + " answer of " + package, data, data, data,
                                        "def answer():", "1.2", "answer of " + package, "True"}));
        EXPECT_EQ(shell({"-m", package, "a"}).out, package + " ['a']\n");
    }
}

TEST_F(Packages, AreCalledByAHostThatKnowsNoPython) {
    EXPECT_EQ(host({"call plain.answer", "call packed.answer", "call squeezed.part.deep.VALUE.upper",
                    "call native.single_phase.answer", "call native.multi_phase.answer"}),
              (Lines{"answer of plain", "answer of packed",
                     "error: No module named 'squeezed.part.deep.VALUE'; 'squeezed.part.deep' is not a package", "42",
                     "42"}));
}

TEST_F(Packages, ArchivesComeBeforeFolders) {
    EXPECT_EQ(host({"__import__('twofold').answer()"}), (Lines{"answer of twofold"}));
}

TEST_F(Packages, WhatIsNoArchiveIsLeftAlone) {
    for (const char* name : {"shouted", "folded", "cut"}) {
        const std::string missing = std::string("No module named '") + name + "'";
        EXPECT_EQ(host({"__import__('" + std::string(name) + "')", "call " + std::string(name) + ".answer", "1 + 1"}),
                  (Lines{"error: " + missing, "error: " + missing, "2"}));
    }
    // Regular files with the right name are on the path all the same, and in nobody's way.
    EXPECT_EQ(host({"sum(p.endswith(('/garbage.zip', '/empty.zip', '/cut.zip')) for p in __import__('sys').path)",
                    "any(p.endswith(('.ZIP', '/folder.zip')) for p in __import__('sys').path)"}),
              (Lines{"3", "false"}));
}

TEST_F(Packages, ASpoiltArchiveFailsWhenItIsRead) {
    EXPECT_EQ(host({"__import__('spoilt')", "__import__('packed').answer()"}),
              (Lines{"error: Error -3 while decompressing data: invalid stored block lengths", "answer of packed"}));
}

// The host has loaded the plug-in, and libpython with it, with local symbols: the modules need what they use of
// libpython to be visible all the same, and to be that of the interpreter that runs.
TEST_F(Packages, NativeModulesUseTheInterpreterThatRuns) {
    const std::string single = "__import__('native.single_phase').single_phase";
    const std::string multiple = "__import__('native.multi_phase').multi_phase";
    EXPECT_EQ(host({single + ".way", multiple + ".way", single + ".check(5)", multiple + ".check('x')",
                    "type(" + single + ".answer) is type(len)", "type(" + multiple + ".Thing) is type",
                    "type('Derived', (" + multiple + ".Thing,), {'x': 1})().x"}),
              (Lines{"single", "multiple", "none", "error: not an integer: 'x'", "true", "true", "1"}));
    const Ended ended = shell({"-c",
                               "from native import multi_phase, single_phase\n"
                               "print(single_phase.answer(), multi_phase.answer(), multi_phase.Thing)\n"
                               "print(ling.python.python_import('native.multi_phase') is multi_phase)\n"
                               "print(ling.python.python_import('native.multi_phase.answer')())\n"});
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.lines(), (Lines{"42 42 <class 'native.multi_phase.Thing'>", "True", "42"}));
}

TEST_F(Packages, NothingIsWrittenBesideThem) {
    const Lines before = process::filesOf(tree_.extensions());
    (void)host({"call plain.answer", "call squeezed.answer"});
    EXPECT_EQ(shell({"-c", "import plain, squeezed"}).err, "");
    EXPECT_EQ(process::filesOf(tree_.extensions()), before);
}

}  // namespace
