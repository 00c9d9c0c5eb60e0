#include "ling/ling.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace ling {
namespace {

struct FloatCase {
    const char* name;
    double value;
    const char* expected;
};

class FloatText : public ::testing::TestWithParam<FloatCase> {};

TEST_P(FloatText, IsShortAndRecognisable) {
    EXPECT_EQ(Float(GetParam().value).toString().toStdString(), GetParam().expected);
}

constexpr FloatCase kFloatCases[] = {
    {"Zero", 0.0, "0.0"},
    {"NegativeZero", -0.0, "-0.0"},
    {"Whole", 2.0, "2.0"},
    {"Tenth", 0.1, "0.1"},
    {"Sum", 0.1 + 0.2, "0.30000000000000004"},
    {"Negative", -12.5, "-12.5"},
    {"SmallestPlain", 0.0001, "0.0001"},
    {"BelowPlain", 0.00001, "1e-05"},
    {"LargestPlain", 9999999999999998.0, "9999999999999998.0"},
    {"AbovePlain", 1e16, "1e+16"},
    {"Digits17", 1.2345678901234567e17, "1.2345678901234566e+17"},
    {"Huge", 1e300, "1e+300"},
    {"Largest", std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
    {"SmallestOfAll", std::numeric_limits<double>::denorm_min(), "5e-324"},
    {"Infinity", std::numeric_limits<double>::infinity(), "inf"},
    {"NegativeInfinity", -std::numeric_limits<double>::infinity(), "-inf"},
    {"NaN", std::numeric_limits<double>::quiet_NaN(), "nan"},
};
INSTANTIATE_TEST_SUITE_P(Rows, FloatText, ::testing::ValuesIn(kFloatCases),
                         [](const auto& row) { return row.param.name; });

TEST(Casts, TakeTheirKindAlone) {
    EXPECT_TRUE(Boolean::cast(true)->value());
    EXPECT_FALSE(Boolean::cast(1));
    EXPECT_EQ(Integer::cast(INT64_MIN)->value(), INT64_MIN);
    EXPECT_FALSE(Integer::cast(true));
    EXPECT_FALSE(Integer::cast(1.0));
    EXPECT_FALSE(Integer::cast(Any()));
    EXPECT_FALSE(Boolean::cast(Undefined()));
    EXPECT_EQ(unchecked<Error>(Integer::cast(1.5).error()).message().toStdString(),
              "Unable to cast a value of class 'ling.Float' to 'ling.Integer'.");
}

TEST(Casts, FloatTakesIntegers) {
    EXPECT_EQ(Float::cast(2.5)->value(), 2.5);
    EXPECT_EQ(Float::cast(3)->value(), 3.0);
    EXPECT_FALSE(Float::cast(true));
    EXPECT_FALSE(Float::cast(String(u"1")));
}

}  // namespace
}  // namespace ling
