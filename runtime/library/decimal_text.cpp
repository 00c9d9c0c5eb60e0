#include "library/decimal_number.h"

#include <algorithm>
#include <charconv>

/// Decimals from text and to text.

namespace ling::internal {

namespace {

bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }

/// Reads a text from its beginning. Each step answers whether it found what it looks for.
class decimal_reader {
public:
    explicit decimal_reader(std::u16string_view text) : rest_(text) {}

    std::optional<decimal_number> read() {
        if (!takeUnit(u'+'))
            number_.negative = takeUnit(u'-');
        if (!(takeSpecial() || takeFinite()) || !rest_.empty())
            return std::nullopt;
        return number_;
    }

private:
    bool takeUnit(char16_t unit) {
        const bool found = rest_.starts_with(unit);
        rest_.remove_prefix(found ? 1 : 0);
        return found;
    }

    /// `word` is in lower case; the text may be in any.
    bool takeWord(std::u16string_view word) {
        const auto isSame = [](char16_t letter, char16_t unit) {
            return unit == letter || (unit >= u'A' && unit <= u'Z' && unit + 32 == letter);
        };
        if (rest_.size() < word.size() || !std::equal(word.begin(), word.end(), rest_.begin(), isSame))
            return false;
        rest_.remove_prefix(word.size());
        return true;
    }

    std::string takeDigits() {
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), isDigit);
        std::string digits(rest_.begin(), end);
        rest_.remove_prefix(digits.size());
        return digits;
    }

    bool takeSpecial() {
        if (takeWord(u"infinity") || takeWord(u"inf"))
            number_.form = DecimalForm::Infinite;
        else if (takeWord(u"nan"))
            number_.form = DecimalForm::NaN;
        else if (takeWord(u"snan"))
            number_.form = DecimalForm::SignalingNaN;
        else
            return false;
        number_.digits.clear();
        if (number_.isNaN())
            number_.digits = withoutLeadingZeros(takeDigits());
        return true;
    }

    bool takeFinite() {
        std::string digits = takeDigits();
        std::string fraction = takeUnit(u'.') ? takeDigits() : "";
        digits += fraction;
        if (digits.empty() || !takeExponent())
            return false;
        number_.exponent -= static_cast<std::int64_t>(fraction.size());
        number_.digits = withoutLeadingZeros(std::move(digits));
        if (number_.digits.empty())
            number_.digits.push_back('0');
        return number_.exponent >= -kLargestExponent && number_.exponent <= kLargestExponent;
    }

    bool takeExponent() {
        if (!takeUnit(u'e') && !takeUnit(u'E'))
            return true;
        const bool negative = !takeUnit(u'+') && takeUnit(u'-');
        const std::string digits = takeDigits();
        if (digits.empty())
            return false;
        // Digits behind the point move the exponent, so the bound proper is looked at afterwards.
        std::int64_t exponent = 0;
        const auto outcome = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
        if (outcome.ec != std::errc() || exponent > 2 * kLargestExponent)
            return false;
        number_.exponent = negative ? -exponent : exponent;
        return true;
    }

    static std::string withoutLeadingZeros(std::string digits) {
        digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
        return digits;
    }

    std::u16string_view rest_;
    decimal_number number_;
};

const char* specialName(DecimalForm form) noexcept {
    switch (form) {
        case DecimalForm::Infinite:
            return "Infinity";
        case DecimalForm::NaN:
            return "NaN";
        case DecimalForm::SignalingNaN:
            return "sNaN";
        case DecimalForm::Finite:
            break;
    }
    return "";
}

/// At most this many zeros stand between the point and the first digit; a smaller number is given an exponent.
constexpr std::int64_t kMostZerosAfterPoint = 5;

}  // namespace

std::optional<decimal_number> parse_decimal(std::u16string_view text) { return decimal_reader(text).read(); }

std::string format_decimal(const decimal_number& number) {
    std::string text = number.negative ? "-" : "";
    if (!number.isFinite())
        return text.append(specialName(number.form)).append(number.digits);
    const auto count = static_cast<std::int64_t>(number.digits.size());
    const std::int64_t wholeDigits = count + number.exponent;  // Digits before the point, if it were written in full.
    const bool plain = number.exponent <= 0 && wholeDigits >= -kMostZerosAfterPoint;
    const std::int64_t point = plain ? wholeDigits : 1;
    if (point <= 0)
        text.append("0.").append(static_cast<std::size_t>(-point), '0').append(number.digits);
    else
        text.append(number.digits, 0, static_cast<std::size_t>(point));
    if (point > 0 && point < count)
        text.append(".").append(number.digits, static_cast<std::size_t>(point));
    if (!plain) {
        const std::int64_t exponent = wholeDigits - 1;
        text.append(exponent < 0 ? "E" : "E+").append(std::to_string(exponent));
    }
    return text;
}

}  // namespace ling::internal
