#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "process/support/process.h"

/// CPython's own tests: what it asks of its lists and dictionaries, asked of the runtime's, and its suites as they are.

namespace {

namespace fs = std::filesystem;
using process::Ended;

/// Where the CPython that the build found has its standard library, and where its native modules.
std::vector<std::string> libraryOfCPython() {
    process::Command command;
    command.program = process::python();
    command.arguments = {"-I", "-c",
                         "import sysconfig\nprint(sysconfig.get_path('stdlib'))\n"
                         "print(sysconfig.get_path('platstdlib') + '/lib-dynload')"};
    return process::run(command).lines();
}

TEST(ContainerSuites, ListsAndMapsPassWhatTheDesignPromises) {
    const std::vector<std::string> library = libraryOfCPython();
    ASSERT_EQ(library.size(), 2u);
    for (const char* suite : {"list_tests.py", "mapping_tests.py"})
        if (!fs::exists(fs::path(library[0]) / "test" / suite))
            GTEST_SKIP() << "CPython's own tests are not installed: there is no test/" << suite << " in " << library[0]
                         << " (on Debian, the package libpython3.13-testsuite has them).";
    const fs::path script = fs::path(LING_TEST_SCRIPTS) / "container_suites.py";
    process::Command command = process::shell({script.string(), library[0], library[1]});
    command.limit = std::chrono::seconds(240);
    const Ended ended = process::run(command);
    EXPECT_EQ(ended.status, 0) << ended.out << ended.err;
}

/// The short ones; the file says how to run all.
TEST(PythonSuites, PassUnderTheShell) {
    process::Command command;
    command.program = process::python();
    command.arguments = {"-I",
                         "-B",
                         LING_SOURCES "/tools/python_suites.py",
                         process::stage().string(),
                         "test_list",
                         "test_dict",
                         "test_copy",
                         "test_pickle"};
    command.limit = std::chrono::seconds(280);
    const Ended ended = process::run(command);
    if (ended.status == 77)
        GTEST_SKIP() << ended.out;
    EXPECT_EQ(ended.status, 0) << ended.out << ended.err;
}

}  // namespace
