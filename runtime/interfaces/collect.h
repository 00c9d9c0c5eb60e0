#pragma once

#include "ling/any.h"
#include "ling/result.h"

#include <vector>

namespace ling::internal {

/// All items of an iterable, lazy ones resolved. An error result when the value cannot be iterated or the iteration
/// fails. Nothing is locked while foreign code runs.
Result<std::vector<Any>> collect_items(const Any& iterable);

}  // namespace ling::internal
