#include "runtime/support/values.h"

#include <optional>
#include <set>

namespace ling::testing {
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
    const std::size_t before = live_object_count();
    EXPECT_TRUE(String().isSameAs(String(u"")));
    EXPECT_TRUE(String().isSameAs(String::fromUTF8("")));
    EXPECT_TRUE(String().isSameAs(String(u"ab").sliced(1, 0)));
    EXPECT_EQ(String().view(), u"");
    EXPECT_EQ(live_object_count(), before);
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

const struct SliceCase {
    const char* name;
    std::int64_t position;
    Any count;
    std::u16string_view expected;
} kSliceCases[] = {
    {"FromOne", 1, Any(), u"bcde"},
    {"FromEnd", -2, Any(), u"de"},
    {"Nothing", 2, 0, u""},
    {"NegativeCount", 2, -1, u""},
    {"PastEnd", 6, Any(), u""},
    {"BeforeStart", -7, 4, u"ab"},
    {"WhollyBefore", -9, 2, u""},
    {"LargestPosition", INT64_MAX, INT64_MAX, u""},
    {"SmallestPosition", INT64_MIN, 3, u""},
};
LING_TABLE(StringSliced, ::testing::Test, kSliceCases);

TEST_P(StringSliced, CutsOffWhatLiesOutside) {
    const SliceCase& row = GetParam();
    EXPECT_EQ(String(u"abcde").sliced(row.position, row.count).view(), row.expected);
}

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
    const std::size_t before = live_object_count();
    {
        std::optional<String> base = longText(300);
        String piece = base->sliced(50).sliced(50).sliced(50, 100);
        EXPECT_EQ(live_object_count(), before + 2);
        base.reset();
        EXPECT_EQ(piece.view(), longText(300).view().substr(150, 100));
    }
    EXPECT_EQ(live_object_count(), before);
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
    EXPECT_EQ(intern(piece).name, intern(copy).name);
}

const struct MemberCase {
    const char* name;
    Any text;
    const char* method;
    std::vector<Any> arguments;
    const char* expected;
} kMemberCases[] = {
    {"TrimmedToNothing", String(u" \t\n\v\f\r "), "trimmed", {}, ""},
    {"TrimmedAtItsEnds", String(u"  a b\n"), "trimmed", {}, "a b"},
    {"TrimmedOfUnicode", String(u"\u0085\u00A0\u1680\u2000\u2028a\u2029\u202F\u205F\u3000"), "trimmed", {}, "a"},
    {"ZeroWidthStays", String(u"\u200Ba\uFEFF"), "trimmed", {}, "\u200Ba\uFEFF"},
    {"SplitOfNothing", String(), "split", {","}, "['']"},
    {"Split", String(u",a,,b,"), "split", {","}, "['', 'a', '', 'b', '']"},
    {"SplitWithoutOverlap", String(u"aaa"), "split", {"aa"}, "['', 'a']"},
    {"SplitByNothing", String(u"a"), "split", {String()}, "error: The separator must not be empty."},
    {"SplitAtNul", String(u"a\0b"sv), "split", {String(u"\0"sv)}, "['a', 'b']"},
    {"Replaced", String(u"it's"), "replaced", {"'", "''"}, "it''s"},
    {"ReplacedWithoutOverlap", String(u"aaa"), "replaced", {"aa", "b"}, "ba"},
    {"ReplacedByNothing", String(u"aaa"), "replaced", {"a", String()}, ""},
    {"NothingReplaced", String(u"abc"), "replaced", {String(), "x"}, "abc"},
    {"IndexOf", String(u"abcabc"), "indexOf", {"bc"}, "1"},
    {"IndexOfTheNext", String(u"abcabc"), "indexOf", {"bc", 2}, "4"},
    {"IndexOfTooLate", String(u"abcabc"), "indexOf", {"bc", 5}, "-1"},
    {"IndexOfFromTheEnd", String(u"abcabc"), "indexOf", {"a", -3}, "3"},
    {"IndexOfNothingAtTheEnd", String(u"abc"), "indexOf", {String(), 3}, "3"},
    {"IndexOfNothingPastTheEnd", String(u"abc"), "indexOf", {String(), 4}, "3"},
    {"LastIndexOf", String(u"abcabc"), "lastIndexOf", {"bc"}, "4"},
    {"LastIndexOfAbsent", String(u"abcabc"), "lastIndexOf", {"x"}, "-1"},
    {"Contains", String(u"abc"), "contains", {"bc"}, "true"},
    {"StartsWith", String(u"abc"), "startsWith", {"b"}, "false"},
    {"EndsWith", String(u"abc"), "endsWith", {"bc"}, "true"},
    {"At", String(u"abc"), "at", {-1}, "c"},
    {"AtPastTheEnd", String(u"abc"), "at", {3}, "error: Index out of range: 3."},
    {"Sliced", String(u"abc"), "sliced", {-3, 2}, "ab"},
    {"SlicedByText",
     String(u"abc"),
     "sliced",
     {1, "x"},
     "error: An index must be an integer, not a value of class 'ling.String'."},
    {"Arg", String(u"{}-{}"), "arg", {1, "x"}, "1-x"},
    {"ToUtf8", String(u"\u00E4"), "toUTF8", {}, "b'\\xc3\\xa4'"},
    {"FromUtf8", String::getClass(), "fromUTF8", {ByteArray("\xC3\xA4\xFF")}, "\u00E4\uFFFD"},
    {"AddText", String(u"a"), "__add__", {"b"}, "ab"},
    {"AddNumber",
     String(u"a"),
     "__add__",
     {1},
     "error: Argument 'text' of '__add__' must be of type 'String', not 'ling.Integer'."},
    {"ByteAt", ByteArray("\xFF"), "at", {0}, "255"},
    {"ByteAtBeforeTheStart", ByteArray("\xFF"), "at", {-2}, "error: Index out of range: -2."},
    {"BytesAsText", ByteArray("a\n"), "toString", {}, "a\\n"},
    {"AddBytes", ByteArray("a"), "__add__", {ByteArray("b")}, "b'ab'"},
    {"FloatText", 2.0, "toString", {}, "2.0"},
};
LING_TABLE(TextMember, ::testing::Test, kMemberCases);

TEST_P(TextMember, AnswersOrSaysWhyNot) {
    const MemberCase& row = GetParam();
    EXPECT_EQ(shown(row.text.callMethod(method_ident_untyped(row.method), row.arguments)), row.expected);
}

TEST(String, WithNothingToReplaceIsItself) {
    const String unchanged(u"abc");
    EXPECT_TRUE(unchanged.replaced(u"x", u"y").isSameAs(unchanged));
}

TEST(String, RefusesATextThatMemoryCannotHold) {
    const String text(std::u16string(100'000, u'a'));
    EXPECT_EQ(shown(text.callMethod("replaced", {"a", text})), "error: The text would be too long.");
}

const struct FormatCase {
    const char* name;
    const char16_t* format;
    std::vector<Any> values;
    const char* expected;
} kFormatCases[] = {
    {"InOrder", u"{} and {}.", {1, String(u"two")}, "1 and two."},
    {"TooFewValues", u"{}, {}", {1}, "1, {}"},
    {"BracesInAValue", u"{}{}", {String(u"{}"), 2}, "{}2"},
    {"DoubledBraces", u"{{}} {{{}}}", {7}, "{} {7}"},
    {"LoneBraces", u"} a { b", {7}, "} a { b"},
    {"BraceAtEnd", u"{}{", {7}, "7{"},
};
LING_TABLE(StringArg, ::testing::Test, kFormatCases);

TEST_P(StringArg, FillsPlacesInOrder) {
    EXPECT_EQ(String(GetParam().format).argImplMethod(GetParam().values).toStdString(), GetParam().expected);
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

}  // namespace
}  // namespace ling::testing
