#pragma once

#include "library/hash_storage.h"

#include <cstddef>
#include <unordered_map>

namespace ling::internal {

/// The search for one key in a hash table that others change at the same time.
///
/// Keys that run no foreign code are compared at once, under the table's lock. For another key the search stops: the
/// caller unlocks the table, lets the search `compare`, locks it again and goes on. A search finds its place again by
/// the table's version; when the table has changed it starts anew, but compares no two keys twice. A comparison that
/// itself keeps adding keys to the table cannot keep the search going for ever: after many rounds keys that were not
/// compared yet count as different.
class key_search {
public:
    enum class Outcome { Absent, Present, Undecided, Failed };

    /// Hashes the key, which can run any code. Nothing may be locked.
    explicit key_search(const Any& key);

    std::uint64_t hash() const noexcept { return hash_; }
    /// Goes on as far as it can. The table is locked; `version` changes with every change of its keys. It has failed
    /// when a hash or a comparison ended too soon, which the `walk_check` of the operation tells, or was interrupted.
    Outcome advance(const hash_storage& storage, std::uint64_t version) noexcept;
    /// Where the key is, once it is present.
    hash_storage::slot place() const noexcept { return place_; }
    /// Compares the key with the one that the search stopped at. Nothing may be locked.
    void compare();

private:
    enum class Verdict { Equal, Different, Unknown };
    struct identity_hash {
        std::size_t operator()(const Any& key) const noexcept { return static_cast<std::size_t>(key.rawBits() >> 4); }
    };
    struct same_identity {
        bool operator()(const Any& a, const Any& b) const noexcept { return a.isSameAs(b); }
    };

    void begin(const hash_storage& storage, std::uint64_t version) noexcept;
    Verdict judge(const Any& present) const noexcept;

    const Any& key_;
    const std::uint64_t hash_;
    const bool plain_;
    bool failed_ = false;
    bool begun_ = false;
    std::uint64_t version_ = 0;
    std::size_t roundsLeft_ = 0;
    hash_storage::slot place_ = 0;
    Any open_;  // The key that the search stopped at.
    /// Keys compared before, and whether they were equal. As they are kept here, an object found again at the same
    /// address is the same object.
    std::unordered_map<Any, bool, identity_hash, same_identity> compared_;
};

}  // namespace ling::internal
