#include "library/counted_buffer.h"
#include "library/list_storage.h"
#include "ling/list.h"

#include <algorithm>

namespace ling {

using internal::counted_buffer;
using internal::object_value_list;

list_builder::list_builder(std::size_t capacity) {
    if (capacity != 0)
        moveTo(counted_buffer<Any>::make(capacity));
}

list_builder::~list_builder() {
    if (counted_buffer<Any>* left = finish())
        left->release();
}

/// Puts what is there into `buffer`, which is large enough for it and replaces the one before.
void list_builder::moveTo(counted_buffer<Any>* buffer) noexcept {
    const std::size_t count = buffer_ == nullptr ? 0 : static_cast<std::size_t>(next_ - buffer_->items());
    if (buffer_ != nullptr) {
        internal::relocate(buffer->items(), buffer_->items(), count);
        buffer_->release();  // Its count is still 0: there is nothing in it to destroy.
    }
    buffer_ = buffer;
    next_ = buffer->items() + count;
    end_ = buffer->items() + buffer->capacity();
}

void list_builder::grow() {
    moveTo(counted_buffer<Any>::make(internal::grown_capacity(buffer_ == nullptr ? 0 : buffer_->capacity())));
}

void list_builder::growBy(std::size_t count) {
    const std::size_t present = buffer_ == nullptr ? 0 : static_cast<std::size_t>(next_ - buffer_->items());
    moveTo(counted_buffer<Any>::make(std::max(present + count, internal::grown_capacity(present))));
}

/// Gives the buffer away, with its count set.
counted_buffer<Any>* list_builder::finish() noexcept {
    if (buffer_ != nullptr)
        buffer_->count = static_cast<std::size_t>(next_ - buffer_->items());
    next_ = end_ = nullptr;
    return std::exchange(buffer_, nullptr);
}

List_Generic list_builder::take() {
    internal::buffer_ref<Any> items = internal::buffer_ref<Any>::adopt(finish());
    return unchecked<List_Generic>(Any::adopt(new object_value_list(std::move(items))));
}

}  // namespace ling
