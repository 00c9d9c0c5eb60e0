#pragma once

#include <cstdint>

/// Hashes of numbers. Equal numbers hash alike, whatever their kind: the hash of a rational number is its remainder
/// modulo the prime 2^61 - 1, where division is multiplication by the inverse, with its bits mixed: those of fractions
/// of a power of two differ in the highest bits alone. The hash of -x is minus that of x.

namespace ling::internal {

inline constexpr std::uint64_t kHashPrime = (std::uint64_t{1} << 61) - 1;
inline constexpr std::int64_t kHashOfInfinity = 314159;
inline constexpr std::int64_t kHashOfNaN = 271828;

/// Products and powers of remainders.
std::uint64_t hash_product(std::uint64_t a, std::uint64_t b) noexcept;
std::uint64_t hash_power(std::uint64_t base, std::uint64_t exponent) noexcept;

/// The hash of the number that leaves this remainder.
std::int64_t hash_of_remainder(std::uint64_t remainder, bool negative) noexcept;

std::int64_t hash_integer(std::int64_t value) noexcept;
std::int64_t hash_float(double value) noexcept;

}  // namespace ling::internal
