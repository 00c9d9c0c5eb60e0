#pragma once

#include "ling/any.h"
#include "ling/iterable.h"
#include "ling/result.h"

#include <vector>

namespace ling::internal {

/// All items of an iterable, lazy ones resolved. An error result when the value cannot be iterated or the iteration
/// fails. Nothing is locked while foreign code runs.
Result<std::vector<Any>> collect_items(const Any& iterable);

/// Whether the class of an iterable has a way of its own to give all items at once.
bool collects_itself(const I_Iterable_Generic& iterable);
/// The default: walks an iteration.
Result<std::vector<Any>> walk_items(const I_Iterable_Generic& iterable);

}  // namespace ling::internal
