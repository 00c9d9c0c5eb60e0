#include "ling/failure_beside.h"

#include <atomic>

namespace ling::internal {

namespace {

constinit std::atomic<const failure_source*> source{nullptr};

}  // namespace

void set_failure_source(const failure_source* newSource) noexcept {
    source.store(newSource, std::memory_order_release);
}

const failure_source* current_failure_source() noexcept { return source.load(std::memory_order_acquire); }

}  // namespace ling::internal
