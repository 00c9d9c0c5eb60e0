#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "process/support/process.h"

/// What the shell offers beyond `python3`: expressions, statements that return, the host's modules by name, and what
/// it says when it is used wrongly or finds no Python.

namespace {

namespace fs = std::filesystem;
using process::Command;
using process::Ended;
using process::Folder;
using process::run;
using process::shell;

struct Row {
    const char* name;
    std::vector<std::string> arguments;
    const char* out;
    const char* err = "";
    int status = 0;

    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

constexpr const char* kDivision =
    "Traceback (most recent call last):\n  File \"<string>\", line 1, in <module>\nZeroDivisionError: division by "
    "zero\n";

const Row kRows[] = {
    {"ExpressionNumber", {"-e", "2**10"}, "1024\n"},
    {"ExpressionText", {"-e", "\"a\" \"b\""}, "ab\n"},
    {"ExpressionNone", {"-e", "None"}, "none\n"},
    {"ExpressionNonAscii", {"-e", "'\xC3\xA9\xF0\x9F\x98\x80'"}, "\xC3\xA9\xF0\x9F\x98\x80\n"},
    {"NothingOfTheHostIsImportedBefore",
     {"-c", "import sys\nprint([name for name in sys.modules if name.partition('.')[0] in ('ling', 'python')])"},
     "[]\n"},
    {"ExpressionOfTheHost", {"-e", "ling.kind_of(2.5)"}, "float\n"},
    {"ExpressionPrintsFirst", {"-e", "print('before') or 1"}, "before\n1\n"},
    {"ExpressionFails", {"-e", "1/0"}, "", kDivision, 1},
    {"ExpressionFailsAfterPrinting", {"-e", "print('before') or 1/0"}, "before\n", kDivision, 1},
    {"ExpressionFailsWithoutText", {"-e", "next(iter(()))"}, "", "ling.StopIteration\n", 1},
    {"ExpressionSyntaxError",
     {"-e", "1 +"},
     "",
     "  File \"<string>\", line 1\n    1 +\nSyntaxError: invalid syntax\n",
     1},
    {"ExpressionExits", {"-e", "exit(3)"}, "", "", 3},
    {"ExpressionExitsDeeply", {"-e", "[exit('bye') for x in (1,)]"}, "", "bye\n", 1},
    {"ExpressionCatchesExit", {"-e", "__import__('unittest').TestCase().assertRaises(SystemExit, exit, 3)"}, "none\n"},
    {"CodeReturns", {"-c", "a = 6\nreturn a * 7"}, "42\n"},
    {"CodeReturnsNone", {"-c", "return"}, ""},
    {"CodeReturnsEarly", {"-c", "for x in range(9):\n    if x == 3:\n        return x\nprint('late')"}, "3\n"},
    {"CodeReturnsInside", {"-c", "def f():\n    return 1\nf()"}, ""},
    {"CodeRecursion", {"-c", "def f(n):\n    return n and n * f(n - 1) or 1\nreturn f(5)"}, "120\n"},
    {"CodeFailsBeforeReturn",
     {"-c", "x = 0\nreturn 1 / x"},
     "",
     "Traceback (most recent call last):\n  File \"<string>\", line 2, in <module>\n    return 1 / x\n"
     "           ~~^~~\nZeroDivisionError: division by zero\n",
     1},
    {"HostModules",
     {"-c", "print(ling.find_module('python').name, python.name, ling.qualname(1))"},
     "python python ling.Integer\n"},
    {"WrongOption",
     {"--no-such"},
     "",
     "The following argument was not expected: --no-such\nRun with --help for more information.\n",
     2},
    {"MissingModule", {"-m"}, "", "-m: 1 required TEXT missing\nRun with --help for more information.\n", 2},
    {"TwoModes",
     {"-e", "1", "-c", "2"},
     "",
     "one of FILE, -m, -c and -e is enough\nRun with --help for more information.\n",
     2},
    {"ExpressionAndFile",
     {"-e", "1", "x.py"},
     "",
     "one of FILE, -m, -c and -e is enough\nRun with --help for more information.\n",
     2},
    {"AbsentFile",
     {"/no/such.py"},
     "",
     "lingsh: can't open file '/no/such.py': [Errno 2] No such file or directory\n",
     2},
    {"FlagsOfPython", {"-B", "-I", "-S", "-OO", "-vbd", "-c", "print(1)"}, "1\n"},
    {"LettersTogether", {"-uIc", "print(1)", "-V"}, "1\n"},
    {"WarningFilters",
     {"-Wignore", "-W", "error::UserWarning", "-c", "import warnings as w; w.warn('a', FutureWarning); w.warn('b')"},
     "",
     "Traceback (most recent call last):\n  File \"<string>\", line 1, in <module>\n    import warnings as w; "
     "w.warn('a', FutureWarning); w.warn('b')\n                                                      ~~~~~~^^^^^\n"
     "UserWarning: b\n",
     1},
    {"ExtraOptions",
     {"-Xint_max_str_digits=700", "-X", "mine", "-c", "import sys; print(sys.get_int_max_str_digits(), sys._xoptions)"},
     "700 {'int_max_str_digits': '700', 'mine': True}\n"},
    {"WrongExtraOption",
     {"-Xtracemalloc=x", "-c", "1"},
     "",
     "lingsh: -X tracemalloc: invalid literal for int() with base 10: 'x'\n",
     1},
    {"WithoutEnvironments",
     {"-m", "venv", "/no/such"},
     "",
     "lingsh: there are no virtual environments of this interpreter: packages go into 'site-packages' beside the "
     "extension, by 'pip install --target' of any CPython 3.13\n",
     1},
    {"ValueInTheOption", {"-cprint(__name__)", "--version"}, "__main__\n"},
};

class ShellModes : public testing::TestWithParam<Row> {};

TEST_P(ShellModes, Answer) {
    const Ended ended = run(shell(GetParam().arguments));
    EXPECT_EQ(ended.out, GetParam().out);
    EXPECT_EQ(ended.err, GetParam().err);
    EXPECT_EQ(ended.status, GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(Rows, ShellModes, testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ShellOptions, HelpNamesEveryMode) {
    const Ended ended = run(shell({"--help"}));
    EXPECT_EQ(ended.status, 0);
    for (const char* part : {"FILE", "-m MODULE", "-c CODE", "-e EXPR", "--extensions DIR", "--version", "--help"})
        EXPECT_NE(ended.out.find(part), std::string::npos) << part;
}

TEST(ShellOptions, TellsTheVersionOfPython) { EXPECT_EQ(run(shell({"-V"})).out.substr(0, 12), "Python 3.13."); }

TEST(ShellOptions, VersionNeedsNoExtension) {
    const Ended ended = run(shell({"--extensions", "/no/such", "--version"}));
    EXPECT_EQ(ended.out.substr(0, 7), "lingsh ");
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.status, 0);
}

/// A program in two files, both of which import what the host has, under Python's own tools.
struct Tool {
    const char* name;
    std::vector<std::string> arguments;
    const char* printed;
    const char* input = "";

    friend void PrintTo(const Tool& tool, std::ostream* out) { *out << tool.name; }
};

const Tool kTools[] = {
    {"Alone", {"program.py"}, "[1, 2] List\n"},
    {"Debugger", {"-m", "pdb", "program.py"}, "[1, 2] List\n", "c\nq\n"},
    {"Profiler", {"-m", "cProfile", "program.py"}, "[1, 2] List\n"},
    {"Tests", {"-m", "unittest", "sibling"}, "tested\n"},
    {"Examples", {"-m", "doctest", "-v", "sibling.py"}, "1 passed"},
    {"Runpy", {"-c", "import runpy\nrunpy.run_path('program.py')"}, "[1, 2] List\n"},
    {"AFileOfTheUserWins", {"-c", "import python\nprint(python.value)"}, "mine\n"},
};

class ShellTools : public testing::TestWithParam<Tool> {};

TEST_P(ShellTools, FindTheHostInEveryFile) {
    const Folder folder;
    (void)folder.write("program.py", "import sibling\nfrom ling import List\nprint(sibling.make(), List.name)\n");
    (void)folder.write("python.py", "value = 'mine'\n");
    (void)folder.write("sibling.py",
                       "'''\n>>> len(make())\n2\n'''\nimport ling, unittest\nfrom ling import List\n"
                       "def make():\n    return List([1, 2])\nclass Test(unittest.TestCase):\n    def test_it(self):\n"
                       "        self.assertEqual(make(), ling.List([1, 2]))\n        print('tested')\n");
    Command command = shell(GetParam().arguments);
    command.directory = folder.path();
    command.input = GetParam().input;
    const Ended ended = run(command);
    EXPECT_NE(ended.out.find(GetParam().printed), std::string::npos) << ended.out << ended.err;
    EXPECT_EQ(ended.status, 0) << ended.err;
}

INSTANTIATE_TEST_SUITE_P(Rows, ShellTools, testing::ValuesIn(kTools), [](const auto& row) { return row.param.name; });

constexpr const char* kNoPython =
    "lingsh: no extension offers Python: there is no module 'ling.python' with a function 'evaluate'\n";

TEST(ShellExtensions, AFolderThatIsMissingIsNamed) {
    const Ended ended = run(shell({"--extensions", "/no/such", "-e", "1"}));
    EXPECT_EQ(ended.err,
              std::string("lingsh: /no/such: Unable to read the directory: No such file or directory.\n") + kNoPython);
    EXPECT_EQ(ended.status, 1);
}

TEST(ShellExtensions, AFileThatIsNoLibraryIsNamedAndTheRestIsUsed) {
    const Folder folder;
    const fs::path broken = folder.write("a_broken.so", "no library");
    const fs::path plugin = host_run::stage() / "qcomponents/qextensions";
    for (const auto& entry : fs::directory_iterator(plugin))
        fs::create_symlink(entry.path(), folder.path() / entry.path().filename());
    const Ended ended = run(shell({"--extensions", folder.path().string(), "-e", "6 * 7"}));
    EXPECT_EQ(ended.out, "42\n");
    EXPECT_EQ(ended.err.find("lingsh: " + broken.string() + ": "), 0U) << ended.err;
    EXPECT_NE(ended.err.find("file too short"), std::string::npos) << ended.err;
    EXPECT_EQ(ended.status, 0);
}

TEST(ShellExtensions, WithoutAnyThereIsNoPython) {
    const Folder folder;
    for (const std::vector<std::string>& mode : {std::vector<std::string>{}, {"-c", "1"}, {"-m", "json"}, {"x.py"}}) {
        Command command = shell({"--extensions", folder.path().string()});
        command.arguments.insert(command.arguments.end(), mode.begin(), mode.end());
        const Ended ended = run(command);
        EXPECT_EQ(ended.err, kNoPython);
        EXPECT_EQ(ended.status, 1);
    }
}

TEST(ShellTree, WorksWhereverItIsCopied) {
    const host_run::ScratchTree tree(u8"a folder \u00E4\u4E2D");
    fs::copy(host_run::stage() / "lingsh", tree.path() / "lingsh");
    Command command = shell({"-c", "import decimal, sys\nprint(sys.executable, decimal.Decimal('1.10'))"});
    command.program = tree.path() / "lingsh";
    command.environment.clear();
    const Ended ended = run(command);
    EXPECT_EQ(ended.out, command.program.string() + " 1.10\n");
    EXPECT_EQ(ended.err, "");
}

TEST(ShellText, IsWholeInEveryLocale) {
    for (const host_run::Environment& environment :
         {host_run::Environment{}, {{"LC_ALL", "C"}}, {{"LANG", "POSIX"}}, {{"LC_ALL", "xx_XX.ISO-8859-1"}}}) {
        Command command =
            shell({"-c",
                   "import locale, sys\nprint(ascii(sys.argv[1:]), sys.argv[1], '\xE2\x82\xAC', input())\n"
                   "print(locale.getencoding(), sys.getfilesystemencoding())",
                   "\xC3\xA9", "\xFF"});
        command.environment = environment;
        command.input = "\xC3\xBC\n";
        const Ended ended = run(command);
        EXPECT_EQ(ended.out, "['\\xe9', '\\udcff'] \xC3\xA9 \xE2\x82\xAC \xC3\xBC\nUTF-8 utf-8\n") << ended.err;
    }
}

}  // namespace
