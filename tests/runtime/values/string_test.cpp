#include "ling/ling.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace ling {
namespace {

using namespace std::string_view_literals;

/// A text in which every position can be told from every other.
String longText(std::size_t length) {
    return String::filled(length, [&](char16_t* to) {
        for (std::size_t i = 0; i < length; ++i)
            to[i] = static_cast<char16_t>(u'a' + i % 26);
    });
}

TEST(String, EmptyOnesAreOneObject) {
    const std::size_t before = internal::live_object_count();
    EXPECT_TRUE(String().isSameAs(String(u"")));
    EXPECT_TRUE(String().isSameAs(String::fromUTF8("")));
    EXPECT_TRUE(String().isSameAs(String(u"ab").sliced(1, 0)));
    EXPECT_EQ(String().view(), u"");
    EXPECT_EQ(internal::live_object_count(), before);
}

TEST(String, KeepsEveryUnit) {
    const String text(std::u16string_view(u"a\0b\xD800", 4));
    EXPECT_EQ(text.length(), 4u);
    EXPECT_EQ(text.view(), std::u16string_view(u"a\0b\xD800", 4));
    EXPECT_EQ(text.view().data()[4], u'\0');
    EXPECT_NE(text, String(u"a"));
}

TEST(String, HandleThatWasMovedFromReadsAsEmpty) {
    String text(u"abc");
    const String taken = std::move(text);
    EXPECT_EQ(text.length(), 0u);  // NOLINT(bugprone-use-after-move): that is what is tested.
    EXPECT_EQ(text.hash(), String().hash());
}

TEST(String, OrderIsThatOfTheUnits) {
    EXPECT_LT(String(u"a"), String(u"b"));
    EXPECT_LT(String(u"a"), String(u"aa"));
    EXPECT_LT(String(u"a"), String(std::u16string_view(u"a\0", 2)));
    EXPECT_EQ(String(u"a") + String(u"b"), String(u"ab"));
    EXPECT_EQ(String() + String(), String());
}

struct SliceCase {
    const char* name;
    std::int64_t position;
    Any count;
    std::u16string_view expected;
};

class StringSliced : public ::testing::TestWithParam<SliceCase> {};

TEST_P(StringSliced, CutsOffWhatLiesOutside) {
    const SliceCase& row = GetParam();
    EXPECT_EQ(String(u"abcde").sliced(row.position, row.count).view(), row.expected);
}

const SliceCase kSliceCases[] = {
    {"Whole", 0, Any(), u"abcde"},
    {"FromOne", 1, Any(), u"bcde"},
    {"FromEnd", -2, Any(), u"de"},
    {"Middle", 1, 3, u"bcd"},
    {"Nothing", 2, 0, u""},
    {"NegativeCount", 2, -1, u""},
    {"CountPastEnd", 3, 9, u"de"},
    {"AtEnd", 5, Any(), u""},
    {"PastEnd", 6, Any(), u""},
    {"BeforeStart", -7, 4, u"ab"},
    {"WhollyBefore", -9, 2, u""},
    {"LargestCount", 1, INT64_MAX, u"bcde"},
    {"LargestPosition", INT64_MAX, INT64_MAX, u""},
    {"SmallestPosition", INT64_MIN, 3, u""},
    {"SmallestPositionToEnd", INT64_MIN, Any(), u"abcde"},
};
INSTANTIATE_TEST_SUITE_P(Rows, StringSliced, ::testing::ValuesIn(kSliceCases),
                         [](const auto& row) { return row.param.name; });

TEST(StringSlice, LongPieceSharesItsBase) {
    const String base = longText(200);
    const String piece = base.sliced(100, 64);
    ASSERT_TRUE(piece.isSlice());
    EXPECT_EQ(piece.view().data(), base.view().data() + 100);
    EXPECT_EQ(piece.kind(), Kind::Object);
    EXPECT_TRUE(raw_class_of(piece) == String::getClass());
    EXPECT_FALSE(base.sliced(100, 63).isSlice());
    EXPECT_TRUE(String::cast(piece));
}

TEST(StringSlice, SmallPartOfALongTextIsCopied) {
    const String base = longText(64 * 16 + 16);
    EXPECT_FALSE(base.sliced(0, 64).isSlice());
    EXPECT_TRUE(base.sliced(0, 65).isSlice());
}

TEST(StringSlice, OutlivesItsBaseAndNeverSharesAnotherSlice) {
    const std::size_t before = internal::live_object_count();
    {
        std::optional<String> base = longText(300);
        String piece = base->sliced(50).sliced(50).sliced(50, 100);
        EXPECT_EQ(internal::live_object_count(), before + 2);
        base.reset();
        EXPECT_EQ(piece.view(), longText(300).view().substr(150, 100));
    }
    EXPECT_EQ(internal::live_object_count(), before);
}

TEST(StringSlice, AskedForAsAWholeIsFlat) {
    const String piece = longText(200).sliced(100);
    ASSERT_TRUE(piece.isSlice());
    const String whole = piece.sliced(0);
    EXPECT_EQ(whole.kind(), Kind::String);
    EXPECT_EQ(whole, piece);
    const String flat = longText(200);
    EXPECT_TRUE(flat.sliced(0).isSameAs(flat));
}

TEST(StringSlice, IsTheSameTextAsItsCopy) {
    const String piece = longText(200).sliced(26, 100);
    const String copy(piece.view());
    ASSERT_TRUE(piece.isSlice());
    EXPECT_EQ(piece, copy);
    EXPECT_EQ(piece.hash(), copy.hash());
    EXPECT_EQ(piece.toUTF8().view(), copy.toUTF8().view());
    EXPECT_EQ(internal::intern(piece).name, internal::intern(copy).name);
}

struct TrimCase {
    const char* name;
    std::u16string_view text;
    std::u16string_view expected;
};

class StringTrimmed : public ::testing::TestWithParam<TrimCase> {};

TEST_P(StringTrimmed, DropsWhiteSpaceAtBothEnds) {
    EXPECT_EQ(String(GetParam().text).trimmed().view(), GetParam().expected);
}

constexpr TrimCase kTrimCases[] = {
    {"Empty", u"", u""},
    {"Nothing", u"ab", u"ab"},
    {"AllSpace", u" \t\n\v\f\r ", u""},
    {"InsideStays", u"  a b\n", u"a b"},
    {"Unicode", u"\u0085\u00A0\u1680\u2000\u200A\u2028a\u2029\u202F\u205F\u3000", u"a"},
    {"ZeroWidthStays", u"\u200Ba\uFEFF", u"\u200Ba\uFEFF"},
    {"NulStays", u"\0 a\0"sv, u"\0 a\0"sv},
};
INSTANTIATE_TEST_SUITE_P(Rows, StringTrimmed, ::testing::ValuesIn(kTrimCases),
                         [](const auto& row) { return row.param.name; });

TEST(String, SplitsAtEverySeparator) {
    const auto pieces = [](std::u16string_view text, std::u16string_view separator) {
        std::vector<std::u16string> all;
        for (const String& piece : String(text).split(separator))
            all.emplace_back(piece.view());
        return all;
    };
    using Pieces = std::vector<std::u16string>;
    EXPECT_EQ(pieces(u"", u","), Pieces({u""}));
    EXPECT_EQ(pieces(u"a", u","), Pieces({u"a"}));
    EXPECT_EQ(pieces(u",a,,b,", u","), Pieces({u"", u"a", u"", u"b", u""}));
    EXPECT_EQ(pieces(u"aaa", u"aa"), Pieces({u"", u"a"}));
    EXPECT_EQ(pieces(u"ab", u""), Pieces({u"ab"}));
    EXPECT_EQ(pieces(u"a\0b"sv, u"\0"sv), Pieces({u"a", u"b"}));
}

TEST(String, ReplacesWithoutOverlap) {
    const auto replaced = [](const char16_t* text, const char16_t* from, const char16_t* to) {
        return String(text).replaced(from, to).toStdString();
    };
    EXPECT_EQ(replaced(u"it's", u"'", u"''"), "it''s");
    EXPECT_EQ(replaced(u"aaa", u"aa", u"b"), "ba");
    EXPECT_EQ(replaced(u"aaa", u"a", u""), "");
    EXPECT_EQ(replaced(u"abc", u"", u"x"), "abc");
    EXPECT_EQ(replaced(u"", u"a", u"x"), "");
    const String unchanged(u"abc");
    EXPECT_TRUE(unchanged.replaced(u"x", u"y").isSameAs(unchanged));
}

TEST(String, FindsFirstAndLast) {
    const String text(u"abcabc");
    EXPECT_EQ(text.indexOf(u"bc"), 1);
    EXPECT_EQ(text.indexOf(u"bc", 2), 4);
    EXPECT_EQ(text.indexOf(u"bc", 5), -1);
    EXPECT_EQ(text.indexOf(u"", 6), 6);
    EXPECT_EQ(text.indexOf(u"", 7), -1);
    EXPECT_EQ(text.lastIndexOf(u"bc"), 4);
    EXPECT_EQ(text.lastIndexOf(u"x"), -1);
}

struct FormatCase {
    const char* name;
    const char16_t* format;
    std::vector<Any> values;
    const char* expected;
};

class StringArg : public ::testing::TestWithParam<FormatCase> {};

TEST_P(StringArg, FillsPlacesInOrder) {
    EXPECT_EQ(String(GetParam().format).argImplMethod(GetParam().values).toStdString(), GetParam().expected);
}

const FormatCase kFormatCases[] = {
    {"NoPlace", u"abc", {1}, "abc"},
    {"Empty", u"", {1}, ""},
    {"InOrder", u"{} and {}.", {1, String(u"two")}, "1 and two."},
    {"TooFewValues", u"{}, {}", {1}, "1, {}"},
    {"BracesInAValue", u"{}{}", {String(u"{}"), 2}, "{}2"},
    {"DoubledBraces", u"{{}} {{{}}}", {7}, "{} {7}"},
    {"LoneBraces", u"} a { b", {7}, "} a { b"},
    {"BraceAtEnd", u"{}{", {7}, "7{"},
};
INSTANTIATE_TEST_SUITE_P(Rows, StringArg, ::testing::ValuesIn(kFormatCases),
                         [](const auto& row) { return row.param.name; });

TEST(String, InternsUnderItsText) {
    const String name(u"interned_by_string_test");
    const internal::identifier_data& record = internal::intern(name);
    EXPECT_EQ(&internal::intern(name), &record);
    EXPECT_EQ(&internal::intern("interned_by_string_test"sv), &record);
    EXPECT_EQ(&internal::intern(String(u"interned_by_string_test")), &record);
}

TEST(String, HashesOfSimilarTextsDiffer) {
    std::set<std::size_t> hashes;
    std::set<std::u16string> texts;
    for (char16_t unit : {u'\0', u'a', u'b'})
        for (std::size_t length = 0; length < 40; ++length)
            for (std::size_t changed = 0; changed <= length; ++changed) {
                std::u16string text(length, unit);
                if (changed < length)
                    text[changed] = u'\x101';
                hashes.insert(String(text).hash());
                texts.insert(text);
            }
    EXPECT_EQ(hashes.size(), texts.size());
}

TEST(String, LowBitsOfTheHashSpread) {
    std::set<std::size_t> buckets;
    for (int i = 0; i < 1024; ++i)
        buckets.insert(String("item" + std::to_string(i)).hash() % 1024);
    EXPECT_GT(buckets.size(), 1024 * 55 / 100);  // Perfect chance fills 63 in a hundred.
}

TEST(String, ThreadsMayShareIt) {
    const String text = longText(5000);
    std::vector<std::size_t> hashes(4);
    std::vector<std::thread> threads;
    for (std::size_t& hash : hashes)
        threads.emplace_back([&hash, &text] {
            hash = text.hash();
            EXPECT_EQ(&internal::intern(text), &internal::intern(text));
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::size_t hash : hashes)
        EXPECT_EQ(hash, String(text.view()).hash());
}

TEST(String, CastNamesWhatItFound) {
    EXPECT_TRUE(String::cast(String(u"a")));
    EXPECT_EQ(unchecked<Error>(String::cast(1).error()).message().toStdString(),
              "Unable to cast a value of class 'ling.Integer' to 'ling.String'.");
    EXPECT_FALSE(String::cast(Any()));
    EXPECT_FALSE(String::cast(String::getClass()));
}

}  // namespace
}  // namespace ling
