#pragma once

#include "ling/any.h"
#include "ling/result.h"

#include <cstdint>
#include <optional>

namespace ling::internal {

/// The position that `index` names among `length` items: from the end when it is negative. Nothing when it lies
/// outside.
inline std::optional<std::size_t> position_of(std::int64_t index, std::size_t length) noexcept {
    const auto count = static_cast<std::int64_t>(length);
    const std::int64_t position = index < 0 ? index + count : index;
    if (position < 0 || position >= count)
        return std::nullopt;
    return static_cast<std::size_t>(position);
}

/// The same for a place between items, `length` included; what lies outside is cut off to the nearest end.
inline std::size_t place_of(std::int64_t index, std::size_t length) noexcept {
    const auto count = static_cast<std::int64_t>(length);
    const std::int64_t place = index < 0 ? index + count : index;
    return static_cast<std::size_t>(place < 0 ? 0 : place > count ? count : place);
}

/// The integer in `index`, or the error that says what stands there instead. A boolean is not an index.
Result<std::int64_t> read_index(const Any& index);
Any index_out_of_range(const Any& index);

}  // namespace ling::internal
