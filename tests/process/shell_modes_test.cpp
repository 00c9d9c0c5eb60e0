#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "process/support/process.h"
#include "support/table.h"

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
    const char* input = "";

    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

constexpr const char* kDivision =
    "Traceback (most recent call last):\n  File \"<string>\", line 1, in <module>\nZeroDivisionError: division by "
    "zero\n";

const Row kRows[] = {
    {"ExpressionNumber", {"-e", "2**10"}, "1024\n"},
    {"ExpressionNone", {"-e", "None"}, "none\n"},
    {"NothingOfTheHostIsImportedBefore",
     {"-c", "import sys\nprint([name for name in sys.modules if name.partition('.')[0] in ('ling', 'python')])"},
     "[]\n"},
    {"ExpressionPrintsFirst", {"-e", "print('before') or 1"}, "before\n1\n"},
    {"ExpressionFails", {"-e", "1/0"}, "", kDivision, 1},
    {"ExpressionFailsWithoutText", {"-e", "next(iter(()))"}, "", "ling.StopIteration\n", 1},
    {"ExpressionSyntaxError",
     {"-e", "1 +"},
     "",
     "  File \"<string>\", line 1\n    1 +\nSyntaxError: invalid syntax\n",
     1},
    {"ExpressionExits", {"-e", "exit(3)"}, "", "", 3},
    {"ExpressionCatchesExit", {"-e", "__import__('unittest').TestCase().assertRaises(SystemExit, exit, 3)"}, "none\n"},
    {"CodeReturns", {"-c", "a = 6\nreturn a * 7"}, "42\n"},
    {"CodeReturnsNone", {"-c", "return"}, ""},
    {"CodeReturnsEarly", {"-c", "for x in range(9):\n    if x == 3:\n        return x\nprint('late')"}, "3\n"},
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
     "one of FILE, -m, -c, -e and --stubs is enough\nRun with --help for more information.\n",
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
    // Input that is no terminal is one program, or with -i the console's.
    {"Nothing", {}, "", "", 0, ""},
    {"Program", {}, "0\n1\n['']\n", "", 0, "import sys\nfor x in range(2):\n    print(x)\nprint(sys.argv)\n"},
    {"ProgramShowsNoValues", {}, "", "", 0, "1 + 1"},
    {"ProgramStopsAtAnError",
     {},
     "1\n",
     "Traceback (most recent call last):\n  File \"<stdin>\", line 2, in <module>\nZeroDivisionError: division by "
     "zero\n",
     1,
     "print(1)\n1 / 0\nprint(2)\n"},
    {"ConsoleOfLines",
     {"-qi"},
     "2\n0\n1\n'hello'\n",
     ">>> >>> ... ... >>> >>> >>> Traceback (most recent call last):\n  File \"<stdin>\", line 1, in <module>\n"
     "ZeroDivisionError: division by zero\n>>> ",
     6,
     "1 + 1\nfor x in range(2):\n    print(x)\n\nx = input()\nhello\nx\n1 / 0\nexit(6)\n"},
    {"ConsoleAfterAProgram",
     {"-i", "-c", "import sys; x = 6; sys.exit(3)"},
     "42\n",
     "Traceback (most recent call last):\n  File \"<string>\", line 1, in <module>\n    import sys; x = 6; "
     "sys.exit(3)\n"
     "                       ~~~~~~~~^^^\nSystemExit: 3\n>>> >>> ",
     4,
     "x * 7\nexit(4)\n"},
};

LING_TABLE(ShellModes, ::testing::Test, kRows);

TEST_P(ShellModes, Answer) {
    const Folder home;
    Command command = shell(GetParam().arguments);
    command.environment.emplace_back("HOME", home.path().string());
    command.input = GetParam().input;
    const Ended ended = run(command);
    EXPECT_TRUE(fs::is_empty(home.path())) << "There is no history without a terminal.";
    EXPECT_EQ(ended.out, GetParam().out);
    EXPECT_EQ(ended.err, GetParam().err);
    EXPECT_EQ(ended.status, GetParam().status);
}

TEST(ShellOptions, VersionNeedsNoExtension) {
    const Ended ended = run(shell({"--extensions", "/no/such", "--version"}));
    EXPECT_EQ(ended.out.substr(0, 7), "lingsh ");
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.status, 0);
}

/// A program in two files, both of which import what the host has, under Python's own tools.
const struct Tool {
    const char* name;
    std::vector<std::string> arguments;
    const char* printed;
    const char* input = "";

    friend void PrintTo(const Tool& tool, std::ostream* out) { *out << tool.name; }
} kTools[] = {
    {"Alone", {"program.py"}, "[1, 2] List\n"},
    {"Debugger", {"-m", "pdb", "program.py"}, "[1, 2] List\n", "c\nq\n"},
    {"Profiler", {"-m", "cProfile", "program.py"}, "[1, 2] List\n"},
    {"Tests", {"-m", "unittest", "sibling"}, "tested\n"},
    {"Examples", {"-m", "doctest", "-v", "sibling.py"}, "1 passed"},
    {"Runpy", {"-c", "import runpy\nrunpy.run_path('program.py')"}, "[1, 2] List\n"},
    {"AFileOfTheUserWins", {"-c", "import python\nprint(python.value)"}, "mine\n"},
};

LING_TABLE(ShellTools, ::testing::Test, kTools);

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
    const fs::path plugin = process::stage() / "qcomponents/qextensions";
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
    const process::ScratchTree tree(u8"a folder \u00E4\u4E2D");
    fs::copy(process::stage() / "lingsh", tree.path() / "lingsh");
    Command command = shell({"-c", "import decimal, sys\nprint(sys.executable, decimal.Decimal('1.10'))"});
    command.program = tree.path() / "lingsh";
    command.environment.clear();
    const Ended ended = run(command);
    EXPECT_EQ(ended.out, command.program.string() + " 1.10\n");
    EXPECT_EQ(ended.err, "");
}

/// Serves a page with a certificate of its own, and asks for it. Nothing in the environment turns the check off.
constexpr const char* kSecure = R"(
import http.server, ssl, sys, threading
class Page(http.server.BaseHTTPRequestHandler):
    def log_message(self, *arguments): pass
    def do_GET(self):
        self.send_response(200)
        self.end_headers()
        self.wfile.write(b'a page')
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(sys.argv[1])
server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), Page)
server.socket = context.wrap_socket(server.socket, server_side=True)
server.handle_error = lambda *arguments: None
threading.Thread(target=server.serve_forever, daemon=True).start()
for host in ('localhost', '127.0.0.1'):
    try: print(ling.load_resource(f'https://{host}:{server.server_port}/').decode())
    except RuntimeError as error: print('self-signed' in str(error), 'IP address mismatch' in str(error))
)";

TEST(ShellText, OfASecureServerNeedsACertificateThatIsTrusted) {
    const std::string certificate = LING_TEST_SCRIPTS "/../data/untrusted_server.pem";
    Command command = shell({"-c", kSecure, certificate});
    command.environment.emplace_back("PYTHONHTTPSVERIFY", "0");
    EXPECT_EQ(run(command).out, "True False\nTrue False\n");
    command.environment.emplace_back("SSL_CERT_FILE", certificate);
    EXPECT_EQ(run(command).out, "a page\nFalse True\n");
}

TEST(ShellText, IsWholeInEveryLocale) {
    for (const process::Environment& environment :
         {process::Environment{}, {{"LC_ALL", "C"}}, {{"LANG", "POSIX"}}, {{"LC_ALL", "xx_XX.ISO-8859-1"}}}) {
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
