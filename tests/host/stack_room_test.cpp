#include "host/stack_room.h"

#include "support/small_stack.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include <ucontext.h>

using ling::python::hasStackRoom;

namespace {

constexpr std::size_t kFrame = 4096;

/// Uses the stack up in steps of at least `kFrame` bytes until there is no room; answers the number of steps.
[[gnu::noinline]] std::size_t stepsUntilFull(std::size_t limit) {
    volatile char frame[kFrame] = {};
    if (limit == 0 || !hasStackRoom())
        return 0;
    const std::size_t steps = 1 + stepsUntilFull(limit - 1);
    return steps + static_cast<std::size_t>(frame[0]);  // Read after the call, so that the frame is kept during it.
}

TEST(StackRoomTest, ASmallStackIsUsedForThreeQuarters) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "The thread checker keeps its own data on the stack of each thread: too much for one of this size.";
#endif
    onSmallStack([] {
        EXPECT_TRUE(hasStackRoom());
        const std::size_t used = stepsUntilFull(100'000) * kFrame;
        EXPECT_GT(used, 256U * 1024);
        EXPECT_LT(used, 390U * 1024);
        EXPECT_TRUE(hasStackRoom());
    });
}

bool hadRoomOnForeignStack = false;

TEST(StackRoomTest, AStackThatIsNotTheThreadsOwnHasRoom) {
    std::vector<char> stack(64 * 1024);
    ucontext_t back;
    ucontext_t foreign;
    ASSERT_EQ(getcontext(&foreign), 0);
    foreign.uc_stack.ss_sp = stack.data();
    foreign.uc_stack.ss_size = stack.size();
    foreign.uc_link = &back;
    hadRoomOnForeignStack = false;
    makecontext(
        &foreign, [] { hadRoomOnForeignStack = hasStackRoom(); }, 0);
    ASSERT_EQ(swapcontext(&back, &foreign), 0);
    EXPECT_TRUE(hadRoomOnForeignStack);
}

}  // namespace
