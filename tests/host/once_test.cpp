#include "host/once.h"

#include "support/python_test.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

class OnceTest : public PythonTest {};

void pause() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }

TEST_F(OnceTest, RunsOnceForManyThreadsAndNobodyGoesOnBeforeItIsDone) {
    for (const bool withLock : {false, true}) {
        Once once;
        std::atomic<int> runs = 0;
        std::atomic<bool> done = false;
        std::atomic<int> early = 0;
        const auto initialise = [&] {
            ++runs;
            pause();
            done = true;
        };
        const auto body = [&] {
            const auto gil = withLock ? std::make_unique<GilGuard>() : nullptr;
            once.run(initialise);
            early += done ? 0 : 1;
        };
        std::vector<std::thread> threads;
        for (int index = 0; index < 8; ++index)
            threads.emplace_back(body);
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(runs, 1) << withLock;
        EXPECT_EQ(early, 0) << withLock;
    }
}

TEST_F(OnceTest, ReturnsAtOnceFromWithinItsOwnAction) {
    Once once;
    int runs = 0;
    once.run([&] {
        ++runs;
        once.run([&] { ++runs; });
        EXPECT_FALSE(once.isDone());
    });
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(once.isDone());
}

TEST_F(OnceTest, AWaiterTakesOverFromAnActionThatThrows) {
    Once once;
    std::atomic<bool> started = false;
    std::thread first([&] {
        EXPECT_THROW(once.run([&] {
            started = true;
            pause();
            throw std::runtime_error("first");
        }),
                     std::runtime_error);
    });
    while (!started)
        std::this_thread::yield();
    bool ran = false;
    once.run([&] { ran = true; });
    first.join();
    EXPECT_TRUE(ran);
}

/// One thread initialises, with the lock, and gives the lock up for a while as any Python code does. Another takes it
/// meanwhile and needs the same initialisation. Where the other one keeps the lock, both wait for ever.
TEST_F(OnceTest, AWaiterWithTheLockLetsTheInitialiserFinish) {
    static constinit Once once;
    std::atomic<bool> started = false;
    std::atomic<bool> othersTurn = false;
    std::thread initialiser([&] {
        GilGuard gil;
        once.run([&] {
            started = true;
            PyThreadState* const state = PyEval_SaveThread();
            while (!othersTurn)
                std::this_thread::yield();
            PyEval_RestoreThread(state);
        });
    });
    std::thread waiter([&] {
        while (!started)
            std::this_thread::yield();
        GilGuard gil;
        othersTurn = true;
        once.run([] {});
    });
    initialiser.join();
    waiter.join();
    EXPECT_TRUE(once.isDone());
}

TEST_F(OnceTest, AnActionThatFailsIsRunAgainByTheNext) {
    Once once;
    EXPECT_THROW(once.run([] { throw std::runtime_error("first"); }), std::runtime_error);
    EXPECT_FALSE(once.isDone());
    once.run([] { return false; });
    EXPECT_FALSE(once.isDone());
    once.run([] { return true; });
    EXPECT_TRUE(once.isDone());
}

}  // namespace
