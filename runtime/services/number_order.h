#pragma once

#include "ling/any.h"

#include <cstdint>

namespace ling::internal {

/// True for integers, floats and decimals. A boolean is not a number, and an instance of a class derived from `Decimal`
/// answers for itself.
bool is_number(const Any& value) noexcept;

/// The order of two numbers by their exact values, whatever their kinds. Not-a-number, of whichever kind and bits, is
/// equal to itself and above everything else, so that numbers can be sorted.
int compare_numbers(const Any& a, const Any& b);

/// Equal numbers have equal hashes.
std::int64_t hash_number(const Any& value);

}  // namespace ling::internal
