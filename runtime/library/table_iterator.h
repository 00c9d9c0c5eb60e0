#pragma once

#include "interfaces/native_iterator.h"
#include "library/hash_table.h"

#include <atomic>
#include <utility>

namespace ling::internal {

/// Iterates the keys of a table as they were when the iteration began.
class table_iterator final : public native_iterator {
public:
    explicit table_iterator(table_snapshot snapshot) : snapshot_(std::move(snapshot)) {}

    bool step(Any& item) override {
        while (true) {
            const std::size_t position = next_.fetch_add(1, std::memory_order_relaxed);
            if (position >= snapshot_.count)
                return false;
            const hash_entry& entry = snapshot_.entries.items()[position];
            if (entry.isLive()) {
                item = entry.key;
                return true;
            }
        }
    }

private:
    const table_snapshot snapshot_;
    std::atomic<std::size_t> next_{0};
};

}  // namespace ling::internal
