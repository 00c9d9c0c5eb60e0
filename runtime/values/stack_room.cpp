#include "ling/stack_room.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <pthread.h>

namespace ling::internal {

namespace {

/// What one round may need at most: a guest that compiles deeply nested source takes the most.
constexpr std::size_t kRoom = 256 * 1024;

struct Stack {
    std::uintptr_t bottom = 0;
    std::uintptr_t limit = 0;  // Below this, the room is used up.
    std::uintptr_t top = 0;
};

Stack findStack() noexcept {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return {};
    void* address = nullptr;
    std::size_t size = 0;
    std::size_t guard = 0;
    (void)pthread_attr_getstack(&attributes, &address, &size);
    (void)pthread_attr_getguardsize(&attributes, &guard);
    (void)pthread_attr_destroy(&attributes);
    const auto bottom = reinterpret_cast<std::uintptr_t>(address);
    // A small stack keeps a quarter back, so that a first round is possible on any.
    return {bottom, bottom + guard + std::min(kRoom, size / 4), bottom + size};
}

}  // namespace

constinit thread_local roomy_stack roomyStack LING_STATIC_TLS;

bool find_stack_room() noexcept {
    thread_local const Stack stack = findStack();
    roomyStack = {stack.limit, stack.top - stack.limit};
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    return here < stack.bottom || here >= stack.top || here >= stack.limit;
}

}  // namespace ling::internal
