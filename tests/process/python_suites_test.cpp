#include <gtest/gtest.h>

#include <chrono>

#include "process/support/process.h"

/// CPython's own tests as they are.

namespace {

using process::Ended;

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
