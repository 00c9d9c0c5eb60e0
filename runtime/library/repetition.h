#pragma once

#include "ling/any.h"
#include "ling/result.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ling::internal {

/// The items, `count` times over, less the `present` times that they are there; none where nothing is left. An error
/// result when `count` is no integer or the result would be longer than any memory. Throws where the memory there is
/// does not do.
Result<std::vector<Any>> repeat_items(std::span<const Any> items, const Any& count, std::int64_t present = 0);

/// The items followed by those of an iterable. An error result when it cannot be iterated or the iteration fails.
Result<std::vector<Any>> join_items(std::span<const Any> items, const Any& more);

}  // namespace ling::internal
