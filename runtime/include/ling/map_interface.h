#pragma once

#include "ling/iterable.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace ling {

class I_Map_Generic;

namespace internal {

/// One entry of a map. Where walking the map failed, the last entry has the error result for its value.
template <class K = Any, class V = Any>
struct map_entry {
    K key;
    V value;
};

/// The entries of a map, for one walk: those that a native map has now, or, of another map, each key as it comes with
/// the value that is then under it.
class LING_EXPORT map_entries {
public:
    explicit map_entries(const I_Map_Generic& map);
    bool advance();
    const map_entry<>& entry() const noexcept { return entry_; }

private:
    Any map_;  // None for a native map, whose entries are copied.
    iteration keys_;
    std::vector<std::pair<Any, Any>> copied_;
    std::size_t next_ = 0;
    bool failed_ = false;
    map_entry<> entry_;
};

template <class K, class V>
class entry_range {
public:
    class walk {
    public:
        explicit walk(map_entries& entries) : entries_(&entries), ended_(!entries.advance()) {}
        decltype(auto) operator*() const {
            const map_entry<>& entry = entries_->entry();
            if constexpr (std::same_as<K, Any> && std::same_as<V, Any>)
                return static_cast<const map_entry<>&>(entry);
            else
                return map_entry<Result<K>, Result<V>>{cast_item<K>(entry.key), cast_item<V>(entry.value)};
        }
        walk& operator++() {
            ended_ = !entries_->advance();
            return *this;
        }
        friend bool operator==(const walk& walk, std::default_sentinel_t) noexcept { return walk.ended_; }

    private:
        map_entries* entries_;
        bool ended_;
    };

    explicit entry_range(const I_Map_Generic& map) : entries_(map) {}
    walk begin() { return walk(entries_); }
    std::default_sentinel_t end() const noexcept { return {}; }

private:
    map_entries entries_;
};

}  // namespace internal

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
    /// Keys with their values: `for (const auto& [key, value] : map.items())`.
    internal::entry_range<Any, Any> items() const { return internal::entry_range<Any, Any>(*this); }

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

namespace internal {
template <class K, class V, class Base>
class typed_map : public typed_iterable<K, Base> {
public:
    using typed_iterable<K, Base>::typed_iterable;
    Result<V> get(const Any& key) const { return cast_item<V>(Base::get(key)); }
    Result<V> get(const Any& key, const Any& fallback) const { return cast_item<V>(Base::get(key, fallback)); }
    entry_range<K, V> items() const { return entry_range<K, V>(*this); }
};
}  // namespace internal

template <class K, class V>
class I_Map : public internal::typed_map<K, V, I_Map_Generic> {
public:
    static Result<I_Map> cast(const Any& value) { return internal::narrow<I_Map, I_Map_Generic>(value); }
    static Type getType() { return Type(I_Map_Generic::genericInstance(K::getType(), V::getType())); }
};
template <class K, class V>
class I_MutableMap : public internal::typed_map<K, V, I_MutableMap_Generic> {
public:
    static Result<I_MutableMap> cast(const Any& value) {
        return internal::narrow<I_MutableMap, I_MutableMap_Generic>(value);
    }
    static Type getType() { return Type(I_MutableMap_Generic::genericInstance(K::getType(), V::getType())); }
};

}  // namespace ling
