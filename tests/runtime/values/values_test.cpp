#include "runtime/support/values.h"

#include <limits>
#include <set>

/// The values that need no object, and what all values have in common.

namespace ling::testing {
namespace {

using namespace std::string_view_literals;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class Values : public LiveObjects {};

TEST_F(Values, ImmediatesKeepKindAndBitsWithoutAnObject) {
    const std::pair<Any, Kind> rows[] = {
        {false, Kind::Boolean},     {true, Kind::Boolean}, {INT64_MIN, Kind::Integer},    {-1, Kind::Integer},
        {INT64_MAX, Kind::Integer}, {-0.0, Kind::Float},   {Undefined(), Kind::Undefined}};
    for (const auto& [value, kind] : rows) {
        Any copy = value;
        const Any moved = std::move(copy);
        EXPECT_EQ(moved.kind(), kind);
        EXPECT_TRUE(moved.isSameAs(value)) << shown(value);
        EXPECT_EQ(moved.object(), nullptr);
        EXPECT_TRUE(copy.isNone());  // NOLINT(bugprone-use-after-move): moving leaves none, and callers rely on it.
    }
}

TEST_F(Values, CountReferencesOfObjects) {
    const std::size_t before = live_object_count();
    Any list = List_Generic::empty();
    EXPECT_EQ(live_object_count(), before + 1);
    Any second = list;
    list = list;  // NOLINT: assignment to itself keeps the value.
    EXPECT_TRUE(second.isSameAs(list));
    object_value* taken = second.take();
    EXPECT_TRUE(second.isNone());
    second = Any::adopt(taken);
    EXPECT_TRUE(second.isSameAs(list));
}

TEST_F(Values, LastReferenceMayGoOnAnotherThread) {
    Any shared = listOf("item");
    inThreads(8, [&](int number) {
        for (int turn = 0; turn < 10'000; ++turn)
            const Any copy = shared;
        if (number == 0)
            const Any last = std::exchange(shared, Any());
    });
}

TEST_F(Values, AWeakReferenceIsTheTargetOrNoneWhileTheLastReferenceGoes) {
    for (int round = 0; round < 2'000; ++round) {
        Any target = listOf(1);
        const Weak_Generic weak(target);
        inThreads(2, [&](int number) {
            if (number == 0) {
                target = Any();
                return;
            }
            const Any found = weak.lock();
            EXPECT_TRUE(found.isNone() || unchecked<List_Generic>(found).size() == 1);
        });
    }
}

TEST(Identifier, OneRecordPerName) {
    EXPECT_EQ(method_ident_untyped("at"), I_Sequence_Generic::$at);
    EXPECT_EQ(method_ident_untyped(String(u"at")), I_Sequence_Generic::$at);
    EXPECT_EQ(method_ident_untyped(ByteArray("at")).data(), I_Sequence_Generic::$at.data());
    EXPECT_NE(method_ident_untyped("At"), I_Sequence_Generic::$at);
    EXPECT_TRUE(property_ident_untyped("_hidden").isPrivate());
    EXPECT_FALSE(property_ident_untyped("").isPrivate());
    EXPECT_EQ(property_ident_untyped("a\0b"sv).name().length(), 3u);
    std::vector<const identifier_data*> found(8);
    for (int round = 0; round < 50; ++round) {
        const std::string name = "raced_for_name" + std::to_string(round);
        inThreads(8, [&](int number) { found[static_cast<std::size_t>(number)] = &intern(std::string_view(name)); });
        EXPECT_EQ(std::set<const void*>(found.begin(), found.end()).size(), 1u);
    }
}

constexpr struct FloatCase {
    const char* name;
    double value;
    const char* expected;
} kFloatCases[] = {
    {"Zero", 0.0, "0.0"},
    {"NegativeZero", -0.0, "-0.0"},
    {"Whole", 2.0, "2.0"},
    {"Sum", 0.1 + 0.2, "0.30000000000000004"},
    {"Negative", -12.5, "-12.5"},
    {"SmallestPlain", 0.0001, "0.0001"},
    {"BelowPlain", 0.00001, "1e-05"},
    {"LargestPlain", 9999999999999998.0, "9999999999999998.0"},
    {"AbovePlain", 1e16, "1e+16"},
    {"Digits17", 1.2345678901234567e17, "1.2345678901234566e+17"},
    {"Largest", std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
    {"SmallestOfAll", std::numeric_limits<double>::denorm_min(), "5e-324"},
    {"NegativeInfinity", -std::numeric_limits<double>::infinity(), "-inf"},
    {"NaN", kNaN, "nan"},
};
LING_TABLE(FloatText, ::testing::Test, kFloatCases);

TEST_P(FloatText, IsShortAndRecognisable) { EXPECT_EQ(shown(Float(GetParam().value).toString()), GetParam().expected); }

TEST_F(Values, CastsTakeTheirKindAloneAndNameWhatTheyFound) {
    const auto failed = [](const char* found, const char* wanted) {
        return std::string("error: Unable to cast a value of class 'ling.") + found + "' to 'ling." + wanted + "'.";
    };
    EXPECT_EQ(shown(Boolean::cast(true)), "true");
    EXPECT_EQ(shown(Boolean::cast(1)), failed("Integer", "Boolean"));
    EXPECT_EQ(shown(Integer::cast(INT64_MIN)), "-9223372036854775808");
    EXPECT_EQ(shown(Integer::cast(true)), failed("Boolean", "Integer"));
    EXPECT_EQ(shown(Integer::cast(1.0)), failed("Float", "Integer"));
    EXPECT_EQ(shown(Float::cast(3)), "3.0");
    EXPECT_EQ(shown(Float::cast(true)), failed("Boolean", "Float"));
    EXPECT_EQ(shown(String::cast(1)), failed("Integer", "String"));
    EXPECT_EQ(shown(String::cast(String::getClass())), failed("Class", "String"));
    EXPECT_EQ(shown(ByteArray::cast(String(u"a"))), failed("String", "ByteArray"));
    EXPECT_EQ(shown(ByteArray::cast(ByteArray("a"))), "b'a'");
}

TEST(ByteArray, KeepsBytesAndEndsInNul) {
    const ByteArray bytes("a\0\xFF"sv);
    EXPECT_EQ(bytes.view(), "a\0\xFF"sv);
    EXPECT_EQ(bytes.data()[3], '\0');
    EXPECT_TRUE(ByteArray().isSameAs(ByteArray("")));
    EXPECT_EQ(ByteArray().data()[0], '\0');
}

TEST(Identity, IsOfObjectsAndEqualImmediates) {
    const Any list = listOf();
    for (const auto& [a, b] : std::vector<std::pair<Any, Any>>{{list, list}, {1, 1}, {0.0, -0.0}, {kNaN, kNaN}})
        EXPECT_TRUE(is_same(a, b)) << shown(a);
    const std::vector<Any> values{list, listOf(), String(u"a"), Any(), Undefined(), true, false, 0, 1, -1, 0.0, 1.0};
    std::set<std::int64_t> numbers;
    for (const Any& value : values) {
        EXPECT_EQ(object_id(value), object_id(value));
        numbers.insert(object_id(value));
        for (const Any& other : values)
            EXPECT_EQ(is_same(value, other), &value == &other) << shown(value) << " and " << shown(other);
    }
    EXPECT_EQ(numbers.size(), values.size());
}

TEST(Identity, KindsHaveNames) {
    const List_Generic list = listOf();
    const std::pair<Any, const char*> rows[] = {{Any(), "none"},
                                                {Undefined(), "undefined"},
                                                {true, "boolean"},
                                                {1, "integer"},
                                                {1.0, "float"},
                                                {String(), "string"},
                                                {ByteArray(), "byte_array"},
                                                {list, "list"},
                                                {Tuple_Generic(), "tuple"},
                                                {Map_Generic(), "map"},
                                                {Set_Generic(), "set"},
                                                {make_function("f", "", [] {}), "function"},
                                                {List_Generic::getClass(), "object"},
                                                {Boxed<int>(1), "boxed_value"},
                                                {Lazy_Generic([] { return Any(1); }), "lazy_value"},
                                                {External_Generic([] { return Any(1); }), "external_value"},
                                                {Weak_Generic(list), "weak_reference"}};
    for (const auto& [value, name] : rows)
        EXPECT_EQ(kind_of(value), String(name));
}

}  // namespace
}  // namespace ling::testing
