#pragma once

#include "library/counted_buffer.h"
#include "ling/any.h"
#include "ling/object_value.h"

#include <mutex>
#include <span>
#include <vector>

namespace ling::internal {

/// The items of a list as they were at one moment. They never change.
struct list_snapshot {
    buffer_ref<Any> buffer;
    std::size_t count = 0;

    std::span<const Any> items() const noexcept { return {buffer.items(), count}; }
};

/// The native list. Every operation is atomic towards the others; none runs foreign code or drops a reference while the
/// list is locked. Positions count from the end when they are negative.
class object_value_list final : public object_value {
public:
    explicit object_value_list(object_value_class* klass = nullptr) noexcept : object_value(Kind::List, klass) {}
    explicit object_value_list(std::vector<Any>&& items);
    /// Takes a buffer over that nobody else knows.
    explicit object_value_list(buffer_ref<Any>&& items) noexcept : object_value(Kind::List), items_(std::move(items)) {}

    std::size_t size() const noexcept;
    /// Costs the same for every length: the items are shared until the list changes one of them.
    list_snapshot snapshot() const noexcept;
    /// False, and nothing changed, when there is no such position. So it is with all that take one.
    bool get(std::int64_t index, Any& item) const noexcept;
    /// Exchanges the item at a position for `item`.
    bool exchange(std::int64_t index, Any& item);
    /// Moves an item out of the list.
    bool take(std::int64_t index, Any& item);
    /// Removes `count` items. False also when there are fewer.
    bool remove(std::int64_t index, std::size_t count);
    /// Removes the very value `item`, looking at `position` first. False when the list does not hold it.
    bool removeSame(const Any& item, std::size_t position);
    void append(Any item);
    void append(std::vector<Any>&& items);
    /// Before the item at a position; a position outside is cut off to the nearest end.
    void insert(std::int64_t index, Any item);
    void clear();

private:
    using buffer = buffer_ref<Any>;

    /// What a change does to the items that are there: a shared buffer can only be added to.
    enum class Present { Kept, Changed };

    bool isReady(std::size_t extra, Present present) const noexcept;
    void moveInto(buffer& spare) noexcept;
    template <class Applies, class Change>
    bool change(std::size_t extra, Present present, Applies&& applies, Change&& change);
    void closeGap(std::size_t position, std::size_t count) noexcept;

    buffer items_;  // Guarded by guard().
};

/// The storage behind a value that is known to be a list.
inline object_value_list& list_storage(const Any& list) noexcept {
    return *static_cast<object_value_list*>(list.object());
}

}  // namespace ling::internal
