#include "ling/member_table.h"

#include <bit>
#include <utility>

namespace ling::internal {

namespace {

const found_member absent;
/// Stands in the slots that are passed over. No name has this record.
constinit const identifier_data passedOver{{}, 0, nullptr, true};

}  // namespace

member_table::member_table(std::size_t count)
    : mask_(std::bit_ceil(count * 2 + 2) - 1),
      shift_(static_cast<unsigned>(std::countl_zero(mask_))),
      slots_(std::make_unique<slot[]>(mask_ + 1)) {}

const found_member& member_table::findFurther(const identifier_data* key) const noexcept {
    for (std::size_t index = home(key);; index = (index + 1) & mask_) {
        const identifier_data* present = slots_[index].key.load(std::memory_order_acquire);
        if (present == key)
            return slots_[index].value;
        if (present == nullptr)
            return absent;
    }
}

void member_table::addUnlessPresent(const identifier& id, const found_member& member) {
    if (&find(id) != &absent)
        return;
    kept_.push_back(Any::share(member.member));
    place(id.data(), member);
    ++used_;
}

void member_table::place(const identifier_data* key, const found_member& member) noexcept {
    std::size_t index = home(key);
    while (slots_[index].key.load(std::memory_order_relaxed) != nullptr)
        index = (index + 1) & mask_;
    slots_[index].value = member;
    slots_[index].key.store(key, std::memory_order_release);
}

bool member_table::change(const identifier& id, const found_member& member) {
    const found_member& before = find(id);
    if (before == member)
        return true;
    if (used_ > mask_ / 2)
        return false;
    kept_.push_back(Any::share(member.member));
    place(id.data(), member);
    ++used_;
    if (&before == &absent)
        return true;
    // The old slot comes first on the way of whoever looks, so it is the one that was answered until here.
    for (std::size_t index = home(id.data());; index = (index + 1) & mask_)
        if (&slots_[index].value == &before) {
            slots_[index].key.store(&passedOver, std::memory_order_release);
            return true;
        }
}

/// How many names share their first place with another.
std::size_t member_table::countDisplaced() const {
    std::vector<bool> taken(mask_ + 1);
    std::size_t displaced = 0;
    for (std::size_t i = 0; i <= mask_; ++i)
        if (const identifier_data* key = slots_[i].key.load(std::memory_order_relaxed)) {
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
        if (const identifier_data* key = entries[i].key.load(std::memory_order_relaxed))
            place(key, entries[i].value);
}

}  // namespace ling::internal
