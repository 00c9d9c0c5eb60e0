#pragma once

#include "ling/map_interface.h"
#include "ling/set_interface.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace ling {

/// The native map: a hash table that keeps the order of insertion. Keys are hashed by `hash_of` and compared by
/// `compare_objects`. Each operation is atomic towards other threads; keys of foreign classes are compared while
/// nothing is locked.
class LING_EXPORT Map_Generic : public I_MutableMap_Generic {
public:
    Map_Generic();  ///< A new, empty map.
    /// Throws `ErrorException` where a key cannot be hashed or compared (`try_hash`); so does that of a set.
    explicit Map_Generic(std::span<const std::pair<Any, Any>> pairs);
    Map_Generic(std::initializer_list<std::pair<Any, Any>> pairs);

    std::size_t size() const noexcept;

    static Class_Generic genericInstance(const Type& key, const Type& value);
    static Result<Map_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

template <class K, class V>
class Map : public internal::typed_map<K, V, Map_Generic> {
public:
    using internal::typed_map<K, V, Map_Generic>::typed_map;
    static Result<Map> cast(const Any& value) { return internal::narrow<Map, Map_Generic>(value); }
    static Type getType() { return Type(Map_Generic::genericInstance(K::getType(), V::getType())); }
};

/// A map from text to any value, as structured documents have it. Its type alone is special: any map of that shape
/// serves.
class LING_EXPORT JsonObject : public Map_Generic {
public:
    using Map_Generic::Map_Generic;
    static Result<JsonObject> cast(const Any& value) { return internal::narrow<JsonObject, Map_Generic>(value); }
    static const Class_Generic& getClass();
    static Type getType();
};

/// The native set, with the rules of the native map.
class LING_EXPORT Set_Generic : public I_MutableSet_Generic {
public:
    Set_Generic();
    explicit Set_Generic(std::span<const Any> items);
    Set_Generic(std::initializer_list<Any> items) : Set_Generic(std::span<const Any>(items.begin(), items.size())) {}

    std::size_t size() const noexcept;

    static Class_Generic genericInstance(const Type& item);
    static Result<Set_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

template <class T>
class Set : public internal::typed_iterable<T, Set_Generic> {
public:
    using internal::typed_iterable<T, Set_Generic>::typed_iterable;
    static Result<Set> cast(const Any& value) { return internal::narrow<Set, Set_Generic>(value); }
    static Type getType() { return Type(Set_Generic::genericInstance(T::getType())); }
};

namespace internal {

class hash_table;

/// The storage of a map.
class LING_EXPORT object_value_hash_map final : public object_value {
public:
    explicit object_value_hash_map(object_value_class* klass = nullptr);

    std::size_t size() const noexcept;
    Any find(const Any& key, bool& found) const;
    void set(const Any& key, const Any& value);
    Any remove(const Any& key, bool& found);
    void clear();
    /// All pairs as they are now, or the first few, in order of insertion; lazy values are resolved.
    std::vector<std::pair<Any, Any>> copy_and_load_pairs(std::size_t atMost = SIZE_MAX) const;
    std::vector<Any> copy_keys() const;
    std::vector<Any> copy_values() const;
    Any iterate() const;  ///< An iterator over the keys as they are now.

private:
    ~object_value_hash_map() override;
    std::unique_ptr<hash_table> table_;
};

/// The storage of a set.
class LING_EXPORT object_value_hash_set final : public object_value {
public:
    explicit object_value_hash_set(object_value_class* klass = nullptr);

    std::size_t size() const noexcept;
    bool contains(const Any& item) const;
    bool insert(const Any& item);  ///< True when the item is new.
    bool remove(const Any& item);
    void clear();
    std::vector<Any> copy_items(std::size_t atMost = SIZE_MAX) const;
    Any iterate() const;  ///< An iterator over the items as they are now.

private:
    ~object_value_hash_set() override;
    std::unique_ptr<hash_table> table_;
};

}  // namespace internal

}  // namespace ling
