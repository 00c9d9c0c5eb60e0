#pragma once

#include <atomic>
#include <thread>

namespace ling::internal {

/// One byte of mutual exclusion for a few instructions' work on an object's own storage.
///
/// Nothing that is not the runtime's own code runs under it: no comparison, no callback, no release of a
/// reference. So it may be taken with any other lock held, the interpreter lock of a guest included.
class spin_lock {
public:
    void lock() noexcept {
        for (int tries = 0; locked_.exchange(true, std::memory_order_acquire); ++tries)
            wait(tries);
    }
    void unlock() noexcept { locked_.store(false, std::memory_order_release); }

private:
    static void wait(int tries) noexcept {
        if (tries < kPausesBeforeYield)
            __builtin_ia32_pause();
        else
            std::this_thread::yield();  // The holder may have been put off the processor.
    }

    static constexpr int kPausesBeforeYield = 64;
    std::atomic<bool> locked_{false};
};

}  // namespace ling::internal
