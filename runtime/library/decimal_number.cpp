#include "library/decimal_number.h"

#include "library/big_integer.h"
#include "values/number_hash.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace ling::internal {

decimal_number decimal_of_integer(std::int64_t value) {
    decimal_number number;
    const auto bits = static_cast<std::uint64_t>(value);
    number.negative = value < 0;
    number.digits = std::to_string(value < 0 ? 0 - bits : bits);
    return number;
}

decimal_number decimal_of_float(double value) {
    decimal_number number;
    number.negative = std::signbit(value);
    if (!std::isfinite(value)) {
        number.form = std::isnan(value) ? DecimalForm::NaN : DecimalForm::Infinite;
        number.negative = number.negative && !std::isnan(value);
        number.digits.clear();
        return number;
    }
    int exponent = 0;
    const double fraction = std::frexp(std::fabs(value), &exponent);
    big_integer mantissa(static_cast<std::uint64_t>(std::ldexp(fraction, 53)));
    exponent -= 53;
    // A half is five tenths: m / 2^n is m * 5^n / 10^n.
    if (exponent >= 0) {
        mantissa.multiply(big_integer::power(2, static_cast<std::uint64_t>(exponent)));
    } else {
        mantissa.multiply(big_integer::power(5, static_cast<std::uint64_t>(-exponent)));
        number.exponent = exponent;
    }
    number.digits = mantissa.digits();
    return number;
}

namespace {

/// The exponent that the first digit stands for.
std::int64_t magnitude(const decimal_number& number) noexcept {
    return number.exponent + static_cast<std::int64_t>(number.digits.size()) - 1;
}

constexpr std::int64_t kBeyondAnyDouble = 400;

}  // namespace

double float_of_decimal(const decimal_number& number) {
    const double sign = number.negative ? -1.0 : 1.0;
    if (number.isNaN())
        return std::numeric_limits<double>::quiet_NaN();
    if (number.form == DecimalForm::Infinite || (!number.isZero() && magnitude(number) > kBeyondAnyDouble))
        return sign * std::numeric_limits<double>::infinity();
    if (number.isZero() || magnitude(number) < -kBeyondAnyDouble)
        return sign * 0.0;
    const std::string text = number.digits + "e" + std::to_string(number.exponent);
    double value = 0;
    // The conversion leaves the value alone where it says that the number is out of range.
    if (std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc::result_out_of_range)
        value = magnitude(number) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    return sign * value;
}

std::optional<std::int64_t> integer_of_decimal(const decimal_number& number) {
    constexpr std::int64_t kDigitsOfLargest = 19;
    if (!number.isFinite())
        return std::nullopt;
    if (number.isZero() || magnitude(number) < 0)
        return 0;
    if (magnitude(number) >= kDigitsOfLargest)
        return std::nullopt;
    std::string text = number.negative ? "-" : "";
    text.append(number.digits, 0, static_cast<std::size_t>(magnitude(number) + 1));
    if (number.exponent > 0)
        text.append(static_cast<std::size_t>(number.exponent), '0');
    std::int64_t value = 0;
    const auto outcome = std::from_chars(text.data(), text.data() + text.size(), value);
    return outcome.ec == std::errc() ? std::optional(value) : std::nullopt;
}

namespace {

/// -1, 0 or 1 for digits that begin at the same power of ten: the shorter ones go on with zeros.
int compareDigits(std::string_view a, std::string_view b) noexcept {
    const std::size_t common = std::min(a.size(), b.size());
    if (const int order = a.substr(0, common).compare(b.substr(0, common)); order != 0)
        return order < 0 ? -1 : 1;
    const auto isMore = [common](std::string_view digits) {
        return digits.find_first_not_of('0', common) != std::string_view::npos;
    };
    return (isMore(a) ? 1 : 0) - (isMore(b) ? 1 : 0);
}

int compareMagnitudes(const decimal_number& a, const decimal_number& b) noexcept {
    if (magnitude(a) != magnitude(b))
        return magnitude(a) < magnitude(b) ? -1 : 1;
    return compareDigits(a.digits, b.digits);
}

/// Where a number lies on the line: -2 and 2 for the infinities, 3 for what is not a number.
int region(const decimal_number& number) noexcept {
    if (number.isNaN())
        return 3;
    const int side = number.isZero() ? 0 : number.isFinite() ? 1 : 2;
    return number.negative ? -side : side;
}

}  // namespace

int compare_decimals(const decimal_number& a, const decimal_number& b) noexcept {
    if (region(a) != region(b))
        return region(a) < region(b) ? -1 : 1;
    switch (region(a)) {
        case 1:
            return compareMagnitudes(a, b);
        case -1:
            return compareMagnitudes(b, a);
        default:
            return 0;
    }
}

std::int64_t hash_decimal(const decimal_number& number) noexcept {
    if (number.isNaN())
        return kHashOfNaN;
    if (!number.isFinite())
        return number.negative ? -kHashOfInfinity : kHashOfInfinity;
    std::uint64_t remainder = 0;
    for (const char digit : number.digits)
        remainder = (hash_product(remainder, 10) + static_cast<unsigned>(digit - '0')) % kHashPrime;
    // Powers repeat after prime - 1 steps, so that a negative power is a positive one too.
    const auto period = static_cast<std::int64_t>(kHashPrime - 1);
    const std::int64_t exponent = (number.exponent % period + period) % period;
    remainder = hash_product(remainder, hash_power(10, static_cast<std::uint64_t>(exponent)));
    return hash_of_remainder(remainder, number.negative);
}

}  // namespace ling::internal
