#pragma once

#include "ling/sequence.h"

#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace ling {

namespace internal {
template <class T>
class counted_buffer;
}  // namespace internal

/// The native list. Shared, not copied, by every handle on it; safe under concurrent use: each operation is atomic,
/// and an iteration walks the items as they were when it began.
class LING_EXPORT List_Generic : public I_MutableSequence_Generic {
public:
    List_Generic() : List_Generic(empty()) {}
    explicit List_Generic(std::vector<Any> items);
    List_Generic(std::initializer_list<Any> items) : List_Generic(std::vector<Any>(items)) {}
    static List_Generic empty();

    std::size_t size() const noexcept;
    Any at(std::int64_t index) const;  ///< An item, from the end when negative, or an error result.
    using I_Sequence_Generic::at;
    void append(const Any& item) const;
    void appendAll(std::span<const Any> items) const;
    std::vector<Any> copyItems() const;

    static Class_Generic genericInstance(const Type& item);
    static Result<List_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

template <class T>
class List : public internal::typed_sequence<T, List_Generic> {
public:
    List() = default;
    List(std::initializer_list<T> items)
        : internal::typed_sequence<T, List_Generic>(std::vector<Any>(items.begin(), items.end())) {}
    explicit List(std::vector<Any> items) : internal::typed_sequence<T, List_Generic>(std::move(items)) {}
    static Result<List> cast(const Any& value) { return internal::narrow<List, List_Generic>(value); }
    static Type getType() { return Type(List_Generic::genericInstance(T::getType())); }
};

/// Fills a native list that nobody else sees yet, and so without its guard. Move it nowhere while it fills.
class LING_EXPORT list_builder {
public:
    /// Room for `capacity` items is got at once; more is got as they come.
    explicit list_builder(std::size_t capacity = 0);
    list_builder(const list_builder&) = delete;
    list_builder& operator=(const list_builder&) = delete;
    ~list_builder();

    void add(Any item) {
        if (next_ == end_)
            grow();
        std::construct_at(next_++, std::move(item));
    }
    /// Raw memory for `count` items more, for those who make many at once. `added` says how many of them there are now.
    Any* room(std::size_t count) {
        if (static_cast<std::size_t>(end_ - next_) < count)
            growBy(count);
        return next_;
    }
    void added(std::size_t count) noexcept { next_ += count; }
    /// The list of all that was added. The builder is empty afterwards.
    List_Generic take();

private:
    void grow();
    void growBy(std::size_t count);
    void moveTo(internal::counted_buffer<Any>* buffer) noexcept;
    internal::counted_buffer<Any>* finish() noexcept;

    internal::counted_buffer<Any>* buffer_ = nullptr;  // Owned; its count is set when it becomes a list's.
    Any* next_ = nullptr;
    Any* end_ = nullptr;
};

/// The native tuple: an immutable sequence. Compared and hashed by its items.
class LING_EXPORT Tuple_Generic : public I_Tuple_Generic {
public:
    Tuple_Generic() : Tuple_Generic(std::vector<Any>()) {}
    explicit Tuple_Generic(std::vector<Any> items);
    Tuple_Generic(std::initializer_list<Any> items) : Tuple_Generic(std::vector<Any>(items)) {}
    std::span<const Any> items() const noexcept;  ///< Valid as long as this handle lives.

    static Class_Generic genericInstance(std::span<const Type> items);
    static Result<Tuple_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

namespace internal {

/// The storage of a tuple.
class LING_EXPORT object_value_tuple final : public object_value {
public:
    explicit object_value_tuple(std::vector<Any> items, object_value_class* klass = nullptr);
    std::size_t size() const noexcept { return items_.size(); }
    const Any& at(std::size_t index) const noexcept { return items_[index]; }
    std::span<const Any> items() const noexcept { return items_; }

private:
    const std::vector<Any> items_;
};

}  // namespace internal

}  // namespace ling
