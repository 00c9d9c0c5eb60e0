#include "runtime/support/values.h"

/// Decimals, dates and times.

namespace ling::testing {
namespace {

Decimal decimal(std::string_view text) {
    const Any parsed = Decimal::fromString(String(text));
    EXPECT_TRUE(Decimal::cast(parsed)) << text;
    return unchecked<Decimal>(parsed);
}

constexpr struct TextCase {
    const char* name;
    const char* text;
    const char* expected;
    const char* digits;
    std::int64_t exponent;
} kTextCases[] = {
    {"Zero", "0", "0", "0", 0},
    {"NegativeZero", "-0", "-0", "0", 0},
    {"TinyZero", "0E-7", "0E-7", "0", -7},
    {"TrailingZero", "1.10", "1.10", "110", -2},
    {"Plus", "+7", "7", "7", 0},
    {"LeadingZeros", "-00012.50", "-12.50", "1250", -2},
    {"PointFirst", ".5", "0.5", "5", -1},
    {"Exponent", "1E+5", "1E+5", "1", 5},
    {"LastPlainSmall", "0.000001", "0.000001", "1", -6},
    {"FirstScientificSmall", "0.0000001", "1E-7", "1", -7},
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
LING_TABLE(DecimalText, ::testing::Test, kTextCases);

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
        EXPECT_EQ(plain(Decimal::fromString(text)), std::string("Invalid decimal: '") + text + "'.");
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
LING_TABLE(DecimalArithmetic, ::testing::Test, kSumCases);

TEST_P(DecimalArithmetic, IsExact) {
    const SumCase& row = GetParam();
    const Decimal a = decimal(row.a);
    const Decimal b = decimal(row.b);
    EXPECT_EQ(plain(a.plus(b)), row.sum);
    EXPECT_EQ(plain(b.plus(a)), row.sum);
    EXPECT_EQ(plain(a.minus(b)), row.difference);
    EXPECT_EQ(plain(a.times(b)), row.product);
}

TEST(DecimalArithmetic, EndsWhereExponentsEnd) {
    const Decimal largest = decimal("1E+1000000000000000000");
    const char* outOfRange = "The exponent of a decimal result is out of range.";
    EXPECT_EQ(plain(largest.times(largest)), outOfRange);
    EXPECT_EQ(plain(largest.dividedBy(decimal("1E-1000000000000000000"))), outOfRange);
    const Decimal longest = decimal(std::string(600'000, '7'));
    EXPECT_EQ(plain(longest.times(longest)), kTooLong);
    EXPECT_EQ(unchecked<Decimal>(longest.plus(longest)).digits().size(), 600'001u);
}

constexpr struct QuotientCase {
    const char* name;
    const char* a;
    const char* b;
    const char* quotient;
} kQuotientCases[] = {
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
LING_TABLE(DecimalQuotient, ::testing::Test, kQuotientCases);

TEST_P(DecimalQuotient, IsExactOrRoundedHalfToEven) {
    EXPECT_EQ(plain(decimal(GetParam().a).dividedBy(decimal(GetParam().b))), GetParam().quotient);
}

TEST(Decimal, OperatorsTakeDecimalsAndIntegers) {
    const Decimal number = decimal("1.5");
    EXPECT_EQ(plain(number.callMethod(Any::$__add__, {decimal("0.5")})), "2.0");
    EXPECT_EQ(plain(number.callMethod(Any::$__sub__, {2})), "-0.5");
    EXPECT_EQ(plain(number.callMethod(Any::$__mul__, {2})), "3.0");
    EXPECT_EQ(plain(number.callMethod(Any::$__div__, {0})), "Division by zero.");
    EXPECT_EQ(plain(number.callMethod(Any::$__add__, {0.5})),
              "Unable to make a decimal from a value of class 'ling.Float'.");
}

TEST(Date, ExistsOrIsAnError) {
    const std::pair<Date, const char*> rows[] = {{Date(2024, 2, 29), "2024-02-29"},
                                                 {Date(2000, 2, 29), "2000-02-29"},
                                                 {Date(0, 12, 31), "0000-12-31"},
                                                 {Date(-1, 1, 31), "-000001-01-31"},
                                                 {Date(10000, 4, 30), "+010000-04-30"},
                                                 {Date(999999, 12, 31), "+999999-12-31"},
                                                 {Date(-999999, 1, 1), "-999999-01-01"},
                                                 {Date(2023, 2, 29), "Invalid date: 2023-02-29."},
                                                 {Date(1900, 2, 29), "Invalid date: 1900-02-29."},
                                                 {Date(2024, 4, 31), "Invalid date: 2024-04-31."},
                                                 {Date(2024, 0, 1), "Invalid date: 2024-00-01."},
                                                 {Date(2024, 13, 1), "Invalid date: 2024-13-01."},
                                                 {Date(2024, 1, 0), "Invalid date: 2024-01-00."},
                                                 {Date(1000000, 1, 1), "Invalid date: +1000000-01-01."},
                                                 {Date(-1000000, 1, 1), "Invalid date: -1000000-01-01."}};
    for (const auto& [date, expected] : rows)
        EXPECT_EQ(plain(date), expected);
}

TEST(Date, FieldsOfAnErrorReadAsZero) {
    const Date date(2023, 2, 30);
    EXPECT_EQ(date.year(), 0);
    EXPECT_EQ(date.month(), 0);
    EXPECT_EQ(date.day(), 0);
    EXPECT_FALSE(Date::cast(date));
}

TEST(Time, ExistsOrIsAnError) {
    const String none;
    EXPECT_EQ(plain(Time(12, 30, 15)), "12:30:15");
    EXPECT_EQ(plain(Time(0, 0, 0, 999)), "00:00:00.000000999");
    EXPECT_EQ(plain(Time(23, 59, 59, 999'999'999)), "23:59:59.999999999");
    EXPECT_EQ(plain(Time(12, 30, 15, 0, 7200, none, 0)), "12:30:15+02:00");
    EXPECT_EQ(plain(Time(12, 30, 15, 0, 0, none, 0)), "12:30:15+00:00");
    EXPECT_EQ(plain(Time(12, 30, 15, 0, -1, none, 0)), "12:30:15-00:00:01");
    EXPECT_EQ(plain(Time(12, 30, 15, 0, 86399, none, 1)), "12:30:15+23:59:59");
    EXPECT_EQ(plain(Time(24, 0, 0)), "Invalid time: 24:00:00.");
    EXPECT_EQ(plain(Time(0, 60, 0)), "Invalid time: 00:60:00.");
    EXPECT_EQ(plain(Time(0, 0, 60)), "Invalid time: 00:00:60.");
    EXPECT_EQ(plain(Time(0, 0, 0, 1'000'000'000)), "Invalid time: 00:00:00.1000000000.");
    EXPECT_EQ(plain(Time(0, 0, 0, 0, 86400, none, 0)), "Invalid time: 00:00:00+24:00.");
    EXPECT_EQ(plain(Time(0, 0, 0, 0, -86400, none, 0)), "Invalid time: 00:00:00-24:00.");
    EXPECT_EQ(plain(Time(0, 0, 0, 0, INT64_MIN, none, 0)), "Invalid time: 00:00:00-2562047788015215:30:08.");
    EXPECT_EQ(plain(Time(0, 0, 0, 0, 0, none, 2)), "Invalid time: 00:00:00+00:00, fold 2.");
}

TEST(DateTime, PassesOnTheErrorOfAPart) {
    EXPECT_EQ(plain(DateTime(Date(2024, 2, 29), Time(12, 30, 15))), "2024-02-29T12:30:15");
    EXPECT_EQ(plain(DateTime(Date(2024, 2, 30), Time(25, 0, 0))), "Invalid date: 2024-02-30.");
    const DateTime wrong(Date(2024, 2, 29), Time(25, 0, 0));
    EXPECT_EQ(plain(wrong), "Invalid time: 25:00:00.");
    EXPECT_EQ(wrong.date().year(), 0);
    EXPECT_EQ(wrong.time().hour(), 0);
}

/// Every pair of values compares as its rows do, and the values of a row are equal and hash alike.
template <class Handle>
void expectOrder(const std::vector<std::vector<Handle>>& rows) {
    for (std::size_t i = 0; i < rows.size(); ++i)
        for (std::size_t j = 0; j < rows.size(); ++j)
            for (const Handle& a : rows[i])
                for (const Handle& b : rows[j]) {
                    ASSERT_EQ(compare_objects(a, b), i < j ? -1 : i > j ? 1 : 0) << plain(a) << " and " << plain(b);
                    if (i == j) {
                        ASSERT_EQ(hash_of(a), hash_of(b)) << plain(a) << " and " << plain(b);
                    }
                }
}

TEST(DateTimeOrder, OfDatesIsThatOfDays) {
    expectOrder<Date>({{Date(-999999, 1, 1)},
                       {Date(-1, 12, 31)},
                       {Date(0, 2, 29)},
                       {Date(0, 3, 1)},
                       {Date(1999, 12, 31)},
                       {Date(2000, 1, 1), Date(2000, 1, 1)},
                       {Date(2000, 2, 29)},
                       {Date(2000, 3, 1)},
                       {Date(999999, 12, 31)}});
}

TEST(DateTimeOrder, OfTimesIsThatOfUtc) {
    const auto zoned = [](unsigned char hour, std::int64_t offset, const char* zone = "", unsigned char fold = 0) {
        return Time(hour, 0, 0, 0, offset, String(zone), fold);
    };
    expectOrder<Time>({{zoned(0, 7200)},
                       {Time(0, 0, 0)},
                       {zoned(0, 0), zoned(2, 7200)},
                       {Time(10, 0, 0)},
                       {zoned(12, 7200), zoned(10, 0), zoned(9, -3600, "X", 1)},
                       {Time(10, 0, 0, 1)},
                       {Time(12, 0, 0)},
                       {zoned(23, -3600)}});
}

TEST(DateTimeOrder, OfInstantsGoesOverMidnight) {
    const auto at = [](unsigned char day, unsigned char hour, std::int64_t offset) {
        return DateTime(Date(2024, 3, day), Time(hour, 0, 0, 0, offset, String(), 0));
    };
    expectOrder<DateTime>({{at(1, 0, 3600)},
                           {DateTime(Date(2024, 3, 1), Time(0, 0, 0))},
                           {at(1, 0, 0), at(1, 1, 3600)},
                           {at(1, 23, 0), at(2, 1, 7200)},
                           {DateTime(Date(2024, 3, 2), Time(1, 0, 0))}});
}

}  // namespace
}  // namespace ling::testing
