#include <gtest/gtest.h>

#include "process/support/process.h"
#include "support/table.h"

#include <csignal>

/// How processes end in which Python and the host hold things of one another: on time, with status 0, and in silence.

namespace {

class ExitTest : public testing::TestWithParam<const char*> {};

TEST_P(ExitTest, IsHarmless) {
    const auto extensions = process::stage() / "qcomponents/qextensions";
    const process::Ended ended = process::run(process::host("lock_host", {GetParam(), extensions.string()}));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.out, "end\n");
}

INSTANTIATE_TEST_SUITE_P(Ends, ExitTest,
                         testing::Values("statics", "statics-busy", "waiting-threads", "exit-on-thread",
                                         "exit-below-python", "thread-local", "first-fetch", "forked-thread",
                                         "forked-by-python"));

/// What was printed at the end, and what broken pipes do.
struct EndCase {
    const char* name;
    int status;
    const char* out;
    const char* err;
};
constexpr EndCase kEnds[] = {
    {"Forget", 0, "printed\n", "told"},
    {"ForgetBusy", 0, "printed\n", "told"},
    {"ForgetHeld", 0, "", ""},
    {"ForgetBelowPython", 0, "printed\n", ""},
    {"Finish", 0, "printed\nthread\nexit function\nnone\nnone\n", ""},
    {"Pipes", 0, "BrokenPipeError\nBrokenPipeError\n-13\n", ""},
    {"OwnPipe", -SIGPIPE, "", ""},
    {"Dispositions", 0,
     "still there\nBrokenPipeError\nBrokenPipeError\n-13\nhost's handler\nignored\nignored\nignored\nignored\n"
     "ignored\nignored\n",
     ""},
};
LING_TABLE(EndTest, testing::Test, kEnds);

TEST_P(EndTest, LosesNothingAndBreaksNothing) {
    const auto extensions = process::stage() / "qcomponents/qextensions";
    const process::Ended ended = process::run(process::host("end_host", {GetParam().name, extensions.string()}));
    EXPECT_EQ(ended.status, GetParam().status);
    EXPECT_EQ(ended.err, GetParam().err);
    EXPECT_EQ(ended.out, GetParam().out);
}

}  // namespace
