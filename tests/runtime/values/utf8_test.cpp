#include "runtime/support/values.h"

namespace ling {
namespace {

using namespace std::string_view_literals;

constexpr struct Utf8Case {
    const char* name;
    std::string_view bytes;
    std::u16string_view units;
    bool wellFormed;
} kUtf8Cases[] = {
    {"Empty", ""sv, u""sv, true},
    {"Nul", "a\0b"sv, u"a\0b"sv, true},
    {"LastOneByte", "\x7F"sv, u"\x7F"sv, true},
    {"FirstTwoBytes", "\xC2\x80"sv, u"\x80"sv, true},
    {"LastTwoBytes", "\xDF\xBF"sv, u"\u07FF"sv, true},
    {"FirstThreeBytes", "\xE0\xA0\x80"sv, u"\u0800"sv, true},
    {"BelowSurrogates", "\xED\x9F\xBF"sv, u"\uD7FF"sv, true},
    {"AboveSurrogates", "\xEE\x80\x80"sv, u"\uE000"sv, true},
    {"LastThreeBytes", "\xEF\xBF\xBF"sv, u"\uFFFF"sv, true},
    {"FirstFourBytes", "\xF0\x90\x80\x80"sv, u"\U00010000"sv, true},
    {"LastFourBytes", "\xF4\x8F\xBF\xBF"sv, u"\U0010FFFF"sv, true},
    {"Mixed", "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z"sv, u"a\u00E4\u20AC\U0001F600z"sv, true},
    {"LoneContinuation", "\x80"sv, u"\uFFFD"sv, false},
    {"TwoContinuations", "\x80\xBF"sv, u"\uFFFD\uFFFD"sv, false},
    {"OverlongTwo", "\xC0\xAF"sv, u"\uFFFD\uFFFD"sv, false},
    {"OverlongC1", "\xC1\xBF"sv, u"\uFFFD\uFFFD"sv, false},
    {"OverlongThree", "\xE0\x9F\xBF"sv, u"\uFFFD\uFFFD\uFFFD"sv, false},
    {"OverlongFour", "\xF0\x8F\xBF\xBF"sv, u"\uFFFD\uFFFD\uFFFD\uFFFD"sv, false},
    {"Surrogate", "\xED\xA0\x80"sv, u"\uFFFD\uFFFD\uFFFD"sv, false},
    {"BeyondLast", "\xF4\x90\x80\x80"sv, u"\uFFFD\uFFFD\uFFFD\uFFFD"sv, false},
    {"NeverALead", "\xF5\x80\xFE\xFF"sv, u"\uFFFD\uFFFD\uFFFD\uFFFD"sv, false},
    {"TwoOfThree", "\xE2\x82"sv, u"\uFFFD"sv, false},
    {"OneOfFour", "\xF0"sv, u"\uFFFD"sv, false},
    {"TwoOfFour", "\xF0\x9F"sv, u"\uFFFD"sv, false},
    {"ThreeOfFour", "\xF0\x9F\x98"sv, u"\uFFFD"sv, false},
    {"BrokenOffByAscii", "\xE2\x82z"sv, u"\uFFFDz"sv, false},
    {"BrokenOffByLead", "\xF0\x9F\x98\xC3\xA4"sv, u"\uFFFD\u00E4"sv, false},
    {"AfterWellFormed", "\xC3\xA4\xFF"sv, u"\u00E4\uFFFD"sv, false},
};
LING_TABLE(FromUtf8, ::testing::Test, kUtf8Cases);

/// Alone, and behind ASCII of every length around the size of a block with ASCII after it.
TEST_P(FromUtf8, ReplacesEachMaximalIllFormedSubsequenceWhateverStandsAround) {
    const Utf8Case& row = GetParam();
    EXPECT_EQ(String::fromUTF8(ByteArray(row.bytes)).view(), row.units);
    EXPECT_EQ(String::isWellFormedUTF8(row.bytes), row.wellFormed);
    for (std::size_t before = 0; before <= 35; ++before) {
        const std::string bytes = std::string(before, 'x').append(row.bytes).append(17, 'y');
        const std::u16string units = std::u16string(before, u'x').append(row.units).append(17, u'y');
        ASSERT_EQ(String::fromUTF8(bytes).view(), units) << before;
        ASSERT_EQ(String::isWellFormedUTF8(bytes), row.wellFormed) << before;
    }
}

const struct Utf16Case {
    const char* name;
    std::u16string units;
    std::string_view bytes;
    std::wstring_view wide;
    bool wellFormed;
} kUtf16Cases[] = {
    {"Empty", u"", "", L"", true},
    {"Nul", std::u16string(u"a\0b", 3), "a\0b"sv, L"a\0b"sv, true},
    {"OneByte", u"\x7F", "\x7F", L"\x7F", true},
    {"TwoBytes", u"\x80\u07FF", "\xC2\x80\xDF\xBF", L"\x80\u07FF", true},
    {"ThreeBytes", u"\u0800\uD7FF\uE000\uFFFF", "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF",
     L"\u0800\uD7FF\uE000\uFFFF", true},
    {"Pairs", u"\U00010000\U0010FFFF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", L"\U00010000\U0010FFFF", true},
    {"LoneLead", {0xD83D}, "\xEF\xBF\xBD", L"\uFFFD", false},
    {"LoneTrail", {0xDE00}, "\xEF\xBF\xBD", L"\uFFFD", false},
    {"PairTurnedRound", {0xDE00, 0xD83D}, "\xEF\xBF\xBD\xEF\xBF\xBD", L"\uFFFD\uFFFD", false},
    {"LeadBeforePair", {0xD83D, 0xD83D, 0xDE00}, "\xEF\xBF\xBD\xF0\x9F\x98\x80", L"\uFFFD\U0001F600", false},
    {"LeadBeforeAscii",
     {0xD83D, u'a'},
     "\xEF\xBF\xBD"
     "a",
     L"\uFFFD"
     L"a",
     false},
};
LING_TABLE(ToUtf8, ::testing::Test, kUtf16Cases);

TEST_P(ToUtf8, ReplacesEachLoneSurrogateWhateverStandsAround) {
    const Utf16Case& row = GetParam();
    const String text(row.units);
    EXPECT_EQ(text.toUTF8().view(), row.bytes);
    EXPECT_EQ(text.toWide(), row.wide);
    EXPECT_EQ(text.isWellFormed(), row.wellFormed);
    for (std::size_t before = 0; before <= 35; ++before) {
        const String longer(std::u16string(before, u'x').append(row.units).append(17, u'y'));
        const std::string bytes = std::string(before, 'x').append(row.bytes).append(17, 'y');
        ASSERT_EQ(longer.toUTF8().view(), bytes) << before;
        ASSERT_EQ(longer.toStdString(), bytes) << before;
    }
}

TEST(Utf8, EveryCharacterComesBack) {
    std::u16string all;
    for (char32_t code = 0; code <= 0x10FFFF; ++code) {
        if (code >= 0xD800 && code <= 0xDFFF)
            continue;
        if (code >= 0x10000)
            all.push_back(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
        all.push_back(static_cast<char16_t>(code < 0x10000 ? code : 0xDC00 + ((code - 0x10000) & 0x3FF)));
    }
    const String text(all);
    const ByteArray bytes = text.toUTF8();
    EXPECT_TRUE(text.isWellFormed());
    EXPECT_TRUE(String::isWellFormedUTF8(bytes.view()));
    EXPECT_EQ(String::fromUTF8(bytes), text);
}

TEST(Latin1, IsOneUnitForEachByte) {
    EXPECT_EQ(String::fromLatin1("a\xE4\xFF\0z"sv).view(), u"a\u00E4\u00FF\0z"sv);
    EXPECT_TRUE(String::fromLatin1("").isEmpty());
}

}  // namespace
}  // namespace ling
