#pragma once

#include "library/decimal_number.h"
#include "ling/result.h"

namespace ling::internal {

/// Operations on finite decimals; anything else is refused. An operation whose result would have more than a million
/// digits, as the exact sum of 1E+999999999 and 1 has, or an exponent beyond all bounds, gives an error result.
Result<decimal_number> add_decimals(const decimal_number& a, const decimal_number& b);
Result<decimal_number> subtract_decimals(const decimal_number& a, const decimal_number& b);
Result<decimal_number> multiply_decimals(const decimal_number& a, const decimal_number& b);
/// Exact where 28 digits are enough, with as many zeros at the end as the operands' exponents ask for; otherwise
/// rounded to the nearest, and half way to the even digit.
Result<decimal_number> divide_decimals(const decimal_number& a, const decimal_number& b);

}  // namespace ling::internal
