#pragma once

#include "ling/stack_room.h"

namespace ling::python {

/// Whether the stack of this thread has room for one more round through the interpreter and back. Python counts its own
/// frames alone, so whatever goes round through both asks here first and fails with an error instead.
inline bool hasStackRoom() noexcept { return ling::internal::has_stack_room(); }

}  // namespace ling::python
