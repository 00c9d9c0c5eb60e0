#pragma once

#include "interfaces/native_iterator.h"
#include "ling/list.h"

#include <span>
#include <vector>

namespace ling::internal {

/// Walks the items of a native list or tuple, or of a row of values, as they are at its making. Nothing is locked
/// between two steps, and the items stay alive while the cursor does.
class item_cursor {
public:
    /// `container` is a list or a tuple.
    explicit item_cursor(const Any& container);
    explicit item_cursor(std::vector<Any> items) : item_cursor(Tuple_Generic(std::move(items))) {}

    /// Puts the next item into `item`. False, with `item` untouched, at the end.
    bool next(Any& item);

private:
    Any walked_;  // The tuple, or the iterator over the list, which holds a snapshot.
    native_iterator* iterator_ = nullptr;
    std::span<const Any> rest_;
};

}  // namespace ling::internal
