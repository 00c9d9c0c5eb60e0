#include "ling/interruption.h"

#include <atomic>

namespace ling::internal {

namespace {

constinit std::atomic<interruption_check> currentCheck{nullptr};

}  // namespace

void set_interruption_check(interruption_check check) noexcept { currentCheck.store(check, std::memory_order_release); }

bool is_interruption_due() {
    const interruption_check check = currentCheck.load(std::memory_order_acquire);
    return check != nullptr && check();
}

}  // namespace ling::internal
