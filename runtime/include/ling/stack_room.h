#pragma once

#include "ling/export.h"

#include <cstdint>

namespace ling::internal {

/// Where the stack of a thread may be used without a thought: nowhere until somebody has looked.
struct roomy_stack {
    std::uintptr_t limit = 0;
    std::uintptr_t size = 0;
};
extern LING_EXPORT constinit thread_local roomy_stack roomyStack LING_STATIC_TLS;

/// Looks at the bounds of the thread's stack.
LING_EXPORT bool find_stack_room() noexcept;

/// Whether the stack of this thread has room for one more round through foreign code and back.
///
/// Guests count their own frames, not the stack that each round between them and native code takes, and host threads
/// often have small stacks: recursion through both would overflow one long before a guest's limit. Whatever goes round
/// through both asks here first and fails with an error instead. Always true on a stack that is not the thread's own (a
/// coroutine's), whose bounds nobody knows.
inline bool has_stack_room() noexcept {
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    return here - roomyStack.limit < roomyStack.size || find_stack_room();
}

}  // namespace ling::internal
