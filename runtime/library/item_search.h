#pragma once

#include "ling/basic_values.h"
#include "ling/comparison.h"
#include "ling/interruption.h"
#include "ling/walk_check.h"

#include <span>

namespace ling::internal {

/// The position of the first item at or after `start` that is `item` or equals it, or -1. An error result where a
/// comparison ended too soon. Comparisons can run any code, so the items must be a snapshot, or for ever the same.
inline Any find_item(std::span<const Any> items, const Any& item, std::size_t start = 0) {
    const walk_check check;
    interruption_poll mustStop;
    for (std::size_t i = start; i < items.size() && !walk_check::isEnded(); ++i) {
        if (mustStop())
            walk_check::noteInterrupted();
        else if (items[i].isSameAs(item) || compare_objects(items[i], item) == 0)
            return static_cast<std::int64_t>(i);
    }
    Any problem = check.problem();
    return problem.isNone() ? Any(-1) : problem;
}

/// Whether one of the items is `item` or equals it.
inline Result<Boolean> contains_item(std::span<const Any> items, const Any& item) {
    Any found = find_item(items, item);
    return found.is(Kind::Integer) ? Boolean(found.asInteger() >= 0) : Result<Boolean>::failure(std::move(found));
}

}  // namespace ling::internal
