#pragma once

#include "library/hash_storage.h"
#include "ling/spin_lock.h"

#include <utility>
#include <vector>

namespace ling::internal {

/// The keys of a table as they were at one moment. They never change.
struct table_snapshot {
    buffer_ref<hash_entry> entries;
    std::size_t count = 0;
};

/// A hash table that keeps the order of insertion: what native maps and sets are made of.
///
/// Every operation is atomic towards the others. Keys are hashed and compared, memory is got and references are dropped
/// while nothing is locked. A key keeps the place that it was first given, and stays the object that it was.
class hash_table {
public:
    /// `guard` is that of the object that the table belongs to.
    explicit hash_table(spin_lock& guard) noexcept : guard_(guard) {}

    std::size_t size() const noexcept;
    /// Whether the key is there; its value, if it is wanted, comes in `value`.
    bool find(const Any& key, Any* value = nullptr) const;
    /// True when the key is new. Otherwise the value is exchanged for the one that was there.
    bool put(const Any& key, Any&& value = Any());
    /// Whether the key was there; its value comes in `value`.
    bool take(const Any& key, Any& value);
    void clear();

    /// Costs the same for every size: the keys are shared until one of them is removed.
    table_snapshot snapshot() const noexcept;
    std::vector<Any> copyKeys(std::size_t atMost = SIZE_MAX) const;
    std::vector<std::pair<Any, Any>> copyPairs(std::size_t atMost = SIZE_MAX) const;

private:
    void adopt(hash_storage& spare) noexcept;
    void compactIfSparse();

    spin_lock& guard_;
    hash_storage storage_;       // Guarded, as is the version.
    std::uint64_t version_ = 0;  // Changes with every change of the keys or of their places.
};

}  // namespace ling::internal
