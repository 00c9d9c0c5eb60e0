#pragma once

#include "ling/iterable.h"

namespace ling {

/// Values by key. An implementation gives `$get`, `$contains`, `$$keys` and `$$length`. Iterating a map walks its
/// keys.
class LING_EXPORT I_Map_Generic : public I_Iterable_Generic {
public:
    /// The value under `key`, or an error result ("Key not found: {}.") when there is none.
    Any get(const Any& key) const;
    Any get(const Any& key, const Any& fallback) const;  ///< `fallback` when there is none.
    Any contains(const Any& key) const;                  ///< A boolean, or an error result.
    Any keys() const;                                    ///< A list, or an error result.
    Any values() const;
    Result<Integer> length() const;

    static Class_Generic genericInstance(const Type& key, const Type& value);
    static Result<I_Map_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
    static const method_ident_untyped $get, $contains;
    static const property_ident_untyped $$keys, $$values, $$length, $$keysType, $$valuesType;
};

/// A map that can change. An implementation gives `$set`, `$remove` and `$clear`.
class LING_EXPORT I_MutableMap_Generic : public I_Map_Generic {
public:
    Any set(const Any& key, const Any& value) const;
    Any remove(const Any& key) const;  ///< The removed value, or an error result when there was none.
    Any clear() const;

    static Class_Generic genericInstance(const Type& key, const Type& value);
    static Result<I_MutableMap_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
    static const method_ident_untyped $set, $remove, $clear;
};

template <class K, class V>
class I_Map : public I_Map_Generic {
public:
    static Type getType() { return Type(I_Map_Generic::genericInstance(K::getType(), V::getType())); }
};
template <class K, class V>
class I_MutableMap : public I_MutableMap_Generic {
public:
    static Type getType() { return Type(I_MutableMap_Generic::genericInstance(K::getType(), V::getType())); }
};

}  // namespace ling
