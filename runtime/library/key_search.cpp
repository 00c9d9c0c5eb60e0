#include "library/key_search.h"

#include "library/plain_key.h"
#include "ling/comparison.h"
#include "ling/failure_beside.h"
#include "ling/walk_check.h"

namespace ling::internal {

namespace {

// Beside one for each key that the table had at first: for those that other threads add meanwhile.
constexpr std::size_t kSpareRounds = 64;

}  // namespace

key_search::key_search(const Any& key) : key_(key), hash_(hash_entry::hashOf(hash_of(key))), plain_(is_plain_key(key)) {
    failed_ = !plain_ && (walk_check::isEnded() || is_interrupted());
}

void key_search::begin(const hash_storage& storage, std::uint64_t version) noexcept {
    if (!begun_)
        roundsLeft_ = storage.live() + kSpareRounds;
    begun_ = true;
    version_ = version;
    place_ = storage.first(hash_);
}

key_search::Outcome key_search::advance(const hash_storage& storage, std::uint64_t version) noexcept {
    if (failed_)
        return Outcome::Failed;
    if (!begun_ || version != version_)
        begin(storage, version);
    while (const hash_entry* entry = storage.skipTo(place_, hash_)) {
        switch (judge(entry->key)) {
            case Verdict::Equal:
                return Outcome::Present;
            case Verdict::Unknown:
                open_ = entry->key;
                return Outcome::Undecided;
            case Verdict::Different:
                place_ = storage.next(place_);
        }
    }
    return Outcome::Absent;
}

key_search::Verdict key_search::judge(const Any& present) const noexcept {
    if (present.isSameAs(key_))
        return Verdict::Equal;  // A number that is no number, or an object that denies being itself, is still found.
    if (plain_ && is_plain_key(present))
        return plain_keys_equal(present, key_) ? Verdict::Equal : Verdict::Different;
    if (const auto known = compared_.find(present); known != compared_.end())
        return known->second ? Verdict::Equal : Verdict::Different;
    return roundsLeft_ == 0 ? Verdict::Different : Verdict::Unknown;
}

void key_search::compare() {
    const bool equal = compare_objects(key_, open_) == 0;
    failed_ = walk_check::isEnded() || is_interrupted();
    compared_.emplace(std::move(open_), equal);
    --roundsLeft_;
}

}  // namespace ling::internal
