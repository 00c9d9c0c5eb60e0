#include "ling/ling.h"

#include <gtest/gtest.h>

namespace ling {
namespace {

using namespace std::string_view_literals;

TEST(ByteArray, KeepsBytesAndEndsInNul) {
    const ByteArray bytes("a\0\xFF"sv);
    EXPECT_EQ(bytes.view(), "a\0\xFF"sv);
    EXPECT_EQ(bytes.data()[3], '\0');
    EXPECT_TRUE(ByteArray().isEmpty());
    EXPECT_TRUE(ByteArray().isSameAs(ByteArray("")));
    EXPECT_EQ(ByteArray().data()[0], '\0');
}

struct LiteralCase {
    const char* name;
    std::string_view bytes;
    const char* expected;
};

class ByteArrayText : public ::testing::TestWithParam<LiteralCase> {};

TEST_P(ByteArrayText, ReadsBackInALiteral) {
    EXPECT_EQ(ByteArray(GetParam().bytes).toString().toStdString(), GetParam().expected);
}

constexpr LiteralCase kLiteralCases[] = {
    {"Empty", ""sv, ""},
    {"Plain", " az~"sv, " az~"},
    {"Quotes", "'\"\\"sv, R"(\'\"\\)"},
    {"Named", "\t\n\r"sv, R"(\t\n\r)"},
    {"Others", "\0\x1F\x7F\x80\xFF"sv, R"(\x00\x1f\x7f\x80\xff)"},
};
INSTANTIATE_TEST_SUITE_P(Rows, ByteArrayText, ::testing::ValuesIn(kLiteralCases),
                         [](const auto& row) { return row.param.name; });

TEST(ByteArray, CastTakesNothingElse) {
    EXPECT_TRUE(ByteArray::cast(ByteArray("a")));
    EXPECT_EQ(unchecked<Error>(ByteArray::cast(String(u"a")).error()).message().toStdString(),
              "Unable to cast a value of class 'ling.String' to 'ling.ByteArray'.");
}

}  // namespace
}  // namespace ling
