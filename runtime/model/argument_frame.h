#pragma once

#include "ling/any.h"

#include <memory>
#include <span>

namespace ling::internal {

/// Arguments put together for one call: on the stack when they are few, as they nearly always are.
class argument_frame {
public:
    explicit argument_frame(std::size_t capacity)
        : large_(capacity > kSmall ? std::make_unique<Any[]>(capacity) : nullptr) {}
    argument_frame(const argument_frame&) = delete;
    argument_frame& operator=(const argument_frame&) = delete;
    ~argument_frame() {
        if (large_ == nullptr)
            std::destroy_n(small(), count_);
    }

    void add(const Any& value) {
        if (large_ == nullptr)
            std::construct_at(small() + count_, value);
        else
            large_[count_] = value;
        ++count_;
    }
    void addAll(std::span<const Any> values) {
        for (const Any& value : values)
            add(value);
    }
    std::size_t size() const noexcept { return count_; }
    Any& operator[](std::size_t index) noexcept { return begin()[index]; }
    operator std::span<const Any>() noexcept { return {begin(), count_}; }

private:
    static constexpr std::size_t kSmall = 8;
    Any* small() noexcept { return reinterpret_cast<Any*>(storage_); }
    Any* begin() noexcept { return large_ == nullptr ? small() : large_.get(); }

    alignas(Any) unsigned char storage_[kSmall * sizeof(Any)];
    std::unique_ptr<Any[]> large_;
    std::size_t count_ = 0;
};

}  // namespace ling::internal
