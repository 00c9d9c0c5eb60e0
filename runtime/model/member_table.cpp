#include "ling/member_table.h"

#include <bit>
#include <utility>

namespace ling::internal {

namespace {

const found_member absent;

}  // namespace

member_table::member_table(std::size_t count)
    : mask_(std::bit_ceil(count * 2 + 2) - 1),
      shift_(static_cast<unsigned>(std::countl_zero(mask_))),
      slots_(std::make_unique<slot[]>(mask_ + 1)) {}

const found_member& member_table::findFurther(const identifier_data* key) const noexcept {
    for (std::size_t index = home(key); slots_[index].key != nullptr; index = (index + 1) & mask_)
        if (slots_[index].key == key)
            return slots_[index].value;
    return absent;
}

void member_table::addUnlessPresent(const identifier& id, const found_member& member) {
    if (&find(id) != &absent)
        return;
    place({id.data(), member});
    kept_.push_back(Any::share(member.member));
}

void member_table::place(const slot& entry) noexcept {
    std::size_t index = home(entry.key);
    while (slots_[index].key != nullptr)
        index = (index + 1) & mask_;
    slots_[index] = entry;
}

/// How many names share their first place with another.
std::size_t member_table::countDisplaced() const {
    std::vector<bool> taken(mask_ + 1);
    std::size_t displaced = 0;
    for (std::size_t i = 0; i <= mask_; ++i)
        if (const identifier_data* key = slots_[i].key) {
            displaced += taken[home(key)] ? 1 : 0;
            taken[home(key)] = true;
        }
    return displaced;
}

void member_table::arrange() {
    constexpr int kTries = 16;
    std::uint64_t best = multiplier_;
    std::size_t fewest = countDisplaced();
    for (int i = 0; i < kTries && fewest != 0; ++i) {
        multiplier_ = multiplier_ * 6364136223846793005ULL + 2;  // Odd numbers without a pattern.
        if (const std::size_t displaced = countDisplaced(); displaced < fewest) {
            best = multiplier_;
            fewest = displaced;
        }
    }
    multiplier_ = best;
    const auto entries = std::exchange(slots_, std::make_unique<slot[]>(mask_ + 1));
    for (std::size_t i = 0; i <= mask_; ++i)
        if (entries[i].key != nullptr)
            place(entries[i]);
}

}  // namespace ling::internal
