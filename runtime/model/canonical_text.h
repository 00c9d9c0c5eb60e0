#pragma once

#include "ling/type.h"

namespace ling::internal {

/// The text of a type, the same for equal types: the types of a union are in an order of their own, whichever way round
/// it was written. What hashing and ordering go by.
String canonical_text(const Type& type);

}  // namespace ling::internal
