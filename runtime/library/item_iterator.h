#pragma once

#include "interfaces/native_iterator.h"

#include <atomic>
#include <span>
#include <utility>

namespace ling::internal {

/// Iterates items that never change and that `Owner` keeps alive.
template <class Owner>
class item_iterator final : public native_iterator {
public:
    item_iterator(Owner owner, std::span<const Any> items) : owner_(std::move(owner)), items_(items) {}

    bool step(Any& item) override {
        const std::size_t position = next_.fetch_add(1, std::memory_order_relaxed);
        if (position >= items_.size())
            return false;
        item = items_[position];
        return true;
    }
    Step stepUnshared(Any& item) override {
        const std::size_t position = next_.load(std::memory_order_relaxed);
        if (position >= items_.size())
            return Step::End;
        next_.store(position + 1, std::memory_order_relaxed);
        item = items_[position];
        return Step::Item;
    }

private:
    const Owner owner_;
    const std::span<const Any> items_;
    std::atomic<std::size_t> next_{0};
};

}  // namespace ling::internal
