#pragma once

#include "ling/comparison.h"

#include <span>

namespace ling::internal {

/// The position of the first item at or after `start` that is `item` or equals it, or -1. Comparisons can run any code,
/// so the items must be a snapshot, or for ever the same.
inline std::int64_t find_item(std::span<const Any> items, const Any& item, std::size_t start = 0) {
    for (std::size_t i = start; i < items.size(); ++i)
        if (items[i].isSameAs(item) || compare_objects(items[i], item) == 0)
            return static_cast<std::int64_t>(i);
    return -1;
}

}  // namespace ling::internal
