#include <gtest/gtest.h>

#include "process/support/process.h"

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
                                         "exit-below-python", "thread-local", "forked-thread", "forked-by-python"));

}  // namespace
