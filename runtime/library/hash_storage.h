#pragma once

#include "library/counted_buffer.h"
#include "ling/any.h"
#include "values/content_hash.h"

#include <memory>
#include <span>

namespace ling::internal {

/// A key with its value. One that was removed leaves a dead entry behind until the entries are next moved.
struct hash_entry {
    static constexpr std::uint64_t kDead = std::uint64_t{1} << 63;
    static std::uint64_t hashOf(std::int64_t hash) noexcept { return static_cast<std::uint64_t>(hash) & ~kDead; }

    Any key;
    Any value;
    std::uint64_t hash;

    bool isLive() const noexcept { return (hash & kDead) == 0; }
};

/// The memory of a hash table: entries in the order of insertion, and an index into them with open addressing.
///
/// It neither locks nor compares; the table does both. The entries can be shared with snapshots, which read keys only:
/// so a value may be exchanged in shared entries and a new key added behind them, but no key removed.
class hash_storage {
public:
    /// A place in the index.
    using slot = std::size_t;

    hash_storage() noexcept = default;
    /// Memory for `capacity` entries.
    explicit hash_storage(std::size_t capacity);
    hash_storage(hash_storage&&) noexcept = default;
    hash_storage& operator=(hash_storage&&) noexcept = default;

    std::size_t live() const noexcept { return live_; }
    /// New, and large enough to take over so many entries.
    bool canTake(std::size_t count) const noexcept { return !spent_ && entries_.capacity() >= count; }
    bool hasRoom() const noexcept { return entries_.count() < entries_.capacity(); }
    bool isShared() const noexcept { return entries_ && entries_->isShared(); }
    /// Worth moving: nearly all entries are dead.
    bool isSparse() const noexcept { return entries_.count() >= kSparse && live_ < entries_.count() / 4; }
    const buffer_ref<hash_entry>& entries() const noexcept { return entries_; }

    /// Visits the entries that may have the given hash: from `first` on, as long as `skipTo` answers an entry.
    slot first(std::uint64_t hash) const noexcept { return home(hash) & mask_; }
    slot next(slot place) const noexcept { return (place + 1) & mask_; }
    /// The entry of this hash at `place` or the nearest place after it, which `place` is set to. Null, with `place` at
    /// the end of the search, when there is none.
    hash_entry* skipTo(slot& place, std::uint64_t hash) const noexcept;
    hash_entry& entryAt(slot place) const noexcept { return entries_.items()[index_[place].entry]; }

    /// Adds a key that is not there yet. There must be room.
    void add(const Any& key, std::uint64_t hash, Any&& value) noexcept;
    /// Kills an entry; its key and value come out, to be dropped elsewhere. The entries must not be shared.
    void kill(slot place, Any& key, Any& value) noexcept;
    /// Takes over the live entries of another storage, which is only good for being dropped afterwards.
    void moveFrom(hash_storage& other) noexcept;

private:
    // Entries are numbered in 32 bits, which is enough for a table of a hundred and fifty gigabytes.
    struct index_place {
        std::uint32_t entry = kEmpty;
        std::uint32_t tag = 0;
    };
    static constexpr std::uint32_t kEmpty = 0xFFFFFFFF;
    static constexpr std::uint32_t kRemoved = 0xFFFFFFFE;
    static constexpr std::size_t kSparse = 32;

    // A class may hash its instances to numbers that differ in a few bits, high or low: all of them must count.
    static std::uint64_t mixed(std::uint64_t hash) noexcept { return content_hash::mix(hash, content_hash::kSecond); }
    static std::size_t home(std::uint64_t hash) noexcept { return mixed(hash) >> 32; }
    static std::uint32_t tagOf(std::uint64_t hash) noexcept { return static_cast<std::uint32_t>(mixed(hash)); }
    void enter(std::uint64_t hash, std::size_t entry) noexcept;

    buffer_ref<hash_entry> entries_;
    std::unique_ptr<index_place[]> index_;
    std::size_t mask_ = 0;
    std::size_t live_ = 0;
    bool spent_ = false;  // Its entries went elsewhere.
};

}  // namespace ling::internal
