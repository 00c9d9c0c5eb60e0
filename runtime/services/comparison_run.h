#pragma once

#include "ling/interruption.h"
#include "services/item_cursor.h"

#include <set>
#include <utility>
#include <vector>

namespace ling::internal {

/// One comparison of two values, items and items of items included.
///
/// The containers that are open are kept in a list of their own and not on the stack, which a deep value would exhaust.
/// A pair of containers that is met again within itself is taken as equal: two values that hold themselves are equal
/// when no difference can be found by walking them. Where the stack ends, a value has no end, or the program is to
/// stop, the run ends too, and notes that for the `walk_check` of the thread.
class comparison_run {
public:
    /// Negative, zero or positive.
    std::int64_t compare(const Any& a, const Any& b);

private:
    struct level {
        Any a;
        Any b;
        item_cursor left;
        item_cursor right;
        bool made;
    };
    using pair_of_places = std::pair<const object_value*, const object_value*>;

    std::int64_t compareResolved(const Any& a, const Any& b);
    std::int64_t compareContent(const Any& a, const Any& b);
    std::int64_t openMaps(const Any& a, const Any& b);
    std::int64_t stepInnermost();
    std::int64_t open(const Any& a, const Any& b, item_cursor left, item_cursor right);
    bool isOpen(const Any& a, const Any& b) const;
    std::int64_t closeAll(std::int64_t order);

    interruption_poll mustStop_;
    bool made_ = false;           // The containers that are about to be opened stand for others.
    std::size_t madeLevels_ = 0;  // Levels opened by such.
    std::vector<level> levels_;
    std::set<pair_of_places> deepPairs_;  // Those of the levels beyond the first few.
};

}  // namespace ling::internal
