#include "ling/blocking.h"

#include <atomic>

namespace ling::internal {

namespace {

/// Filled from the front, never emptied.
constinit std::array<std::atomic<const guest_lock*>, kMostGuestLocks> locks{};

}  // namespace

bool add_guest_lock(const guest_lock& lock) noexcept {
    for (std::atomic<const guest_lock*>& place : locks) {
        const guest_lock* none = nullptr;
        if (place.compare_exchange_strong(none, &lock, std::memory_order_acq_rel))
            return true;
    }
    return false;
}

guest_locks_left::guest_locks_left() noexcept {
    for (const std::atomic<const guest_lock*>& place : locks) {
        const guest_lock* lock = place.load(std::memory_order_acquire);
        if (lock == nullptr)
            break;
        left_[count_++] = lock->leave();
    }
}

guest_locks_left::~guest_locks_left() {
    while (count_ > 0) {
        --count_;
        if (left_[count_] != nullptr)
            locks[count_].load(std::memory_order_acquire)->enter(left_[count_]);
    }
}

}  // namespace ling::internal
