#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ling::internal {

enum class DecimalForm : std::uint8_t { Finite, Infinite, NaN, SignalingNaN };

/// A decimal number as it is written: a sign, digits and the power of ten they are scaled by. Zero has a sign and an
/// exponent too.
///
/// Nothing here takes longer for a large exponent: reading, writing, comparing and hashing depend on the digits alone.
struct decimal_number {
    DecimalForm form = DecimalForm::Finite;
    bool negative = false;
    std::string digits = "0";  ///< No leading zeros. For a NaN its payload, for an infinity empty.
    std::int64_t exponent = 0;

    bool isFinite() const noexcept { return form == DecimalForm::Finite; }
    bool isNaN() const noexcept { return form == DecimalForm::NaN || form == DecimalForm::SignalingNaN; }
    bool isZero() const noexcept { return isFinite() && digits == "0"; }
};

/// Exponents lie within this bound either way, so that sums and differences of a few of them fit in 64 bits.
inline constexpr std::int64_t kLargestExponent = 1'000'000'000'000'000'000;

/// Nothing when the text is not that of a decimal, or its exponent is beyond the bound.
std::optional<decimal_number> parse_decimal(std::u16string_view text);
std::string format_decimal(const decimal_number& number);

decimal_number decimal_of_integer(std::int64_t value);
decimal_number decimal_of_float(double value);  ///< Exactly the binary fraction.

/// The nearest double: infinite or zero where the number is too large or too small for one.
double float_of_decimal(const decimal_number& number);
/// The number without its fraction. Nothing when it does not fit, or is not finite.
std::optional<std::int64_t> integer_of_decimal(const decimal_number& number);

/// Negative, zero or positive. All that is not a number is equal, and above everything else.
int compare_decimals(const decimal_number& a, const decimal_number& b) noexcept;
std::int64_t hash_decimal(const decimal_number& number) noexcept;

}  // namespace ling::internal
