#include "values/number_hash.h"

#include "values/content_hash.h"

#include <cmath>

namespace ling::internal {

namespace {

constexpr int kBits = 61;

/// Multiplication by a power of two turns the 61 bits of a remainder round, since 2^61 is 1.
std::uint64_t turned(std::uint64_t remainder, int by) noexcept {
    return by == 0 ? remainder : ((remainder << by) & kHashPrime) | (remainder >> (kBits - by));
}

}  // namespace

std::int64_t hash_of_remainder(std::uint64_t remainder, bool negative) noexcept {
    const std::uint64_t hash = content_hash::mix(remainder, content_hash::kSecond);
    return static_cast<std::int64_t>(negative ? 0 - hash : hash);
}

std::uint64_t hash_product(std::uint64_t a, std::uint64_t b) noexcept {
    __extension__ using wide = unsigned __int128;
    const wide product = static_cast<wide>(a) * b;
    const std::uint64_t folded =
        (static_cast<std::uint64_t>(product) & kHashPrime) + static_cast<std::uint64_t>(product >> kBits);
    return folded >= kHashPrime ? folded - kHashPrime : folded;
}

std::uint64_t hash_power(std::uint64_t base, std::uint64_t exponent) noexcept {
    std::uint64_t power = 1;
    for (; exponent != 0; exponent >>= 1) {
        if ((exponent & 1) != 0)
            power = hash_product(power, base);
        base = hash_product(base, base);
    }
    return power;
}

std::int64_t hash_integer(std::int64_t value) noexcept {
    const auto bits = static_cast<std::uint64_t>(value);
    const std::uint64_t magnitude = value < 0 ? 0 - bits : bits;
    return hash_of_remainder(magnitude % kHashPrime, value < 0);
}

std::int64_t hash_float(double value) noexcept {
    if (std::isnan(value))
        return kHashOfNaN;
    if (std::isinf(value))
        return value < 0 ? -kHashOfInfinity : kHashOfInfinity;
    int exponent = 0;
    const double fraction = std::frexp(std::fabs(value), &exponent);
    const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, 53));  // Exact: a double has 53 bits.
    const int by = ((exponent - 53) % kBits + kBits) % kBits;
    return hash_of_remainder(turned(mantissa, by), value < 0);
}

}  // namespace ling::internal
