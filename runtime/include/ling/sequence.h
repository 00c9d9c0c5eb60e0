#pragma once

#include "ling/iterable.h"

namespace ling {

/// Items by position. `$at` and `$$length` are all that an implementation must give: iteration, search and collecting
/// have defaults on top of them. The native list takes negative positions from the end.
class LING_EXPORT I_Sequence_Generic : public I_Iterable_Generic {
public:
    Any at(const Any& index) const;  ///< The item, or an error result when there is none at `index`.
    Any atOr(const Any& index, const Any& fallback) const;
    Any indexOf(const Any& item, std::int64_t start = 0) const;  ///< An integer, -1 when absent, or an error result.
    Result<Integer> length() const;

    static Class_Generic genericInstance(const Type& item);
    static Result<I_Sequence_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
    static const method_ident_untyped $at, $atOr, $indexOf;
    static const property_ident_untyped $$length;
};

/// A sequence that can change. An implementation gives `$set`, `$appendAt` and `$removeAt`; the others have defaults.
/// Each answers none, or what is said, or an error result.
class LING_EXPORT I_MutableSequence_Generic : public I_Sequence_Generic {
public:
    Any set(const Any& index, const Any& item) const;
    Any append(const Any& item) const;
    Any appendAt(const Any& index, const Any& item) const;  ///< Inserts before `index`.
    Any extend(const Any& items) const;                     ///< Appends every item of an iterable.
    Any pop(const Any& index = Any(-1)) const;              ///< Removes and answers an item.
    Any removeAt(const Any& index, std::int64_t count = 1) const;
    Any removeOne(const Any& item) const;  ///< A boolean: whether an equal item was there.
    Any clear() const;

    static Class_Generic genericInstance(const Type& item);
    static Result<I_MutableSequence_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
    static const method_ident_untyped $set, $append, $appendAt, $extend, $pop, $removeAt, $removeOne, $clear;
};

/// A sequence of fixed length whose items may each have a type of their own.
class LING_EXPORT I_Tuple_Generic : public I_Sequence_Generic {
public:
    static Class_Generic genericInstance(std::span<const Type> items);
    static Result<I_Tuple_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

namespace internal {
template <class T, class Base>
class typed_sequence : public typed_iterable<T, Base> {
public:
    using typed_iterable<T, Base>::typed_iterable;
    Result<T> at(const Any& index) const { return cast_item<T>(Base::at(index)); }
};
}  // namespace internal

template <class T>
class I_Sequence : public internal::typed_sequence<T, I_Sequence_Generic> {
public:
    static Result<I_Sequence> cast(const Any& value) { return internal::narrow<I_Sequence, I_Sequence_Generic>(value); }
    static Type getType() { return Type(I_Sequence_Generic::genericInstance(T::getType())); }
};
template <class T>
class I_MutableSequence : public internal::typed_sequence<T, I_MutableSequence_Generic> {
public:
    static Result<I_MutableSequence> cast(const Any& value) {
        return internal::narrow<I_MutableSequence, I_MutableSequence_Generic>(value);
    }
    static Type getType() { return Type(I_MutableSequence_Generic::genericInstance(T::getType())); }
};

}  // namespace ling
