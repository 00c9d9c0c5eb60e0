#pragma once

#include "ling/sequence.h"

#include <span>
#include <vector>

namespace ling {

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
class List : public List_Generic {
public:
    static Type getType() { return Type(List_Generic::genericInstance(T::getType())); }
};

/// The native tuple: an immutable sequence. Compared and hashed by its items.
class LING_EXPORT Tuple_Generic : public I_Tuple_Generic {
public:
    Tuple_Generic() : Tuple_Generic(std::vector<Any>()) {}
    explicit Tuple_Generic(std::vector<Any> items);
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
