#include "ling/class_builder.h"
#include "ling/ling.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

/// The native classes of plain values, as a script uses them: called, and asked for their members.

namespace ling {
namespace {

struct CallCase {
    const char* name;
    Class_Generic cls;
    std::vector<Any> arguments;
    const char* expected;
};

class ValueClass : public ::testing::TestWithParam<CallCase> {};

TEST_P(ValueClass, MakesItsValueOrSaysWhyNot) {
    const Any made = GetParam().cls.construct(GetParam().arguments);
    EXPECT_EQ(display(made).toStdString(), GetParam().expected);
    EXPECT_TRUE(internal::is_error_result(made) || raw_class_of(made) == GetParam().cls);
}

std::vector<CallCase> numberCases() {
    const Class_Generic integer = Integer::getClass();
    const Class_Generic floating = Float::getClass();
    const Class_Generic boolean = Boolean::getClass();
    return {
        {"IntegerAlone", integer, {}, "0"},
        {"IntegerOfText", integer, {String(u" -12 ")}, "-12"},
        {"IntegerOfLargest", integer, {String(u"9223372036854775807")}, "9223372036854775807"},
        {"IntegerTooLarge", integer, {String(u"9223372036854775808")}, "Integer out of range: 9223372036854775808."},
        {"IntegerOfNoText", integer, {String()}, "Invalid integer: ''."},
        {"IntegerOfFraction", integer, {String(u"1.5")}, "Invalid integer: '1.5'."},
        {"IntegerOfFloat", integer, {-2.9}, "-2"},
        {"IntegerOfNaN", integer, {std::numeric_limits<double>::quiet_NaN()}, "Integer out of range: nan."},
        {"IntegerOfHugeFloat", integer, {0x1p63}, "Integer out of range: 9.223372036854776e+18."},
        {"IntegerOfSmallestFloat", integer, {-0x1p63}, "-9223372036854775808"},
        {"IntegerOfDecimal", integer, {Decimal::fromString(u"-1.99E+1")}, "-19"},
        {"IntegerOfHugeDecimal",
         integer,
         {Decimal::fromString(u"1E+999999999")},
         "Integer out of range: 1E+999999999."},
        {"IntegerOfTinyDecimal", integer, {Decimal::fromString(u"1E-999999999")}, "0"},
        {"IntegerOfBoolean", integer, {true}, "1"},
        {"IntegerOfNone", integer, {Any()}, "Unable to convert a value of class 'ling.None' to 'ling.Integer'."},
        {"IntegerOfTwo", integer, {1, 2}, "Superfluous argument 2 of 'Integer': it takes 1, 2 were given."},
        {"FloatAlone", floating, {}, "0.0"},
        {"FloatOfText", floating, {String(u"1e3")}, "1000.0"},
        {"FloatOfWord", floating, {String(u"-inf")}, "-inf"},
        {"FloatTooLarge", floating, {String(u"1e999")}, "inf"},
        {"FloatTooSmall", floating, {String(u"-1e-999")}, "-0.0"},
        {"FloatRounded", floating, {String(u"0.1000000000000000055511151231257827")}, "0.1"},
        {"FloatOfDecimal", floating, {Decimal::fromString(u"1E-999999999")}, "0.0"},
        {"FloatOfRubbish", floating, {String(u"1,5")}, "Invalid float: '1,5'."},
        {"BooleanAlone", boolean, {}, "false"},
        {"BooleanOfText", boolean, {String(u"true")}, "true"},
        {"BooleanOfOtherText", boolean, {String(u"yes")}, "Invalid boolean: 'yes'."},
        {"BooleanOfNumber", boolean, {0.5}, "true"},
        {"BooleanOfNone", boolean, {Any()}, "false"},
        {"BooleanOfDecimal", boolean, {Decimal::fromString(u"-0.00")}, "false"},
        {"NoneOfSomething", None::getClass(), {1}, "The class 'ling.None' takes no arguments."},
        {"NoneAlone", None::getClass(), {}, "none"},
        {"DecimalAlone", Decimal::getClass(), {}, "0"},
        {"DecimalOfText", Decimal::getClass(), {String(u"1.10")}, "1.10"},
        {"DecimalOfInteger", Decimal::getClass(), {INT64_MIN}, "-9223372036854775808"},
        {"DecimalOfFloat", Decimal::getClass(), {0.5}, "Unable to make a decimal from a value of class 'ling.Float'."},
    };
}

std::vector<CallCase> otherCases() {
    const Class_Generic date = Date::getClass();
    const Class_Generic time = Time::getClass();
    return {
        {"StringAlone", String::getClass(), {}, ""},
        {"StringOfNumber", String::getClass(), {1.5}, "1.5"},
        {"ByteArrayAlone", ByteArray::getClass(), {}, "b''"},
        {"ByteArrayOfText", ByteArray::getClass(), {String(u"\u00E4")}, "b'\\xc3\\xa4'"},
        {"ByteArrayOfNumber",
         ByteArray::getClass(),
         {1},
         "Unable to make a byte array from a value of class 'ling.Integer'."},
        {"Date", date, {2024, 2, 29}, "2024-02-29"},
        {"DateMonthDoesNotWrap", date, {2024, 257, 1}, "Invalid date: 2024-257-01."},
        {"DateDayDoesNotWrap", date, {2024, 1, -255}, "Invalid date: 2024-01--255."},
        {"DateYearDoesNotWrap", date, {4294967296 + 2024, 1, 1}, "Invalid date: +4294969320-01-01."},
        {"DateOfText",
         date,
         {String(u"x"), 1, 1},
         "Argument 'year' of 'Date' must be of type 'Integer', not 'ling.String'."},
        {"DateOfTwo", date, {2024, 1}, "Missing argument 'day' of 'Date'."},
        {"TimeOfTwo", time, {12, 30}, "12:30:00"},
        {"TimeOfAll", time, {12, 30, 1, 5, 3600, String(u"CET"), 1}, "12:30:01.000000005+01:00"},
        {"TimeWithoutOffset", time, {12, 30, 1, 5, Any()}, "12:30:01.000000005"},
        {"TimeHourDoesNotWrap", time, {256, 0}, "Invalid time: 256:00:00."},
        {"TimeFoldDoesNotWrap", time, {1, 0, 0, 0, 0, String(), 256}, "Invalid time: 01:00:00+00:00, fold 256."},
        {"TimeOffsetOfText",
         time,
         {1, 0, 0, 0, String(u"x")},
         "Unable to cast a value of class 'ling.String' to 'ling.Integer'."},
        {"DateTime", DateTime::getClass(), {Date(2024, 2, 29), Time(1, 2, 3)}, "2024-02-29T01:02:03"},
        {"DateTimeOfDate", DateTime::getClass(), {Date(2024, 2, 29)}, "Missing argument 'time' of 'DateTime'."},
    };
}

const auto kCaseName = [](const auto& row) { return std::string(row.param.name); };
INSTANTIATE_TEST_SUITE_P(Numbers, ValueClass, ::testing::ValuesIn(numberCases()), kCaseName);
INSTANTIATE_TEST_SUITE_P(Others, ValueClass, ::testing::ValuesIn(otherCases()), kCaseName);

TEST(ValueClasses, TakeArgumentsByName) {
    const Map_Generic named;
    named.set(String(u"minute"), 5);
    named.set(String(u"hour"), 4);
    named.set(String(u"fold"), 1);
    const Any made = Time::getClass().invokeWith(named);
    EXPECT_EQ(display(made), String(u"04:05:00"));
    EXPECT_EQ(unchecked<Time>(made).fold(), 1);
}

TEST(ValueClasses, AreImmutable) {
    for (const Class_Generic& cls : {String::getClass(), ByteArray::getClass(), Integer::getClass(), Float::getClass(),
                                     Boolean::getClass(), None::getClass(), Undefined::getClass(), Decimal::getClass(),
                                     Date::getClass(), Time::getClass(), DateTime::getClass()}) {
        EXPECT_TRUE(cls.isAncestor(I_Immutable::getClass())) << cls.name().toStdString();
        EXPECT_FALSE(cls.doc().isEmpty()) << cls.name().toStdString();
    }
    const Any outcome = Date(2024, 1, 1).callMethod(Any::$__init__, {2025, 1, 1});
    EXPECT_EQ(Error::cast(outcome)->message().toStdString(),
              "A value of class 'ling.Date' cannot be initialised again.");
}

TEST(ValueClasses, DerivedClassesKeepTheirClass) {
    const std::size_t before = internal::live_object_count();
    {
        for (const auto& [native, arguments] : std::vector<std::pair<Class_Generic, std::vector<Any>>>{
                 {String::getClass(), {String(u"abc")}},
                 {ByteArray::getClass(), {ByteArray("abc")}},
                 {Date::getClass(), {2024, 2, 29}},
                 {Time::getClass(), {1, 2}},
                 {DateTime::getClass(), {Date(2024, 2, 29), Time(1, 2, 3)}},
                 {Decimal::getClass(), {String(u"1.10")}}}) {
            const Class_Generic derived = internal::defclass_impl("Derived", "").parent(native).build();
            const Any made = derived.construct(arguments);
            EXPECT_TRUE(raw_class_of(made) == derived);
            EXPECT_EQ(display(made), display(native.construct(arguments)));
            EXPECT_EQ(compare_objects(made, native.construct(arguments)), 0) << display(made).toStdString();
            EXPECT_EQ(hash_of(made), hash_of(native.construct(arguments)));
            EXPECT_TRUE(raw_class_of(derived.allocateInstance()) == derived);
        }
    }
    EXPECT_EQ(internal::live_object_count(), before);
}

TEST(ValueClasses, AllocateTheirFirstValue) {
    EXPECT_EQ(display(Date::getClass().allocateInstance()), String(u"1970-01-01"));
    EXPECT_EQ(display(DateTime::getClass().allocateInstance()), String(u"1970-01-01T00:00:00"));
    EXPECT_EQ(display(Decimal::getClass().allocateInstance()), String(u"0"));
    EXPECT_TRUE(String::getClass().allocateInstance().isSameAs(String()));
    EXPECT_EQ(display(Integer::getClass().allocateInstance()),
              String(u"The class 'Integer' has no instances of its own."));
}

/// There is another type of this name in the tests of indirect values, unnamed namespace and all.
struct point {
    std::string text = "default";
};

TEST(BoxedValue, TypesOfOneNameHaveClassesOfTheirOwn) {
    const Any made = Boxed<point>::getClass().allocateInstance();
    ASSERT_TRUE(dynamic_cast<internal::object_value_boxed_of<point>*>(made.object()) != nullptr);
    EXPECT_EQ(unchecked<Boxed<point>>(made).value().text, "default");
}

struct MemberCase {
    const char* name;
    Any value;
    const char* method;
    std::vector<Any> arguments;
    const char* expected;
};

class ValueMember : public ::testing::TestWithParam<MemberCase> {};

TEST_P(ValueMember, AnswersOrSaysWhyNot) {
    const MemberCase& row = GetParam();
    EXPECT_EQ(display(row.value.callMethod(method_ident_untyped(row.method), row.arguments)).toStdString(),
              row.expected);
}

const MemberCase kMemberCases[] = {
    {"At", String(u"abc"), "at", {-1}, "c"},
    {"AtPastEnd", String(u"abc"), "at", {3}, "Index out of range: 3."},
    {"Sliced", String(u"abc"), "sliced", {1}, "bc"},
    {"SlicedCount", String(u"abc"), "sliced", {-3, 2}, "ab"},
    {"SlicedByText",
     String(u"abc"),
     "sliced",
     {1, String(u"x")},
     "An index must be an integer, not a value of class 'ling.String'."},
    {"Trimmed", String(u" a "), "trimmed", {}, "a"},
    {"Split", String(u"a,b"), "split", {String(u",")}, "['a', 'b']"},
    {"SplitByNothing", String(u"a"), "split", {String()}, "The separator must not be empty."},
    {"Replaced", String(u"aba"), "replaced", {String(u"a"), String(u"x")}, "xbx"},
    {"IndexOf", String(u"abab"), "indexOf", {String(u"b"), 2}, "3"},
    {"IndexOfFromEnd", String(u"abab"), "indexOf", {String(u"a"), -2}, "2"},
    {"LastIndexOf", String(u"abab"), "lastIndexOf", {String(u"a")}, "2"},
    {"Contains", String(u"abc"), "contains", {String(u"bc")}, "true"},
    {"StartsWith", String(u"abc"), "startsWith", {String(u"b")}, "false"},
    {"EndsWith", String(u"abc"), "endsWith", {String(u"bc")}, "true"},
    {"Arg", String(u"{}-{}"), "arg", {1, String(u"x")}, "1-x"},
    {"ToUtf8", String(u"\u00E4"), "toUTF8", {}, "b'\\xc3\\xa4'"},
    {"FromUtf8", String::getClass(), "fromUTF8", {ByteArray("\xC3\xA4\xFF")}, "\u00E4\uFFFD"},
    {"AddText", String(u"a"), "__add__", {String(u"b")}, "ab"},
    {"AddNumber",
     String(u"a"),
     "__add__",
     {1},
     "Argument 'text' of '__add__' must be of type 'String', not 'ling.Integer'."},
    {"ByteAt", ByteArray("\xFF"), "at", {0}, "255"},
    {"ByteAtBeforeStart", ByteArray("\xFF"), "at", {-2}, "Index out of range: -2."},
    {"BytesAsText", ByteArray("a\n"), "toString", {}, "a\\n"},
    {"AddBytes", ByteArray("a"), "__add__", {ByteArray("b")}, "b'ab'"},
    {"FloatText", 2.0, "toString", {}, "2.0"},
};
INSTANTIATE_TEST_SUITE_P(Rows, ValueMember, ::testing::ValuesIn(kMemberCases), kCaseName);

TEST(ValueClasses, RefuseTextsThatMemoryCannotHold) {
    const String text = String::filled(100'000, [](char16_t* to) { std::fill_n(to, 100'000, u'a'); });
    const Any outcome = text.callMethod(method_ident_untyped("replaced"), {String(u"a"), text});
    EXPECT_EQ(Error::cast(outcome)->message(), String(u"The text would be too long."));
}

TEST(ValueClasses, ShowTheirFields) {
    const auto field = [](const Any& value, const char* name) {
        return display(value.propertyValue(property_ident_untyped(name))).toStdString();
    };
    const Time time(1, 2, 3, 4, 3600, String(u"CET"), 1);
    const DateTime dateTime(Date(2024, 2, 29), time);
    EXPECT_EQ(field(dateTime.date(), "year") + field(dateTime.date(), "month") + field(dateTime.date(), "day"),
              "2024229");
    EXPECT_EQ(field(time, "hour") + field(time, "minute") + field(time, "second"), "123");
    EXPECT_EQ(field(time, "nanoSeconds") + field(time, "offset") + field(time, "zoneName") + field(time, "fold"),
              "43600CET1");
    EXPECT_EQ(field(Time(1, 2, 3), "offset"), "none");
    EXPECT_EQ(field(dateTime, "date") + field(dateTime, "time"), "2024-02-2901:02:03.000000004+01:00");
    const Any number = Decimal::fromString(u"-1.50");
    EXPECT_EQ(field(number, "digits") + field(number, "exponent") + field(number, "isNegative"), "150-2true");
    EXPECT_EQ(field(String(u"abc"), "length") + field(ByteArray("ab"), "length"), "32");
}

}  // namespace
}  // namespace ling
