#include "library/list_storage.h"

#include "interfaces/index.h"

#include <algorithm>

namespace ling::internal {

object_value_list::object_value_list(std::vector<Any>&& items) : object_value(Kind::List) {
    if (items.empty())
        return;
    items_ = buffer::make(items.size());
    std::uninitialized_move(items.begin(), items.end(), items_.items());
    items_->count = items.size();
}

std::size_t object_value_list::size() const noexcept {
    std::lock_guard hold(guard());
    return items_.count();
}

list_snapshot object_value_list::snapshot() const noexcept {
    std::lock_guard hold(guard());
    return {items_, items_.count()};
}

bool object_value_list::get(std::int64_t index, Any& item) const noexcept {
    Any found;
    {
        std::lock_guard hold(guard());
        const std::optional<std::size_t> position = position_of(index, items_.count());
        if (!position)
            return false;
        found = items_.items()[*position];
    }
    item.swap(found);
    return true;
}

bool object_value_list::isReady(std::size_t extra, Present present) const noexcept {
    if (!items_)
        return extra == 0;
    if (items_.capacity() - items_.count() < extra)
        return false;
    return present == Present::Kept || !items_->isShared();
}

/// Makes `spare` the buffer of the list; what was it before is in `spare` afterwards.
void object_value_list::moveInto(buffer& spare) noexcept {
    const std::size_t count = items_.count();
    if (items_ && items_->isShared()) {
        std::uninitialized_copy_n(items_.items(), count, spare.items());
    } else if (items_) {
        relocate(spare.items(), items_.items(), count);
        items_->count = 0;
    }
    spare->count = count;
    items_.swap(spare);
}

/// Runs `change` under the guard once the buffer is ready for it, unless `applies`, which is given the count, says no.
/// Memory is got while nothing is locked, and the buffer that was replaced is dropped so.
template <class Applies, class Change>
bool object_value_list::change(std::size_t extra, Present present, Applies&& applies, Change&& change) {
    buffer spare;
    while (true) {
        std::size_t wanted = 0;
        {
            std::lock_guard hold(guard());
            const std::size_t count = items_.count();
            if (!applies(count))
                return false;
            if (!isReady(extra, present) && spare && spare.capacity() >= count + extra)
                moveInto(spare);
            if (isReady(extra, present)) {
                change();
                return true;
            }
            wanted = extra == 0 ? count : grown_capacity(count + extra);
        }
        spare = buffer::make(wanted);
    }
}

void object_value_list::closeGap(std::size_t position, std::size_t count) noexcept {
    Any* items = items_.items();
    relocate(items + position, items + position + count, items_->count - position - count);
    items_->count -= count;
}

bool object_value_list::exchange(std::int64_t index, Any& item) {
    std::optional<std::size_t> position;
    auto applies = [&](std::size_t count) { return (position = position_of(index, count)).has_value(); };
    return change(0, Present::Changed, applies, [&] { items_.items()[*position].swap(item); });
}

bool object_value_list::take(std::int64_t index, Any& item) {
    Any taken;
    std::optional<std::size_t> position;
    auto applies = [&](std::size_t count) { return (position = position_of(index, count)).has_value(); };
    const bool done = change(0, Present::Changed, applies, [&] {
        taken = std::move(items_.items()[*position]);
        closeGap(*position, 1);
    });
    if (done)
        item.swap(taken);
    return done;
}

bool object_value_list::remove(std::int64_t index, std::size_t count) {
    if (count > size())
        return false;  // Asked before memory is got for so many.
    buffer removed = buffer::make(count);
    std::optional<std::size_t> position;
    auto applies = [&](std::size_t present) {
        position = position_of(index, present);
        return position && count <= present - *position;
    };
    return change(0, Present::Changed, applies, [&] {
        relocate(removed.items(), items_.items() + *position, count);
        removed->count = count;
        closeGap(*position, count);
    });
}

bool object_value_list::removeSame(const Any& item, std::size_t position) {
    Any taken;
    auto applies = [&](std::size_t count) {
        const std::span<const Any> present(items_.items(), count);
        if (position < count && present[position].isSameAs(item))
            return true;
        const auto found = std::ranges::find_if(present, [&](const Any& other) { return other.isSameAs(item); });
        position = static_cast<std::size_t>(found - present.begin());
        return found != present.end();
    };
    return change(0, Present::Changed, applies, [&] {
        taken = std::move(items_.items()[position]);
        closeGap(position, 1);
    });
}

void object_value_list::append(Any item) {
    change(
        1, Present::Kept, [](std::size_t) { return true; },
        [&] { std::construct_at(items_.items() + items_->count++, std::move(item)); });
}

void object_value_list::append(std::vector<Any>&& items) {
    change(
        items.size(), Present::Kept, [](std::size_t) { return true; },
        [&] {
            if (items.empty())
                return;
            std::uninitialized_move(items.begin(), items.end(), items_.items() + items_->count);
            items_->count += items.size();
        });
}

void object_value_list::insert(std::int64_t index, Any item) {
    std::size_t place = 0;
    auto applies = [&](std::size_t count) {
        place = place_of(index, count);
        return true;
    };
    change(1, Present::Changed, applies, [&] {
        Any* items = items_.items();
        relocate(items + place + 1, items + place, items_->count - place);
        std::construct_at(items + place, std::move(item));
        ++items_->count;
    });
}

void object_value_list::clear() {
    buffer dropped;
    std::lock_guard hold(guard());
    dropped.swap(items_);
}

}  // namespace ling::internal
