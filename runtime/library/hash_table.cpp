#include "library/hash_table.h"

#include "library/key_search.h"

#include <algorithm>
#include <mutex>
#include <new>

namespace ling::internal {

using Outcome = key_search::Outcome;

std::size_t hash_table::size() const noexcept {
    std::lock_guard hold(guard_);
    return storage_.live();
}

bool hash_table::find(const Any& key, Any* value) const {
    key_search search(key);
    Any found;
    while (true) {
        {
            std::lock_guard hold(guard_);
            const Outcome outcome = search.advance(storage_, version_);
            if (outcome == Outcome::Absent || outcome == Outcome::Failed)
                return false;
            if (outcome == Outcome::Present) {
                found = storage_.entryAt(search.place()).value;
                break;
            }
        }
        search.compare();
    }
    if (value != nullptr)
        value->swap(found);
    return true;
}

/// Makes `spare` the storage; what was it before is in `spare` afterwards.
void hash_table::adopt(hash_storage& spare) noexcept {
    spare.moveFrom(storage_);
    std::swap(storage_, spare);
    ++version_;
}

bool hash_table::put(const Any& key, Any&& value) {
    key_search search(key);
    hash_storage spare;
    while (true) {
        std::size_t wanted = 0;
        {
            std::lock_guard hold(guard_);
            const Outcome outcome = search.advance(storage_, version_);
            if (outcome == Outcome::Present) {
                storage_.entryAt(search.place()).value.swap(value);
                return false;
            }
            if (outcome == Outcome::Failed)
                return false;
            if (outcome == Outcome::Absent) {
                if (!storage_.hasRoom() && spare.canTake(storage_.live() + 1))
                    adopt(spare);
                if (storage_.hasRoom()) {
                    storage_.add(key, search.hash(), std::move(value));
                    ++version_;
                    return true;
                }
                wanted = grown_capacity(storage_.live() + 1);
            }
        }
        if (wanted == 0)
            search.compare();
        else
            spare = hash_storage(wanted);
    }
}

bool hash_table::take(const Any& key, Any& value) {
    key_search search(key);
    hash_storage spare;
    Any takenKey;
    Any taken;
    while (true) {
        std::size_t wanted = 0;
        {
            std::lock_guard hold(guard_);
            Outcome outcome = search.advance(storage_, version_);
            if (outcome == Outcome::Present && storage_.isShared() && spare.canTake(storage_.live())) {
                adopt(spare);
                outcome = search.advance(storage_, version_);
            }
            if (outcome == Outcome::Absent || outcome == Outcome::Failed)
                return false;
            if (outcome == Outcome::Present && !storage_.isShared()) {
                storage_.kill(search.place(), takenKey, taken);
                ++version_;
                break;
            }
            if (outcome == Outcome::Present)
                wanted = std::max(kSmallestCapacity, storage_.live());
        }
        if (wanted == 0)
            search.compare();
        else
            spare = hash_storage(wanted);
    }
    value.swap(taken);
    compactIfSparse();
    return true;
}

void hash_table::compactIfSparse() {
    hash_storage spare;
    std::size_t wanted = 0;
    {
        std::lock_guard hold(guard_);
        if (!storage_.isSparse())
            return;
        wanted = grown_capacity(storage_.live());
    }
    try {
        spare = hash_storage(wanted);
    } catch (const std::bad_alloc&) {
        return;  // The key is gone all the same, and the table does as it is.
    }
    std::lock_guard hold(guard_);
    if (storage_.isSparse() && spare.canTake(storage_.live()))
        adopt(spare);
}

void hash_table::clear() {
    hash_storage dropped;
    std::lock_guard hold(guard_);
    std::swap(storage_, dropped);
    ++version_;
}

table_snapshot hash_table::snapshot() const noexcept {
    std::lock_guard hold(guard_);
    return {storage_.entries(), storage_.entries().count()};
}

std::vector<Any> hash_table::copyKeys(std::size_t atMost) const {
    const table_snapshot now = snapshot();
    std::vector<Any> keys;
    keys.reserve(std::min(now.count, atMost));
    for (std::size_t i = 0; i < now.count && keys.size() < atMost; ++i)
        if (const hash_entry& entry = now.entries.items()[i]; entry.isLive())
            keys.push_back(entry.key);
    return keys;
}

std::vector<std::pair<Any, Any>> hash_table::copyPairs(std::size_t atMost) const {
    std::vector<std::pair<Any, Any>> pairs;
    for (std::size_t wanted = size();; wanted = size()) {
        pairs.reserve(std::min(wanted, atMost));
        std::lock_guard hold(guard_);  // Values change in place, so they are not read from a snapshot.
        if (std::min(storage_.live(), atMost) > pairs.capacity())
            continue;
        for (std::size_t i = 0; i < storage_.entries().count() && pairs.size() < atMost; ++i)
            if (const hash_entry& entry = storage_.entries().items()[i]; entry.isLive())
                pairs.emplace_back(entry.key, entry.value);
        return pairs;
    }
}

}  // namespace ling::internal
