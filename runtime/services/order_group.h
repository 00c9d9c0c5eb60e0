#pragma once

#include "ling/any.h"

#include <cstdint>
#include <utility>

namespace ling::internal {

/// What a value counts as when it is compared. Values of different groups are ordered as the groups are.
enum class order_group : std::uint8_t {
    None,
    Undefined,
    Boolean,
    Number,
    Text,
    Bytes,
    Tuple,
    List,
    Map,
    Set,
    Function,
    Class,
    Object,  ///< Everything else: boxes, dates, errors, instances of any class.
};

/// The group of a value that is neither lazy, external nor weak.
order_group order_group_of(const Any& value) noexcept;

/// The order of two different objects of which nothing is known but that they are two: by group, then by class, then by
/// place in memory. It holds as long as both live.
int compare_identity(const Any& a, const Any& b) noexcept;

/// What a value is told from others by, whatever it holds. Two stand-ins for one object of a guest are one here.
std::pair<std::uint64_t, Kind> identity_key(const Any& value) noexcept;

/// The order of two functions, by what they are known by. Zero for a method of one object that was bound twice.
int compare_functions(const Any& a, const Any& b) noexcept;

}  // namespace ling::internal
