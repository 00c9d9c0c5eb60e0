#pragma once

#include "ling/any.h"

namespace ling::internal {

/// The error result for a key that a map does not have.
Any key_not_found(const Any& key);

/// A value that no map holds: as the fallback of a look-up it shows that the key is missing.
const Any& absent_marker();

}  // namespace ling::internal
