#pragma once

#include "ling/any.h"

#include <cstring>
#include <memory>
#include <span>

namespace ling::internal {

/// A receiver and arguments in one row, for one call. None of them is counted: the caller keeps each as long as the
/// call takes, whatever the callee does to the place that it knows them from.
class borrowed_frame {
public:
    borrowed_frame(const Any& receiver, std::span<const Any> arguments)
        : large_(arguments.size() < kSmall ? nullptr
                                           : std::make_unique<unsigned char[]>((arguments.size() + 1) * sizeof(Any))),
          items_(large_ == nullptr ? storage_ : large_.get()),
          count_(arguments.size() + 1) {
        std::memcpy(items_, &receiver, sizeof(Any));
        if (!arguments.empty())
            std::memcpy(items_ + sizeof(Any), arguments.data(), arguments.size_bytes());
    }
    borrowed_frame(const borrowed_frame&) = delete;
    borrowed_frame& operator=(const borrowed_frame&) = delete;

    operator std::span<const Any>() const noexcept { return {reinterpret_cast<const Any*>(items_), count_}; }

private:
    static constexpr std::size_t kSmall = 8;

    alignas(Any) unsigned char storage_[kSmall * sizeof(Any)];
    const std::unique_ptr<unsigned char[]> large_;
    unsigned char* const items_;
    const std::size_t count_;
};

}  // namespace ling::internal
