#include "library/decimal_arithmetic.h"

#include "library/big_integer.h"
#include "ling/error.h"

#include <algorithm>

namespace ling::internal {

namespace {

constexpr std::int64_t kMostDigits = 1'000'000;
constexpr std::int64_t kQuotientDigits = 28;

Result<decimal_number> refused(const char16_t* message) {
    return Result<decimal_number>::failure(failure(String(message)));
}
Result<decimal_number> refusedOperands() { return refused(u"The operands of decimal arithmetic must be finite."); }
Result<decimal_number> refusedSize() { return refused(u"The result of decimal arithmetic has too many digits."); }

Result<decimal_number> checked(decimal_number number) {
    if (number.exponent < -kLargestExponent || number.exponent > kLargestExponent)
        return refused(u"The exponent of a decimal result is out of range.");
    return number;
}

std::int64_t countOf(const decimal_number& number) noexcept { return static_cast<std::int64_t>(number.digits.size()); }

big_integer powerOfTen(std::int64_t exponent) { return big_integer::power(10, static_cast<std::uint64_t>(exponent)); }

/// The digits of `number` as a signed integer, scaled by a smaller exponent than its own.
big_integer scaled(const decimal_number& number, std::int64_t exponent) {
    big_integer value(number.digits);
    if (!number.isZero() && number.exponent != exponent)
        value.multiply(powerOfTen(number.exponent - exponent));
    if (number.negative)
        value.negate();
    return value;
}

/// With the larger exponent in `high`.
Result<decimal_number> addAligned(const decimal_number& high, const decimal_number& low) {
    const std::int64_t width = high.isZero() ? 1 : countOf(high) + high.exponent - low.exponent;
    if (std::max(width, countOf(low)) > kMostDigits)
        return low.isZero() ? Result<decimal_number>(high) : refusedSize();
    big_integer sum = scaled(high, low.exponent);
    sum.add(scaled(low, low.exponent));
    decimal_number result;
    // A sum of nothing is negative only when both its parts are.
    result.negative = sum.isZero() ? high.negative && low.negative : sum.isNegative();
    result.digits = sum.digits();
    result.exponent = low.exponent;
    return result;
}

/// Leaves the 28 digits that count: rounds away the rest, half way to even.
void roundQuotient(decimal_number& quotient) {
    const std::int64_t excess = countOf(quotient) - kQuotientDigits;
    if (excess <= 0)
        return;
    const auto kept = static_cast<std::size_t>(kQuotientDigits);
    const std::string_view rest = std::string_view(quotient.digits).substr(kept);
    const bool exactlyHalf = rest.front() == '5' && rest.find_first_not_of('0', 1) == std::string_view::npos;
    const bool odd = (quotient.digits[kept - 1] - '0') % 2 != 0;
    const bool up = exactlyHalf ? odd : rest.front() >= '5';
    quotient.digits.resize(kept);
    quotient.exponent += excess;
    if (!up)
        return;
    big_integer digits(quotient.digits);
    digits.add(1);
    quotient.digits = digits.digits();
    if (countOf(quotient) > kQuotientDigits) {  // 99...9 has become 100...0.
        quotient.digits.pop_back();
        ++quotient.exponent;
    }
}

/// Takes zeros off the end until the exponent is the one that the operands ask for.
void approachExponent(decimal_number& quotient, std::int64_t ideal) {
    while (quotient.exponent < ideal && quotient.digits.size() > 1 && quotient.digits.back() == '0') {
        quotient.digits.pop_back();
        ++quotient.exponent;
    }
}

/// Of finite operands, with a divisor that is not zero and a dividend that is not either.
decimal_number quotientOf(const decimal_number& a, const decimal_number& b) {
    // So many places more that the quotient has a digit more than is kept: the rest decides about the rounding.
    const std::int64_t shift = countOf(b) - countOf(a) + kQuotientDigits + 1;
    big_integer value(a.digits);
    big_integer divisor(b.digits);
    (shift >= 0 ? value : divisor).multiply(powerOfTen(shift >= 0 ? shift : -shift));
    const bool exact = value.divide(divisor).isZero();
    // A remainder must not be lost in a digit that looks as if it were exactly half way.
    if (!exact && value.isMultipleOf(5))
        value.add(1);
    decimal_number quotient;
    quotient.digits = value.digits();
    quotient.exponent = a.exponent - b.exponent - shift;
    if (exact)
        approachExponent(quotient, a.exponent - b.exponent);
    roundQuotient(quotient);
    return quotient;
}

}  // namespace

Result<decimal_number> add_decimals(const decimal_number& a, const decimal_number& b) {
    if (!a.isFinite() || !b.isFinite())
        return refusedOperands();
    return a.exponent >= b.exponent ? addAligned(a, b) : addAligned(b, a);
}

Result<decimal_number> subtract_decimals(const decimal_number& a, const decimal_number& b) {
    decimal_number negated = b;
    negated.negative = !b.negative;
    return add_decimals(a, negated);
}

Result<decimal_number> multiply_decimals(const decimal_number& a, const decimal_number& b) {
    if (!a.isFinite() || !b.isFinite())
        return refusedOperands();
    if (countOf(a) + countOf(b) > kMostDigits)
        return refusedSize();
    big_integer product(a.digits);
    product.multiply(big_integer(b.digits));
    decimal_number result;
    result.negative = a.negative != b.negative;
    result.digits = product.digits();
    result.exponent = a.exponent + b.exponent;
    return checked(std::move(result));
}

Result<decimal_number> divide_decimals(const decimal_number& a, const decimal_number& b) {
    if (!a.isFinite() || !b.isFinite())
        return refusedOperands();
    if (b.isZero())
        return refused(u"Division by zero.");
    decimal_number quotient;
    if (a.isZero())
        quotient.exponent = a.exponent - b.exponent;
    else
        quotient = quotientOf(a, b);
    quotient.negative = a.negative != b.negative;
    return checked(std::move(quotient));
}

}  // namespace ling::internal
