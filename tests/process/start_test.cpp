#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "process/support/process.h"

/// What only a fresh process shows of the start: where the files are found, what the environment may not change, and
/// an interpreter that was there before.

namespace {

namespace fs = std::filesystem;
using process::Ended;
using process::ScratchTree;
using Lines = std::vector<std::string>;

const fs::path kExtensions = process::stage() / "qcomponents/qextensions";

/// The lines that `start_host` prints. A failure of the test when it does not end well or writes to standard error.
Lines start(const std::string& mode, const fs::path& extensions, const Lines& expressions,
            const process::Environment& environment = {}) {
    Lines arguments = {mode, extensions.string()};
    arguments.insert(arguments.end(), expressions.begin(), expressions.end());
    process::Command command = process::host("start_host", arguments);
    command.environment = environment;
    const Ended ended = process::run(command);
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(ended.err, "");
    return ended.lines();
}

std::string sysModule(const std::string& name) { return "__import__('sys')." + name; }

const std::string kSysPath = "'|'.join(__import__('sys').path)";

std::string expectedPath(const fs::path& extensions) {
    return (extensions / "site-packages").string() + "|" + (extensions / "python3/lib/python313.zip").string();
}

TEST(StartTest, WorksInAnEmptyEnvironment) {
    const Lines lines = start("thread", kExtensions, {"2**10", kSysPath, sysModule("flags.isolated")});
    EXPECT_EQ(lines, (Lines{"module python: yes", "1024", expectedPath(kExtensions), "1"}));
}

/// What a host does not use costs it nothing.
TEST(StartTest, TheStandardModulesAreImportedWhenSomebodyLooksIntoThem) {
    const std::string loaded =
        "str([name for name in ('collections', 'datetime', 'decimal', 'inspect', 'typing') "
        "if name in __import__('sys').modules])";
    const Lines lines = start("plain", kExtensions, {loaded, "python.decimal.Decimal.__name__", loaded});
    EXPECT_EQ(lines.at(1), "[]");
    EXPECT_NE(lines.at(3).find("'decimal'"), std::string::npos) << lines.at(3);
}

// Native modules are not linked to libpython, and the plug-in with all it needs is loaded with local symbols.
TEST(StartTest, NativeModulesFindTheSymbolsOfLibpython) {
    const Lines lines = start("plain", kExtensions,
                              {"__import__('_ctypes').__name__", "__import__('math').floor(2.5)",
                               "str(__import__('_decimal').Decimal('1.10'))", "__import__('zlib').crc32(b'')"});
    EXPECT_EQ(lines, (Lines{"module python: yes", "_ctypes", "2", "1.10", "0"}));
}

TEST(StartTest, TheEnvironmentChangesNothing) {
    process::Environment hostile;
    std::istringstream rows(
        "PYTHONHOME=/nowhere PYTHONPATH=/nowhere PYTHONSTARTUP=/nowhere/start.py PYTHONINSPECT=1 PYTHONMALLOC=nonsense "
        "PYTHONVERBOSE=2 PYTHONUTF8=nonsense PYTHONHASHSEED=nonsense PYTHONWARNINGS=error PYTHONOPTIMIZE=2 "
        "PYTHONDEBUG=1 PYTHONPLATLIBDIR=nowhere PYTHONDEVMODE=1 PYTHONIOENCODING=utf-7 PYTHONUNBUFFERED=1 "
        "PYTHONNOUSERSITE= PYTHONUSERBASE=/nowhere PYTHONEXECUTABLE=/nowhere/python PYTHONBREAKPOINT=nowhere "
        "PYTHONPROFILEIMPORTTIME=1 PYTHONTRACEMALLOC=5 PYTHONFAULTHANDLER=1 PYTHONDONTWRITEBYTECODE= PYTHONSAFEPATH= "
        "PYTHONPYCACHEPREFIX=/tmp PYTHONINTMAXSTRDIGITS=640 PYTHONCOERCECLOCALE=warn VIRTUAL_ENV=/nowhere "
        "__PYVENV_LAUNCHER__=/nowhere LC_ALL=C PYTHON_GIL=0 PYTHON_COLORS=1 LANG=xx_XX");
    for (std::string row; rows >> row;)
        hostile.emplace_back(row.substr(0, row.find('=')), row.substr(row.find('=') + 1));
    const Lines questions = {kSysPath,
                             "str(" + sysModule("flags") + ")",
                             sysModule("getfilesystemencoding()"),
                             sysModule("warnoptions") + " == []",
                             "__import__('_tracemalloc').is_tracing()",
                             "str(__import__('sys').get_int_max_str_digits())",
                             "str(" + sysModule("pycache_prefix") + ")"};
    EXPECT_EQ(start("plain", kExtensions, questions, hostile), start("plain", kExtensions, questions));
}

TEST(StartTest, NoPythonOnThePathIsTakenForOurs) {
    const Lines names = {"executable", "_base_executable", "prefix", "exec_prefix", "base_prefix", "base_exec_prefix"};
    Lines questions;
    for (const std::string& name : names)
        questions.push_back(sysModule(name) + " + '.'");
    const fs::path found = fs::path(LING_TEST_PYTHON).parent_path();
    const std::string home = (kExtensions / "python3").string() + ".";
    EXPECT_EQ(start("plain", kExtensions, questions, {{"PATH", found.string()}}),
              (Lines{"module python: yes", ".", ".", home, home, home, home}));
    EXPECT_EQ(start("plain", kExtensions,
                    {"[n for n in dir(__import__('sys')) if '" + found.parent_path().string() +
                     "' in str(getattr(__import__('sys'), n))]"},
                    {{"PATH", found.string()}})
                  .at(1),
              "[]");
}

TEST(StartTest, AFolderThatCannotBeWorkedFromIsTold) {
    const std::pair<std::u8string, const char*> rows[] = {
        {u8"of $ORIGIN", "The system's loader replaces '$ORIGIN' in a path"},
        {std::u8string(u8"no \xff text"), "The path of the library is not UTF-8"},
    };
    for (const auto& [name, reason] : rows) {
        const ScratchTree tree(name);
        const Ended ended = process::run(process::host("start_host", {"plain", tree.extensions().string()}));
        EXPECT_EQ(ended.status, 1);
        EXPECT_NE(ended.err.find(reason), std::string::npos) << ended.err;
    }
}

TEST(StartTest, ASymbolicLinkToThePluginLeadsToItsOwnDirectory) {
    ScratchTree tree;
    const fs::path elsewhere = tree.path() / "links";
    fs::create_directory(elsewhere);
    for (const char* name : {"libling_python.so", "python3"})  // The loader looks for libpython beside the link.
        fs::create_symlink(tree.extensions() / name, elsewhere / name);
    EXPECT_EQ(start("plain", elsewhere, {kSysPath}).at(1), expectedPath(tree.extensions()));
}

TEST(StartTest, AnotherUserWithoutWriteAccessRunsIt) {
    if (geteuid() != 0)
        GTEST_SKIP() << "Only root can run a program as another user.";
    ScratchTree tree;
    const Lines before = process::filesOf(tree.extensions());
    // Where the build lies, nobody may have no access at all.
    process::Command command = process::host(
        "start_host",
        {"plain", tree.extensions().string(), "__import__('os').geteuid()", "__import__('json').__name__"});
    fs::copy_file(command.program, tree.path() / "start_host");
    command.program = tree.path() / "start_host";
    command.environment = {{"LD_LIBRARY_PATH", (tree.path() / "lib").string()}};
    command.asNobody = true;
    const Ended ended = process::run(command);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.lines(), (Lines{"module python: yes", "65534", "json"}));
    EXPECT_EQ(process::filesOf(tree.extensions()), before);
}

TEST(StartTest, WithoutSitePackagesTheLibraryIsReported) {
    ScratchTree tree;
    fs::remove_all(tree.extensions() / "site-packages");
    const Ended ended = process::run(process::host("start_host", {"plain", tree.extensions().string()}));
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.err.find("libling_python.so"), std::string::npos) << ended.err;
    EXPECT_NE(ended.err.find("site-packages"), std::string::npos) << ended.err;
}

TEST(StartTest, AStartWithoutStandardLibraryEndsInErrorsAndNoCrash) {
    ScratchTree tree;
    fs::remove(tree.extensions() / "python3/lib/python313.zip");
    const Ended ended = process::run(process::host("start_host", {"plain", tree.extensions().string(), "1"}));
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(ended.lines(), (Lines{"module python: yes", "error: The Python interpreter is not running."}));
}

TEST(StartTest, AStartWithoutSearchPathsEndsInErrorsAndNoCrash) {
    const Lines lines = start("no-entry", kExtensions, {"1"});
    EXPECT_EQ(lines.back(), "error: The Python interpreter is not running.");
}

TEST(StartTest, TheStartHandlerDoesItsWorkOnce) {
    const Lines lines = start("twice", kExtensions, {kSysPath, "1"});
    EXPECT_EQ(lines.at(0), "start handlers: 2, function handlers: 5");
    EXPECT_EQ(lines.at(2), expectedPath(kExtensions));
    EXPECT_EQ(lines.at(3), "1");
}

/// An interpreter of the host's own keeps what it is: no configuration, no module "python"; the search paths are added
/// at the end of its own. It has the archive already, under the same name.
class RunningInterpreterTest : public testing::TestWithParam<const char*> {};

TEST_P(RunningInterpreterTest, IsUsedAsItIs) {
    const std::string archive = (kExtensions / "python3/lib/python313.zip").string();
    const std::string packages = (kExtensions / "site-packages").string();
    const Ended ended = process::run(process::host(
        "start_host", {GetParam(), kExtensions.string(), kSysPath, sysModule("flags.isolated"), "1 + 1",
                       "__import__('_decimal').__name__", "__import__('ling.python').python.__spec__.origin"}));
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(ended.lines(),
              (Lines{"module python: no", "first|" + archive + "|" + packages, "0", "2", "_decimal", "host"}));
}

TEST_P(RunningInterpreterTest, TypesHaveTheirPythonNamesWithoutTheModuleTree) {
    const std::string language = "ling.python.LanguagePython.";
    const Lines lines = start(
        GetParam(), kExtensions,
        {language + "typeName(ling.Date)", language + "typeName(ling.find_class('ling.I_MutableMap'))",
         language + "typeName(ling.find_class('ling.I_Invokable'))", language + "toNativeClass(ling.Date) is None"});
    EXPECT_EQ(lines, (Lines{"module python: no", "date", "MutableMapping", "Callable", "true"}));
}

INSTANTIATE_TEST_SUITE_P(Hosts, RunningInterpreterTest, testing::Values("running", "running-free"));

}  // namespace
