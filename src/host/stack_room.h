#pragma once

namespace ling::python {

/// Whether the stack of this thread has room for one more round through the interpreter and back.
///
/// Python counts its own frames, not the stack that each round between it and native code takes, and host threads often
/// have small stacks: mutual recursion would overflow one long before Python's limit. Whatever goes round through both
/// asks here first and fails with an error instead. Always true on a stack that is not the thread's own (a
/// coroutine's), whose bounds nobody knows.
bool hasStackRoom() noexcept;

}  // namespace ling::python
