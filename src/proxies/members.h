#pragma once

#include "ling/class_builder.h"

namespace ling::python {

/// Adds the part of `ling`'s member protocol that answers for Python objects: which methods and properties a proxy has,
/// and what happens when `ling` code puts a member on it. Members that `ling` registered itself always come first.
void addMemberProtocol(ling::internal::class_builder& builder);

}  // namespace ling::python
