#pragma once

#include "ling/any.h"
#include "ling/result.h"
#include "ling/string.h"

namespace ling {

/// A decimal number, exactly as written: a sign, digits and an exponent, or an infinity, or not a number. "1.10" keeps
/// its zero and "-0" its sign in text; comparison and hashing go by value, so 1.10 equals 1.1.
class LING_EXPORT Decimal : public Any {
public:
    Decimal();  ///< 0
    explicit Decimal(std::int64_t value);

    /// Reads "1.10", "-0", "1E+5", ".5", "Infinity", "NaN", "sNaN12", with any number of digits and in any case. An
    /// error result for anything else, surrounding space included: "Invalid decimal: '{}'."
    static Any fromString(const String& text);
    /// The text by which `fromString` makes the same digits, sign and exponent again, in the form that scientific
    /// decimal notation prescribes: an exponent appears only above the digits or far below them.
    String toString() const;

    bool isFinite() const noexcept;
    bool isNaN() const noexcept;
    bool isNegative() const noexcept;  ///< True for -0.
    /// The digits without sign and point, no leading zeros ("0" for zero), and the power of ten they are scaled by. An
    /// infinity has no digits, and what is not a number those of its payload.
    std::string_view digits() const noexcept;
    std::int64_t exponent() const noexcept;

    /// Exact sums, differences and products; a quotient is rounded half to even to 28 digits. An error result for a
    /// division by zero ("Division by zero."), for operands without a finite value, and for a result of more than a
    /// million digits, as the exact sum of 1E+999999999 and 1 would be.
    Any plus(const Decimal& other) const;
    Any minus(const Decimal& other) const;
    Any times(const Decimal& other) const;
    Any dividedBy(const Decimal& other) const;
    /// Negative, zero or positive, by value. Not-a-number sorts above everything and equals itself.
    int compare(const Decimal& other) const;
    int compare(double other) const;  ///< Exact: the double is taken for the binary fraction that it is.
    template <std::integral T>
    int compare(T other) const {
        return compareWithInteger(static_cast<std::int64_t>(other));
    }
    std::int64_t hash() const;  ///< The same for equal numbers of every kind: see `hash_of`.

    static Result<Decimal> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();

private:
    explicit Decimal(Any&& value) noexcept : Any(std::move(value)) {}
    int compareWithInteger(std::int64_t other) const;
    friend struct decimal_access;
};

}  // namespace ling
