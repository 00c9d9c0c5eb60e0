#pragma once

#include "ling/any.h"
#include "ling/identifier.h"
#include "ling/short_ways.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace ling::internal {

/// What the tables of a class answer for one name.
struct found_member {
    object_value* member = nullptr;         ///< Borrowed from the class, which keeps it as long as it lives.
    object_value_class* definer = nullptr;  ///< The class that declares it.
    bool classLevel = false;                ///< Takes no receiver.
    explicit operator bool() const noexcept { return member != nullptr; }
    friend bool operator==(const found_member&, const found_member&) = default;
};

/// A hash table from names to members: open addressing, at most half full. It is defined here so that a look-up that
/// succeeds at once needs no call.
///
/// Anybody may look while one thread changes it, and what was found stays in its place as long as the table lives: a
/// name that changes its member gets another slot, and its old one is passed over from then on.
class LING_EXPORT member_table {
public:
    /// Room for `count` names.
    explicit member_table(std::size_t count);
    /// The member, or one that is empty. It stays in its place as long as the table lives.
    const found_member& find(const identifier& id) const noexcept {
        const slot& first = slots_[home(id.data())];
        return first.key.load(std::memory_order_acquire) == id.data() ? first.value : findFurther(id.data());
    }

    /// Adds a name unless it is there already. The table keeps the member.
    void addUnlessPresent(const identifier& id, const found_member& member);
    /// Arranges the names once all are there, so that more of them are found at the first look. Nobody looks as yet.
    void arrange();
    /// Lets a name answer `member` from now on, while others look. False, with nothing changed, when there is no room
    /// left: the table has to be built anew.
    bool change(const identifier& id, const found_member& member);

private:
    struct slot {
        std::atomic<const identifier_data*> key{nullptr};  // Written last, and never without a member.
        found_member value;
    };

    /// Mixes the address of the key rather than reading the key's own hash, which may not be in the cache.
    std::size_t home(const identifier_data* key) const noexcept {
        return (reinterpret_cast<std::uintptr_t>(key) * multiplier_) >> shift_;
    }
    const found_member& findFurther(const identifier_data* key) const noexcept;
    void place(const identifier_data* key, const found_member& member) noexcept;
    std::size_t countDisplaced() const;

    std::uint64_t multiplier_ = 0x9E3779B97F4A7C15ULL;
    std::size_t mask_;
    unsigned shift_;
    std::size_t used_ = 0;  // Slots that no name can have any more, those passed over included.
    std::unique_ptr<slot[]> slots_;
    std::vector<Any> kept_;
};

/// The tables that a class's look-ups read.
struct member_tables {
    member_table methods{0};
    member_table properties{0};
    member_table classMethods{0};
    member_table classProperties{0};
    // What stands under the names of the member protocol, and what is offered past the functions above.
    found_member methodProtocol;
    found_member propertyProtocol;
    offered_ways offered;
};

}  // namespace ling::internal
