#pragma once

#include "ling/export.h"

namespace ling::internal {

/// Whether the stack of this thread has room for one more round through foreign code and back.
///
/// Guests count their own frames, not the stack that each round between them and native code takes, and host threads
/// often have small stacks: recursion through both would overflow one long before a guest's limit. Whatever goes round
/// through both asks here first and fails with an error instead. Always true on a stack that is not the thread's own (a
/// coroutine's), whose bounds nobody knows.
LING_EXPORT bool has_stack_room() noexcept;

}  // namespace ling::internal
