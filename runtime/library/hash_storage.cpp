#include "library/hash_storage.h"

#include <bit>

namespace ling::internal {

// Every entry, dead ones included, has taken at most one place of the index since the storage was made, so that with
// half as many places again as entries there is always an empty one to end a search.
hash_storage::hash_storage(std::size_t capacity)
    : entries_(buffer_ref<hash_entry>::make(capacity)), mask_(std::bit_ceil(capacity + capacity / 2 + 1) - 1) {
    index_ = std::make_unique<index_place[]>(mask_ + 1);
}

hash_entry* hash_storage::skipTo(slot& place, std::uint64_t hash) const noexcept {
    if (index_ == nullptr)
        return nullptr;
    const std::uint32_t tag = tagOf(hash);
    for (; index_[place].entry != kEmpty; place = next(place)) {
        if (index_[place].tag != tag || index_[place].entry == kRemoved)
            continue;
        hash_entry& entry = entryAt(place);
        if (entry.hash == hash)
            return &entry;
    }
    return nullptr;
}

void hash_storage::enter(std::uint64_t hash, std::size_t entry) noexcept {
    slot place = first(hash);
    while (index_[place].entry < kRemoved)
        place = next(place);
    index_[place] = {static_cast<std::uint32_t>(entry), tagOf(hash)};
}

void hash_storage::add(const Any& key, std::uint64_t hash, Any&& value) noexcept {
    enter(hash, entries_->count);
    std::construct_at(entries_.items() + entries_->count, hash_entry{key, std::move(value), hash});
    ++entries_->count;
    ++live_;
}

void hash_storage::kill(slot place, Any& key, Any& value) noexcept {
    hash_entry& entry = entryAt(place);
    key.swap(entry.key);
    value.swap(entry.value);
    entry.hash |= hash_entry::kDead;
    index_[place].entry = kRemoved;
    --live_;
}

void hash_storage::moveFrom(hash_storage& other) noexcept {
    hash_entry* from = other.entries_.items();
    const bool shared = other.isShared();
    for (hash_entry* entry = from; entry != from + other.entries_.count(); ++entry) {
        if (!entry->isLive())
            continue;  // Holds nothing: its key and value were taken out.
        enter(entry->hash, entries_->count);
        hash_entry* to = entries_.items() + entries_->count++;
        if (shared)
            std::construct_at(to, *entry);
        else
            relocate(to, entry, 1);
    }
    if (other.entries_ && !shared)
        other.entries_->count = 0;
    other.spent_ = true;
    live_ = entries_->count;
}

}  // namespace ling::internal
