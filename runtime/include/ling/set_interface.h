#pragma once

#include "ling/iterable.h"

namespace ling {

/// Distinct items. An implementation gives `$iter` and `$$length`.
class LING_EXPORT I_Set_Generic : public I_Iterable_Generic {
public:
    Result<Integer> length() const;

    static Class_Generic genericInstance(const Type& item);
    static Result<I_Set_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
    static const property_ident_untyped $$length;
};

/// A set that can change. An implementation gives `$insert`, `$remove` and `$clear`; `$extend` has a default.
class LING_EXPORT I_MutableSet_Generic : public I_Set_Generic {
public:
    Any insert(const Any& item) const;  ///< A boolean: whether the item is new. Or an error result.
    Any remove(const Any& item) const;  ///< A boolean: whether the item was there. Or an error result.
    Any extend(const Any& items) const;
    Any clear() const;

    static Class_Generic genericInstance(const Type& item);
    static Result<I_MutableSet_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
    static const method_ident_untyped $insert, $remove, $extend, $clear;
};

template <class T>
class I_Set : public internal::typed_iterable<T, I_Set_Generic> {
public:
    static Result<I_Set> cast(const Any& value) { return internal::narrow<I_Set, I_Set_Generic>(value); }
    static Type getType() { return Type(I_Set_Generic::genericInstance(T::getType())); }
};
template <class T>
class I_MutableSet : public internal::typed_iterable<T, I_MutableSet_Generic> {
public:
    static Result<I_MutableSet> cast(const Any& value) {
        return internal::narrow<I_MutableSet, I_MutableSet_Generic>(value);
    }
    static Type getType() { return Type(I_MutableSet_Generic::genericInstance(T::getType())); }
};

}  // namespace ling
