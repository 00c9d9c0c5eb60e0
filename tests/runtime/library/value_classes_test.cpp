#include "runtime/support/values.h"

#include <limits>

/// The native classes of plain values, as a script uses them: called, and asked for their members.

namespace ling::testing {
namespace {

const Class_Generic integer = Integer::getClass();
const Class_Generic floating = Float::getClass();
const Class_Generic boolean = Boolean::getClass();
const Class_Generic date = Date::getClass();
const Class_Generic time_ = Time::getClass();

const struct CallCase {
    const char* name;
    Class_Generic cls;
    std::vector<Any> arguments;
    const char* expected;
} kCalls[] = {
    {"IntegerAlone", integer, {}, "0"},
    {"IntegerTooLarge", integer, {String(u"9223372036854775808")}, "Integer out of range: 9223372036854775808."},
    {"IntegerOfNoText", integer, {String()}, "Invalid integer: ''."},
    {"IntegerOfFraction", integer, {String(u"1.5")}, "Invalid integer: '1.5'."},
    {"IntegerOfFloat", integer, {-2.9}, "-2"},
    {"IntegerOfNaN", integer, {std::numeric_limits<double>::quiet_NaN()}, "Integer out of range: nan."},
    {"IntegerOfSmallestFloat", integer, {-0x1p63}, "-9223372036854775808"},
    {"IntegerOfDecimal", integer, {Decimal::fromString(u"-1.99E+1")}, "-19"},
    {"IntegerOfHugeDecimal", integer, {Decimal::fromString(u"1E+999999999")}, "Integer out of range: 1E+999999999."},
    {"IntegerOfTinyDecimal", integer, {Decimal::fromString(u"1E-999999999")}, "0"},
    {"IntegerOfNone", integer, {Any()}, "Unable to convert a value of class 'ling.None' to 'ling.Integer'."},
    {"IntegerOfTwo", integer, {1, 2}, "Superfluous argument 2 of 'Integer': it takes 1, 2 were given."},
    {"FloatAlone", floating, {}, "0.0"},
    {"FloatOfWord", floating, {String(u"-inf")}, "-inf"},
    {"FloatTooLarge", floating, {String(u"1e999")}, "inf"},
    {"FloatRounded", floating, {String(u"0.1000000000000000055511151231257827")}, "0.1"},
    {"FloatOfDecimal", floating, {Decimal::fromString(u"1E-999999999")}, "0.0"},
    {"FloatOfRubbish", floating, {String(u"1,5")}, "Invalid float: '1,5'."},
    {"BooleanAlone", boolean, {}, "false"},
    {"BooleanOfText", boolean, {String(u"true")}, "true"},
    {"BooleanOfOtherText", boolean, {String(u"yes")}, "Invalid boolean: 'yes'."},
    {"BooleanOfNone", boolean, {Any()}, "false"},
    {"BooleanOfDecimal", boolean, {Decimal::fromString(u"-0.00")}, "false"},
    {"NoneOfSomething", None::getClass(), {1}, "The class 'ling.None' takes no arguments."},
    {"DecimalAlone", Decimal::getClass(), {}, "0"},
    {"DecimalOfInteger", Decimal::getClass(), {INT64_MIN}, "-9223372036854775808"},
    {"DecimalOfFloat", Decimal::getClass(), {0.5}, "Unable to make a decimal from a value of class 'ling.Float'."},
    {"StringOfNumber", String::getClass(), {1.5}, "1.5"},
    {"ByteArrayAlone", ByteArray::getClass(), {}, "b''"},
    {"ByteArrayOfText", ByteArray::getClass(), {String(u"\u00E4")}, "b'\\xc3\\xa4'"},
    {"ByteArrayOfNumber",
     ByteArray::getClass(),
     {1},
     "Unable to make a byte array from a value of class 'ling.Integer'."},
    {"DateMonthDoesNotWrap", date, {2024, 257, 1}, "Invalid date: 2024-257-01."},
    {"DateYearDoesNotWrap", date, {4294967296 + 2024, 1, 1}, "Invalid date: +4294969320-01-01."},
    {"DateOfTwo", date, {2024, 1}, "Missing argument 'day' of 'Date'."},
    {"TimeOfAll", time_, {12, 30, 1, 5, 3600, String(u"CET"), 1}, "12:30:01.000000005+01:00"},
    {"TimeWithoutOffset", time_, {12, 30, 1, 5, Any()}, "12:30:01.000000005"},
    {"TimeHourDoesNotWrap", time_, {256, 0}, "Invalid time: 256:00:00."},
    {"TimeFoldDoesNotWrap", time_, {1, 0, 0, 0, 0, String(), 256}, "Invalid time: 01:00:00+00:00, fold 256."},
    {"TimeOffsetOfText",
     time_,
     {1, 0, 0, 0, String(u"x")},
     "Unable to cast a value of class 'ling.String' to 'ling.Integer'."},
    {"DateTimeOfDate", DateTime::getClass(), {Date(2024, 2, 29)}, "Missing argument 'time' of 'DateTime'."},
};
LING_TABLE(ValueClass, ::testing::Test, kCalls);

TEST_P(ValueClass, MakesItsValueOrSaysWhyNot) {
    const Any made = GetParam().cls.construct(GetParam().arguments);
    EXPECT_EQ(plain(made), GetParam().expected);
    EXPECT_TRUE(is_error_result(made) || raw_class_of(made) == GetParam().cls);
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
    const std::size_t before = live_object_count();
    {
        for (const auto& [native, arguments] : std::vector<std::pair<Class_Generic, std::vector<Any>>>{
                 {String::getClass(), {String(u"abc")}},
                 {ByteArray::getClass(), {ByteArray("abc")}},
                 {Date::getClass(), {2024, 2, 29}},
                 {Time::getClass(), {1, 2}},
                 {DateTime::getClass(), {Date(2024, 2, 29), Time(1, 2, 3)}},
                 {Decimal::getClass(), {String(u"1.10")}}}) {
            const Class_Generic derived = defclass_impl("Derived", "").parent(native).build();
            const Any made = derived.construct(arguments);
            EXPECT_TRUE(raw_class_of(made) == derived);
            EXPECT_EQ(display(made), display(native.construct(arguments)));
            EXPECT_EQ(compare_objects(made, native.construct(arguments)), 0) << display(made).toStdString();
            EXPECT_EQ(hash_of(made), hash_of(native.construct(arguments)));
            EXPECT_TRUE(raw_class_of(derived.allocateInstance()) == derived);
        }
    }
    EXPECT_EQ(live_object_count(), before);
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
    ASSERT_TRUE(dynamic_cast<object_value_boxed_of<point>*>(made.object()) != nullptr);
    EXPECT_EQ(unchecked<Boxed<point>>(made).value().text, "default");
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
}  // namespace ling::testing
