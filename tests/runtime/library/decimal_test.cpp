#include "ling/ling.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace ling {
namespace {

Decimal decimal(std::string_view text) {
    const Any parsed = Decimal::fromString(String(text));
    EXPECT_TRUE(Decimal::cast(parsed)) << text;
    return unchecked<Decimal>(parsed);
}

/// The text of a result, or the message of the error in its place.
std::string textOf(const Any& result) {
    if (Result<Decimal> number = Decimal::cast(result))
        return number->toString().toStdString();
    return Error::cast(result)->message().toStdString();
}

struct TextCase {
    const char* name;
    const char* text;
    const char* expected;
    const char* digits;
    std::int64_t exponent;
};

class DecimalText : public ::testing::TestWithParam<TextCase> {};

TEST_P(DecimalText, KeepsWhatIsWritten) {
    const TextCase& row = GetParam();
    const Decimal number = decimal(row.text);
    EXPECT_EQ(number.toString().toStdString(), row.expected);
    EXPECT_EQ(number.digits(), row.digits);
    EXPECT_EQ(number.exponent(), row.exponent);
    const Decimal again = decimal(row.expected);
    EXPECT_EQ(again.digits(), number.digits());
    EXPECT_EQ(again.exponent(), number.exponent());
    EXPECT_EQ(again.isNegative(), number.isNegative());
}

constexpr TextCase kTextCases[] = {
    {"Zero", "0", "0", "0", 0},
    {"NegativeZero", "-0", "-0", "0", 0},
    {"ZeroWithPlaces", "0.00", "0.00", "0", -2},
    {"ZeroWithExponent", "0E+5", "0E+5", "0", 5},
    {"TinyZero", "0E-7", "0E-7", "0", -7},
    {"TrailingZero", "1.10", "1.10", "110", -2},
    {"Plus", "+7", "7", "7", 0},
    {"LeadingZeros", "-00012.50", "-12.50", "1250", -2},
    {"PointFirst", ".5", "0.5", "5", -1},
    {"PointLast", "5.", "5", "5", 0},
    {"Exponent", "1E+5", "1E+5", "1", 5},
    {"SmallLetter", "1e5", "1E+5", "1", 5},
    {"ExponentOfSeveral", "123E+2", "1.23E+4", "123", 2},
    {"LastPlainSmall", "0.000001", "0.000001", "1", -6},
    {"FirstScientificSmall", "0.0000001", "1E-7", "1", -7},
    {"ScientificSmall", "0.00000123", "0.00000123", "123", -8},
    {"NegativeExponent", "12E-1", "1.2", "12", -1},
    {"ThirtyDigits", "123456789012345678901234567890.12345", "123456789012345678901234567890.12345",
     "12345678901234567890123456789012345", -5},
    {"HugeExponent", "1E+999999999", "1E+999999999", "1", 999999999},
    {"TinyExponent", "-1.5E-999999999999", "-1.5E-999999999999", "15", -1000000000000},
    {"LargestExponent", "1E+1000000000000000000", "1E+1000000000000000000", "1", 1000000000000000000},
    {"ZerosInExponent", "1E+000000000000000000000000000005", "1E+5", "1", 5},
    {"Infinity", "inf", "Infinity", "", 0},
    {"NegativeInfinity", "-INFINITY", "-Infinity", "", 0},
    {"NaN", "nan", "NaN", "", 0},
    {"Payload", "-NaN0012", "-NaN12", "12", 0},
    {"Signaling", "sNaN", "sNaN", "", 0},
};
INSTANTIATE_TEST_SUITE_P(Rows, DecimalText, ::testing::ValuesIn(kTextCases),
                         [](const auto& row) { return row.param.name; });

TEST(DecimalText, RefusesEverythingElse) {
    for (const char* text : {"",
                             "-",
                             ".",
                             "E5",
                             "1E",
                             "1E+",
                             "1.2.3",
                             "--1",
                             "+-1",
                             " 1",
                             "1 ",
                             "1_0",
                             "0x10",
                             "abc",
                             "infinit",
                             "nanx",
                             "1E+1000000000000000001",
                             "1E+99999999999999999999",
                             "0.1E-1000000000000000000",
                             "\u0661"})
        EXPECT_EQ(textOf(Decimal::fromString(text)), std::string("Invalid decimal: '") + text + "'.");
    const String withNul(std::u16string_view(u"1\0", 2));
    EXPECT_EQ(Error::cast(Decimal::fromString(withNul))->message(), String(u"Invalid decimal: '{}'.").arg(withNul));
}

struct SumCase {
    const char* name;
    const char* a;
    const char* b;
    const char* sum;
    const char* difference;
    const char* product;
};

class DecimalArithmetic : public ::testing::TestWithParam<SumCase> {};

TEST_P(DecimalArithmetic, IsExact) {
    const SumCase& row = GetParam();
    const Decimal a = decimal(row.a);
    const Decimal b = decimal(row.b);
    EXPECT_EQ(textOf(a.plus(b)), row.sum);
    EXPECT_EQ(textOf(b.plus(a)), row.sum);
    EXPECT_EQ(textOf(a.minus(b)), row.difference);
    EXPECT_EQ(textOf(a.times(b)), row.product);
}

constexpr const char* kTooLong = "The result of decimal arithmetic has too many digits.";
constexpr const char* kNotFinite = "The operands of decimal arithmetic must be finite.";
constexpr SumCase kSumCases[] = {
    {"Places", "1.10", "2.2", "3.30", "-1.10", "2.420"},
    {"ToZero", "1.5", "-1.5", "0.0", "3.0", "-2.25"},
    {"NegativeZeros", "-0", "-0", "-0", "0", "0"},
    {"MixedZeros", "0", "-0", "0", "0", "-0"},
    {"Carry", "99999999999999999999999999999999", "1", "100000000000000000000000000000000",
     "99999999999999999999999999999998", "99999999999999999999999999999999"},
    {"Exponents", "1E+3", "1E-3", "1000.001", "999.999", "1"},
    {"ZeroAndHuge", "1E+999999999", "0", "1E+999999999", "1E+999999999", "0E+999999999"},
    {"ZeroOfSmallExponent", "1E+5", "0.00", "100000.00", "100000.00", "0E+3"},
    {"ZeroOfHugeExponent", "0E+999999999", "1.5", "1.5", "-1.5", "0E+999999998"},
    {"TooFarApart", "1E+999999999", "1", kTooLong, kTooLong, "1E+999999999"},
    {"Infinity", "Infinity", "1", kNotFinite, kNotFinite, kNotFinite},
    {"NaN", "1", "NaN", kNotFinite, kNotFinite, kNotFinite},
};
INSTANTIATE_TEST_SUITE_P(Rows, DecimalArithmetic, ::testing::ValuesIn(kSumCases),
                         [](const auto& row) { return row.param.name; });

TEST(DecimalArithmetic, EndsWhereExponentsEnd) {
    const Decimal largest = decimal("1E+1000000000000000000");
    const char* outOfRange = "The exponent of a decimal result is out of range.";
    EXPECT_EQ(textOf(largest.times(largest)), outOfRange);
    EXPECT_EQ(textOf(largest.dividedBy(decimal("1E-1000000000000000000"))), outOfRange);
    const Decimal longest = decimal(std::string(600'000, '7'));
    EXPECT_EQ(textOf(longest.times(longest)), kTooLong);
    EXPECT_EQ(unchecked<Decimal>(longest.plus(longest)).digits().size(), 600'001u);
}

struct QuotientCase {
    const char* name;
    const char* a;
    const char* b;
    const char* quotient;
};

class DecimalQuotient : public ::testing::TestWithParam<QuotientCase> {};

TEST_P(DecimalQuotient, IsExactOrRoundedHalfToEven) {
    EXPECT_EQ(textOf(decimal(GetParam().a).dividedBy(decimal(GetParam().b))), GetParam().quotient);
}

constexpr QuotientCase kQuotientCases[] = {
    {"Down", "1", "3", "0.3333333333333333333333333333"},
    {"Up", "-2", "3", "-0.6666666666666666666666666667"},
    {"Exact", "1", "4", "0.25"},
    {"IdealExponent", "600", "3", "200"},
    {"Places", "1.10", "1.1", "1.0"},
    {"KeepsExponent", "1E+3", "1", "1E+3"},
    {"FillsUpToIdeal", "1", "1E+2", "0.01"},
    {"HalfToEvenUp", "99999999999999999999999999995", "10", "1.000000000000000000000000000E+28"},
    {"HalfToEvenDown", "99999999999999999999999999985", "10", "9999999999999999999999999998"},
    {"JustAboveHalf", "1000000000000000000000000000050000000000000000000000000000001", "1E+33",
     "1000000000000000000000000000"},
    {"JustAboveHalfOfLastDigit", "10000000000000000000000000005000000000000000000000000000001", "1E+31",
     "1000000000000000000000000001"},
    {"LongDividend", "12345678901234567890123456789012345", "1", "1.234567890123456789012345679E+34"},
    {"Zero", "0", "-5", "-0"},
    {"ZeroExponent", "0.00", "4", "0.00"},
    {"Absurd", "1", "1E+999999999", "1E-999999999"},
    {"ByZero", "1", "-0.0", "Division by zero."},
    {"ZeroByZero", "0", "0", "Division by zero."},
    {"ByInfinity", "1", "Infinity", kNotFinite},
};
INSTANTIATE_TEST_SUITE_P(Rows, DecimalQuotient, ::testing::ValuesIn(kQuotientCases),
                         [](const auto& row) { return row.param.name; });

/// In their order; the texts of a row are equal.
const std::vector<std::vector<const char*>> kOrder = {
    {"-Infinity"},
    {"-1E+999999999", "-10E+999999998"},
    {"-100.001"},
    {"-100", "-1E+2", "-100.0"},
    {"-1E-999999999"},
    {"0", "-0", "0.00", "0E+999999999"},
    {"1E-999999999"},
    {"0.1"},
    {"0.1000000000000000055511151231257827021181583404541015625"},
    {"1.1", "1.10", "11E-1"},
    {"9", "9.0"},
    {"10", "1E+1"},
    {"9007199254740993"},
    {"1E+999999999"},
    {"Infinity"},
    {"NaN", "-NaN", "NaN7", "sNaN"},
};

TEST(DecimalOrder, GoesByValue) {
    for (std::size_t i = 0; i < kOrder.size(); ++i)
        for (std::size_t j = 0; j < kOrder.size(); ++j)
            for (const char* a : kOrder[i])
                for (const char* b : kOrder[j]) {
                    const int expected = i < j ? -1 : i > j ? 1 : 0;
                    ASSERT_EQ(decimal(a).compare(decimal(b)), expected) << a << " and " << b;
                    if (expected == 0) {
                        ASSERT_EQ(decimal(a).hash(), decimal(b).hash()) << a << " and " << b;
                    }
                }
}

TEST(DecimalOrder, TakesAFloatForTheFractionThatItIs) {
    EXPECT_EQ(decimal("0.1").compare(0.1), -1);
    EXPECT_EQ(decimal("0.1000000000000000055511151231257827021181583404541015625").compare(0.1), 0);
    EXPECT_EQ(decimal("9007199254740993").compare(9007199254740992.0), 1);
    EXPECT_EQ(decimal("-0").compare(0.0), 0);
    EXPECT_EQ(decimal("1E+999999999").compare(std::numeric_limits<double>::max()), 1);
    EXPECT_EQ(decimal("1E-999999999").compare(std::numeric_limits<double>::denorm_min()), -1);
    EXPECT_EQ(decimal("1E+999999999").compare(std::numeric_limits<double>::infinity()), -1);
    EXPECT_EQ(decimal("-Infinity").compare(-std::numeric_limits<double>::infinity()), 0);
    EXPECT_EQ(decimal("Infinity").compare(std::numeric_limits<double>::quiet_NaN()), -1);
    EXPECT_EQ(decimal("NaN").compare(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(DecimalOrder, TakesIntegersExactly) {
    EXPECT_EQ(decimal("9007199254740993").compare(9007199254740993), 0);
    EXPECT_EQ(decimal("9007199254740993.1").compare(9007199254740993), 1);
    EXPECT_EQ(decimal("-9223372036854775808").compare(INT64_MIN), 0);
    EXPECT_EQ(Decimal(INT64_MIN).toString(), String(u"-9223372036854775808"));
}

struct HashCase {
    const char* name;
    const char* text;
    Any number;
};

class NumberHash : public ::testing::TestWithParam<HashCase> {};

TEST_P(NumberHash, IsTheSameForEqualNumbersOfAllKinds) {
    EXPECT_EQ(decimal(GetParam().text).hash(), hash_of(GetParam().number));
}

const HashCase kHashCases[] = {
    {"Zero", "0", 0},
    {"NegativeZero", "-0.0", -0.0},
    {"One", "1.00", 1},
    {"Negative", "-12", -12},
    {"Prime", "2305843009213693951", 2305843009213693951},
    {"LargestInteger", "9223372036854775807", INT64_MAX},
    {"SmallestInteger", "-9223372036854775808", INT64_MIN},
    {"Half", "0.5", 0.5},
    {"Tenth", "0.1000000000000000055511151231257827021181583404541015625", 0.1},
    {"NegativeFraction", "-2.75", -2.75},
    {"Large", "1E+22", 1e22},
    {"PowerOfTwo", "1267650600228229401496703205376", 0x1p100},
    {"SmallPowerOfTwo", "7.8886090522101180541172856528278622967320643510902300477027893066406250E-31", 0x1p-100},
    {"Infinity", "Infinity", std::numeric_limits<double>::infinity()},
    {"NegativeInfinity", "-Infinity", -std::numeric_limits<double>::infinity()},
    {"NaN", "NaN", std::numeric_limits<double>::quiet_NaN()},
};
INSTANTIATE_TEST_SUITE_P(Rows, NumberHash, ::testing::ValuesIn(kHashCases),
                         [](const auto& row) { return row.param.name; });

TEST(Decimal, OperatorsTakeDecimalsAndIntegers) {
    const Decimal number = decimal("1.5");
    EXPECT_EQ(textOf(number.callMethod(Any::$__add__, {decimal("0.5")})), "2.0");
    EXPECT_EQ(textOf(number.callMethod(Any::$__sub__, {2})), "-0.5");
    EXPECT_EQ(textOf(number.callMethod(Any::$__mul__, {2})), "3.0");
    EXPECT_EQ(textOf(number.callMethod(Any::$__div__, {0})), "Division by zero.");
    EXPECT_EQ(textOf(number.callMethod(Any::$__add__, {0.5})),
              "Unable to make a decimal from a value of class 'ling.Float'.");
    EXPECT_EQ(display(number), String(u"1.5"));
    EXPECT_EQ(compare_objects(number, 1.5), 0);
    EXPECT_EQ(compare_objects(1, number), -1);
}

}  // namespace
}  // namespace ling
