#include "runtime/support/values.h"
#include "support/small_stack.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace ling::testing {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

int sign(std::int64_t order) { return order < 0 ? -1 : order > 0 ? 1 : 0; }

int ordered(const Any& a, const Any& b) { return sign(compare_objects(a, b)); }

Any decimal(std::string_view text) { return Decimal::fromString(String(text)); }

Any mapOf(std::vector<std::pair<Any, Any>> pairs) { return Map_Generic(pairs); }
Any setOf(std::vector<Any> items) { return Set_Generic(items); }
String text(std::u16string_view units) { return String(units); }
/// A text that is an object sharing the units of a longer one.
String slice(std::u16string_view units) {
    return String(std::u16string(50, u'-') + std::u16string(units)).sliced(50, Any(units.size()));
}

/// Numbers of every kind, in their order; those of a row are equal.
const std::vector<std::vector<Any>> kNumbers = {
    {-kInfinity, decimal("-Infinity")},
    {decimal("-1E+999999999"), decimal("-10E+999999998")},
    {decimal("-9223372036854775809")},
    {kSmallest, -0x1p63, decimal("-9223372036854775808")},
    {decimal("-100.001")},
    {-100, -100.0, decimal("-1E+2"), decimal("-100.0")},
    {-2.75, decimal("-2.75")},
    {-1, -1.0, decimal("-1")},
    {decimal("-1E-999999999")},
    {0, 0.0, -0.0, decimal("-0"), decimal("0.00"), decimal("0E+999999999")},
    {decimal("1E-999999999")},
    {5e-324},
    {0x1p-100, decimal("7.8886090522101180541172856528278622967320643510902300477027893066406250E-31")},
    {decimal("0.1")},
    {0.1, decimal("0.1000000000000000055511151231257827021181583404541015625")},
    {0.5, decimal("0.5")},
    {1, 1.0, decimal("1.00"), decimal("10E-1")},
    {decimal("1.1"), decimal("1.10")},
    {1.5},
    {10, decimal("1E+1")},
    {std::int64_t{1} << 53, 0x1p53},
    {(std::int64_t{1} << 53) + 1, decimal("9007199254740993")},
    {decimal("9007199254740993.1")},
    {2305843009213693951, decimal("2305843009213693951")},
    {kLargest, decimal("9223372036854775807")},
    {0x1p63, decimal("9223372036854775808")},
    {1e22, decimal("1E+22")},
    {0x1p100, decimal("1267650600228229401496703205376")},
    {std::numeric_limits<double>::max()},
    {decimal("1E+999999999")},
    {kInfinity, decimal("Infinity")},
    {kNaN, std::copysign(kNaN, -1.0), decimal("NaN"), decimal("-NaN"), decimal("NaN7"), decimal("sNaN")},
};

TEST(Numbers, CompareByValueWhateverTheirKinds) {
    for (std::size_t i = 0; i < kNumbers.size(); ++i)
        for (std::size_t j = 0; j < kNumbers.size(); ++j)
            for (const Any& a : kNumbers[i])
                for (const Any& b : kNumbers[j]) {
                    ASSERT_EQ(ordered(a, b), i < j ? -1 : i > j ? 1 : 0) << shown(a) << " and " << shown(b);
                    ASSERT_TRUE(i != j || hash_of(a) == hash_of(b)) << shown(a) << " and " << shown(b);
                    ASSERT_EQ(shown(mapOf({{a, 1}}).callMethod("contains", {b})), i == j ? "true" : "false");
                }
}

/// What is equal is one key of a map where it is immutable; containers are the keys that they are.
const struct OrderCase {
    const char* name;
    Any a;
    Any b;
    int order;
    bool isOneKey = order == 0;
} kPairs[] = {
    {"BooleanIsNoNumber", true, 1, -1},
    {"Booleans", false, true, -1},
    {"IntegersOfOneHash", 7, 7 + ((std::int64_t{1} << 61) - 1), -1},
    {"NoneIsNone", Any(), Any(), 0},
    {"NoneAndUndefined", Any(), Undefined(), -1},
    {"NoneAndFalse", Any(), false, -1},
    {"Texts", text(u"a"), text(u"b"), -1},
    {"EqualTexts", text(u"ab"), String("a") + String("b"), 0},
    {"EmptyText", String(), text(u"a"), -1},
    {"EmptyTextAndBytes", String(), ByteArray(), -1},
    {"TextsByUnits", text(u"\uFFFD"), text(u"\U0001F600"), 1},
    {"NulInside", text({u"a\0b", 3}), text({u"a\0a", 3}), 1},
    {"LoneSurrogates", text({u"\xD800", 1}), text({u"\xD801", 1}), -1},
    {"LongSlice", slice(std::u16string(100, u'x')), text(std::u16string(100, u'x')), 0},
    {"Bytes", ByteArray("\xFF"), ByteArray("a"), 1},
    {"EqualBytes", ByteArray("a"), ByteArray("a"), 0},
    {"BytesAreNoText", ByteArray("a"), text(u"a"), 1},
    {"Tuples", tupleOf(1, 2), tupleOf(1, 3), -1},
    {"ShorterTuple", tupleOf(1), tupleOf(1, Any()), -1},
    {"EqualTuples", tupleOf(1, tupleOf(tupleOf(tupleOf(1)))), tupleOf(1.0, tupleOf(tupleOf(tupleOf(1.0)))), 0},
    {"LongTuples", Tuple_Generic(std::vector<Any>(100, 1)), Tuple_Generic(std::vector<Any>(100, 1.0)), 0},
    {"LongAndLonger", Tuple_Generic(std::vector<Any>(100, 1)), Tuple_Generic(std::vector<Any>(101, 1)), -1},
    {"Lists", listOf(1, listOf(2)), listOf(1, listOf(3)), -1},
    {"EqualLists", listOf(1, listOf()), listOf(1, listOf()), 0, false},
    {"TuplesOfLists", tupleOf(listOf(1)), tupleOf(listOf(1)), 0, false},
    {"ListIsNoTuple", listOf(1), tupleOf(1), 1},
    {"MapsInAnyOrder", mapOf({{1, 2}, {3, 4}}), mapOf({{3, 4}, {1, 2}}), 0, false},
    {"SmallerMap", mapOf({{9, 9}}), mapOf({{1, 2}, {3, 4}}), -1},
    {"MapsWithin", mapOf({{1, listOf(2)}}), mapOf({{1, listOf(2)}}), 0, false},
    {"Sets", setOf({1, 2}), setOf({2, 1}), 0, false},
    {"LargerSet", setOf({1, 2, 3}), setOf({4, 5}), 1},
    {"Dates", Date(2024, 2, 29), Date(2024, 3, 1), -1},
    {"EqualDates", Date(2024, 2, 29), Date(2024, 2, 29), 0},
    {"LazyIsItsValue", Lazy_Generic([] { return Any(5); }), 5, 0},
    {"WithinLists", listOf(Lazy_Generic([] { return Any(5); })), listOf(5), 0, false},
    {"Types", String::getType(), String::getType(), 0},
};
LING_TABLE(Comparison, LiveObjects, kPairs);

TEST_P(Comparison, OrdersBothWaysAndTellsKeysApart) {
    const auto& [name, a, b, order, isOneKey] = GetParam();
    EXPECT_EQ(ordered(a, b), order);
    EXPECT_EQ(ordered(b, a), -order);
    EXPECT_EQ(ordered(tupleOf(a), tupleOf(b)), order);
    for (const auto& [first, second] : {std::pair(a, b), std::pair(b, a)}) {
        const Map_Generic map;
        map.set(first, 1);
        EXPECT_EQ(shown(map.contains(first)), "true");
        EXPECT_EQ(shown(map.contains(second)), isOneKey ? "true" : "false");
        map.set(second, 2);
        EXPECT_EQ(map.size(), isOneKey ? 1u : 2u);
        const Set_Generic set;
        EXPECT_EQ(shown(set.insert(first)), "true");
        EXPECT_EQ(shown(set.insert(second)), isOneKey ? "false" : "true");
        EXPECT_EQ(shown(set.remove(second)), "true");
        EXPECT_EQ(shown(set.contains(first)), isOneKey ? "false" : "true");
    }
}

/// Values of every kind, with several that are equal to each other.
std::vector<Any> corpus() {
    const Class_Generic plain = defclass_impl("Plain", "").build();
    const Class_Generic key =
        keyClass([](const Any&, const Any&) { return Any(-1); }, [](const Any&) { return Any(1); });
    const List_Generic shared = listOf(1);
    std::vector<Any> values =
        listOf(Any(), Undefined(), false, true, 0, -0.0, decimal("0E+9"), 1, 1.0, 0.1, decimal("0.1"), kLargest, 0x1p63,
               decimal("9223372036854775808"), kInfinity, kNaN, decimal("NaN"), decimal("1E+999999999"), String(),
               text(u"1"), text(u"a"), slice(std::u16string(80, u'a')), text(std::u16string(80, u'a')),
               text({u"a\0", 2}), text(std::u16string{0xD800}), ByteArray(), ByteArray("a"),
               ByteArray(std::string_view("\0", 1)), tupleOf(), tupleOf(Any()), tupleOf(1), tupleOf(1.0),
               tupleOf(tupleOf(1), u"x"), tupleOf(tupleOf(1.0), u"x"), tupleOf(kNaN), tupleOf(decimal("NaN")),
               tupleOf(true), tupleOf(shared), tupleOf(shared), listOf(), listOf(1), listOf(1.0), listOf(listOf()),
               shared, Date(2024, 1, 1), Date(2024, 1, 1), Date(2025, 1, 1), Time(1, 2, 3),
               DateTime(Date(2024, 1, 1), Time(0, 0, 0)), Error(u"x"), Error(u"x"), String::getClass(),
               List_Generic::getClass(), String::getType(), Any::getType(), find_module(u"ling"),
               plain.allocateInstance(), plain.allocateInstance(), plain, make_function("f", "", [] {}),
               make_function("f", "", [] {}), key.allocateInstance(), Boxed<int>(1), Boxed<int>(1),
               Lazy_Generic([] { return Any(1); }), Weak_Generic(String::getClass()))
            .copyItems();
    return values;
}

std::vector<Any> unorderedValues() {
    const Any map = mapOf({{1, 2}});
    return listOf(map, mapOf({{1, 2}}), mapOf({{1.0, 2.0}}), mapOf({{1, 3}}), mapOf({{1, 1}, {2, 2}}),
                  mapOf({{2, 1}, {1, 2}}), Map_Generic(), setOf({1}), setOf({1.0}), setOf({2}), Set_Generic(),
                  listOf(map), mapOf({{1, map}}), mapOf({{map, 1}}))
        .copyItems();
}

/// Everything that hashes by its content, as far as these tests have such values.
bool hashesByContent(const Any& value) {
    if (value.is(Kind::Tuple)) {
        const std::span<const Any> items = unchecked<Tuple_Generic>(value).items();
        return std::all_of(items.begin(), items.end(), hashesByContent);
    }
    return !value.is(Kind::List) && !value.is(Kind::Map) && !value.is(Kind::Set);
}

TEST(ComparisonOfAll, IsReflexiveAndAntisymmetricAndAgreesWithHashes) {
    std::vector<Any> values = corpus();
    for (const Any& value : unorderedValues())
        values.push_back(value);
    for (const Any& a : values) {
        EXPECT_EQ(ordered(a, a), 0) << shown(a);
        EXPECT_EQ(hash_of(a), hash_of(a)) << shown(a);
        for (const Any& b : values) {
            EXPECT_EQ(ordered(a, b), -ordered(b, a)) << shown(a) << " and " << shown(b);
            const bool alike = ordered(a, b) != 0 || hash_of(a) == hash_of(b);
            EXPECT_TRUE(alike || !hashesByContent(a) || !hashesByContent(b)) << shown(a) << " and " << shown(b);
        }
    }
}

TEST(ComparisonOfAll, IsTransitive) {
    const std::vector<Any> values = corpus();
    const std::size_t count = values.size();
    std::vector<int> order;
    for (const Any& a : values)
        for (const Any& b : values)
            order.push_back(ordered(a, b));
    for (std::size_t i = 0; i < count * count * count; ++i) {
        const std::size_t a = i / count / count;
        const std::size_t b = i / count % count;
        const std::size_t c = i % count;
        const int ab = order[a * count + b];
        const int bc = order[b * count + c];
        const bool holds = ab > 0 || bc > 0 || order[a * count + c] <= std::max(ab, bc);
        ASSERT_TRUE(holds) << shown(values[a]) << ", " << shown(values[b]) << ", " << shown(values[c]);
    }
}

TEST(ComparisonOfAll, DifferentValuesRarelyShareAHash) {
    std::set<std::int64_t> hashes;
    constexpr int kCount = 100;
    for (int i = 0; i < kCount; ++i)
        for (int j = 0; j < kCount; ++j)
            hashes.insert(hash_of(tupleOf(i, j)));
    EXPECT_EQ(hashes.size(), kCount * kCount);
    EXPECT_NE(hash_of(tupleOf(tupleOf(1), 2)), hash_of(tupleOf(1, tupleOf(2))));
    EXPECT_NE(hash_of(tupleOf()), hash_of(tupleOf(tupleOf())));
    EXPECT_NE(hash_of(listOf()), hash_of(listOf()));
}

class ComparisonOf : public LiveObjects {};

TEST_F(ComparisonOf, ValuesThatHoldThemselvesAreEqualUnlessADifferenceShows) {
    const List_Generic a = listOf(1);
    const List_Generic b = listOf(1);
    a.append(a);
    b.append(b);
    EXPECT_EQ(ordered(a, b), 0);
    const List_Generic around = listOf(1, a);
    EXPECT_EQ(ordered(a, around), 0);
    a.append(2);
    b.append(3);
    EXPECT_EQ(ordered(a, b), -1);
    EXPECT_EQ(ordered(b, a), 1);
    a.clear();
    b.clear();
}

Class_Generic comparedBy(std::function<Any(const Any& self, const Any& other)> compare) {
    return keyClass(std::move(compare), [](const Any&) { return Any(1); });
}

TEST_F(ComparisonOf, TheClassOfEitherSideAnswers) {
    const Any self = comparedBy([](const Any&, const Any& other) {
                         return Any(other.is(Kind::Integer) ? 5 : -7);
                     }).allocateInstance();
    EXPECT_EQ(ordered(self, 1), 1);
    EXPECT_EQ(ordered(1, self), -1);
    EXPECT_EQ(ordered(self, listOf()), -1);
    EXPECT_EQ(ordered(decimal("1"), self), 1);
    const Any smallest = comparedBy([](const Any&, const Any&) { return Any(kSmallest); }).allocateInstance();
    EXPECT_EQ(ordered(1, smallest), 1);
}

TEST_F(ComparisonOf, AnAnswerThatIsNoIntegerDoesNotCount) {
    for (const Any& answer : {failure(u"No order."), Any(true), Any(1.0), Any(), Any(String(u"less"))}) {
        const Class_Generic cls = comparedBy([answer](const Any&, const Any&) { return answer; });
        const Any a = cls.allocateInstance();
        const Any b = cls.allocateInstance();
        EXPECT_EQ(ordered(a, a), 0);
        EXPECT_NE(ordered(a, b), 0);
        EXPECT_EQ(ordered(a, b), -ordered(b, a));
        EXPECT_EQ(ordered(1, a), -1) << "Objects come after numbers.";
        EXPECT_EQ(ordered(a, 1), 1);
    }
}

TEST_F(ComparisonOf, TheOtherSideAnswersWhereOneCannot) {
    const Any silent = comparedBy([](const Any&, const Any&) { return failure(u"No."); }).allocateInstance();
    const Any speaking = comparedBy([](const Any&, const Any&) { return Any(1); }).allocateInstance();
    EXPECT_EQ(ordered(speaking, silent), 1);
    EXPECT_EQ(ordered(silent, speaking), -1);
}

TEST_F(ComparisonOf, TheDerivedClassComesFirst) {
    const Class_Generic base = comparedBy([](const Any&, const Any&) { return Any(1); });
    const Class_Generic derived =
        defclass_impl("Derived", "")
            .parent(base)
            .method(Any::$__compare__, "other", [](const Any&, const Any&) { return std::int64_t{0}; })
            .build();
    EXPECT_EQ(ordered(base.allocateInstance(), derived.allocateInstance()), 0);
    EXPECT_EQ(ordered(derived.allocateInstance(), base.allocateInstance()), 0);
    const Class_Generic silent =
        defclass_impl("Silent", "")
            .parent(base)
            .method(Any::$__compare__, "other", [](const Any&, const Any&) { return String(); })
            .build();
    EXPECT_EQ(ordered(base.allocateInstance(), silent.allocateInstance()), 1);
    EXPECT_EQ(ordered(silent.allocateInstance(), base.allocateInstance()), -1);
}

const field_ident_untyped $next("_next");

/// Objects that compare and hash by what the next of them says.
TEST_F(ComparisonOf, ChainsAreFollowedAsFarAsTheStackReaches) {
    const Class_Generic cls =
        defclass_impl("Link", "")
            .field($next)
            .method(
                Any::$__compare__, "other",
                [](const Any& a, const Any& b) { return compare_objects(a.fieldValue($next), b.fieldValue($next)); })
            .method(Any::$__hash__, "", [](const Any& self) { return hash_of(self.fieldValue($next)); })
            .build();
    const auto chain = [&](int length, Any last) {
        for (int i = 0; i < length; ++i) {
            const Any link = cls.allocateInstance();
            (void)link.setFieldValue($next, last);
            last = link;
        }
        return last;
    };
    EXPECT_EQ(ordered(chain(1000, 1), chain(1000, 1.0)), 0);
    EXPECT_EQ(ordered(chain(1000, 1), chain(1000, 2)), -1);
    EXPECT_EQ(hash_of(chain(1000, 1)), hash_of(1));
    onSmallStack([&] {
        const Any deep = chain(20'000, 1);
        const Any same = chain(20'000, 1);
        const Any kTooDeep = failure(u"The value is nested too deeply.");
        EXPECT_EQ(shown(try_compare(deep, same)), shown(kTooDeep));
        EXPECT_EQ(shown(try_compare(listOf(deep), listOf(same))), shown(kTooDeep));
        EXPECT_EQ(shown(try_hash(tupleOf(deep))), shown(kTooDeep));
        EXPECT_EQ(shown(listOf(deep).contains(same)), shown(kTooDeep));
        EXPECT_EQ(shown(tupleOf(deep).indexOf(same)), shown(kTooDeep));
        Map_Generic map;
        EXPECT_EQ(shown(map.set(deep, 1)), shown(kTooDeep));
        EXPECT_EQ(map.size(), 0u);
        EXPECT_THROW((void)Map_Generic({{deep, 1}}), ErrorException);
        EXPECT_THROW((void)Set_Generic({deep}), ErrorException);
        EXPECT_EQ(shown(try_compare(1, 1)), "0") << "The next one starts afresh.";
    });
}

/// Values of which each holds the one before twice: walking them takes longer than anybody waits.
TEST_F(ComparisonOf, WalksEndWhenTheProgramIsToStop) {
    const auto doubled = [](Any (*twice)(const Any&)) {
        Any value = twice(1);
        for (int i = 0; i < 60; ++i)
            value = twice(value);
        return value;
    };
    const auto pair = [](const Any& value) -> Any { return tupleOf(value, value); };
    const Any a = doubled(pair);
    const Any b = doubled(pair);
    internal::set_interruption_check([] { return true; });
    const std::string kStopped = shown(internal::failure(u"The call was interrupted."));
    EXPECT_EQ(shown(try_hash(a)), kStopped);
    EXPECT_EQ(shown(try_compare(a, b)), kStopped);
    EXPECT_EQ(shown(try_display(a)), kStopped);
    EXPECT_NE(display(a).toStdString().find("..."), std::string::npos);
    EXPECT_EQ(shown(listOf(a).contains(b)), kStopped);
    EXPECT_EQ(shown(Map_Generic().set(a, 1)), kStopped);
    internal::set_interruption_check(nullptr);
    EXPECT_EQ(shown(try_compare(1, 1)), "0") << "The next one starts afresh.";
}

TEST_F(ComparisonOf, ValuesWithoutAnEndHashAlike) {
    Any first;
    first = tupleOf(1, External_Generic([&] { return first; }));
    Any second;
    second = tupleOf(1, External_Generic([&] { return tupleOf(1, External_Generic([&] { return second; })); }));
    Any made;
    made = External_Generic([&] { return tupleOf(1, made); });
    EXPECT_EQ(hash_of(first), hash_of(second));
    EXPECT_EQ(hash_of(first), hash_of(made));
    first = second = made = Any();
}

TEST_F(ComparisonOf, AClassMayChangeTheContainersThatAreCompared) {
    const List_Generic a = listOf();
    const Class_Generic cls = comparedBy([&](const Any&, const Any&) {
        a.clear();
        return Any(0);
    });
    for (int i = 0; i < 3; ++i)
        a.append(cls.allocateInstance());
    const List_Generic b = listOf(1, 1, 1);
    EXPECT_EQ(ordered(a, b), 0) << "Those items are compared that were there at first.";
    EXPECT_EQ(a.size(), 0u);
}

}  // namespace
}  // namespace ling::testing
