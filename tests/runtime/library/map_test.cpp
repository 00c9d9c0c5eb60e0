#include "runtime/support/live_objects.h"
#include "runtime/support/values.h"

#include <limits>
#include <optional>

namespace ling {
namespace {

using namespace ling::testing;

class Map_ : public LiveObjects {
protected:
    template <class... Pairs>
    static Map_Generic mapOf(const Pairs&... pairs) {
        const std::vector<std::pair<Any, Any>> list{pairs...};
        return Map_Generic(list);
    }
    static std::pair<Any, Any> pair(const Any& key, const Any& value) { return {key, value}; }
};

/// What a map should do, told with a row of pairs. Keys are numbers of `kKeys`, of which two are one key.
class map_model {
public:
    struct entry {
        int key;
        int first;  // The key as it was first set, which of two equal ones stays.
        int value;
    };

    static int keyOf(int key) { return key == 1 ? 0 : key; }  // 1.0 is the key 1.
    std::optional<std::size_t> find(int key) const {
        for (std::size_t i = 0; i < entries.size(); ++i)
            if (entries[i].key == keyOf(key))
                return i;
        return std::nullopt;
    }
    std::string set(int key, int value) {
        if (const auto found = find(key))
            entries[*found].value = value;
        else
            entries.push_back({keyOf(key), key, value});
        return "none";
    }
    std::string remove(int key, const char* shownKey) {
        const auto found = find(key);
        if (!found)
            return std::string("error: Key not found: ") + shownKey + ".";
        const int value = entries[*found].value;
        entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(*found));
        return std::to_string(value);
    }

    std::vector<entry> entries;
};

struct model_key {
    Any value;
    const char* shown;
    const char* quoted;
};

const model_key kKeys[] = {{1, "1", "1"},          {1.0, "1.0", "1.0"},     {String(u"a"), "a", "'a'"},
                           {true, "true", "true"}, {Any(), "none", "none"}, {tupleOf(1, "a"), "(1, 'a')", "(1, 'a')"}};
constexpr int kKeyCount = 6;
constexpr int kOperations = 2 * kKeyCount + 1;

/// Operation `number`: setting a key, removing it, or removing all.
void doBoth(int number, int step, const Map_Generic& map, map_model& model) {
    const model_key& key = kKeys[number % kKeyCount];
    if (number < kKeyCount) {
        ASSERT_EQ(shown(map.set(key.value, step)), model.set(number, step));
    } else if (number < 2 * kKeyCount) {
        ASSERT_EQ(shown(map.remove(key.value)), model.remove(number - kKeyCount, key.shown));
    } else {
        ASSERT_EQ(shown(map.clear()), "none");
        model.entries.clear();
    }
}

std::string keysOf(const map_model& model) {
    std::string text = "[";
    for (const map_model::entry& entry : model.entries)
        text += (text.size() == 1 ? "" : ", ") + std::string(kKeys[entry.first].quoted);
    return text + "]";
}

void expectSame(const Map_Generic& map, const map_model& model) {
    ASSERT_EQ(map.size(), model.entries.size());
    ASSERT_EQ(shown(map.keys()), keysOf(model));
    std::string values = "[";
    for (const map_model::entry& entry : model.entries)
        values += (values.size() == 1 ? "" : ", ") + std::to_string(entry.value);
    ASSERT_EQ(shown(map.values()), values + "]");
    for (int key = 0; key < kKeyCount; ++key) {
        const auto found = model.find(key);
        ASSERT_EQ(shown(map.get(kKeys[key].value, String(u"absent"))),
                  found ? std::to_string(model.entries[*found].value) : "absent");
        ASSERT_EQ(shown(map.contains(kKeys[key].value)), found ? "true" : "false");
    }
}

TEST_F(Map_, AgreesWithTheModel) {
    constexpr int kLength = 4;
    int total = 1;
    for (int i = 0; i < kLength; ++i)
        total *= kOperations;
    for (int run = 0; run < total && !HasFailure(); ++run) {
        const Map_Generic map;
        map_model model;
        for (int step = 0, rest = run; step < kLength && !HasFailure(); ++step, rest /= kOperations) {
            const Any earlier = map.iter();
            const std::string before = keysOf(model);
            doBoth(rest % kOperations, step, map, model);
            expectSame(map, model);
            ASSERT_EQ(walked(earlier), before) << "An iteration walks the keys as they were when it began.";
        }
    }
}

TEST_F(Map_, KeepsTheOrderOfInsertion) {
    const Map_Generic map = mapOf(pair(String(u"b"), 1), pair(String(u"a"), 2), pair(String(u"c"), 3));
    EXPECT_EQ(shown(map.keys()), "['b', 'a', 'c']");
    map.set(String(u"b"), 4);
    EXPECT_EQ(shown(map.keys()), "['b', 'a', 'c']");
    map.remove(String(u"b"));
    map.set(String(u"b"), 5);
    EXPECT_EQ(shown(map.keys()), "['a', 'c', 'b']");
    EXPECT_EQ(walked(map), "['a', 'c', 'b']");
    EXPECT_EQ(shown(map.values()), "[2, 3, 5]");
}

TEST_F(Map_, GetTellsAMissingKeyFromNone) {
    const Map_Generic map = mapOf(pair(1, Any()));
    EXPECT_EQ(shown(map.callMethod(I_Map_Generic::$get, {1})), "none");
    EXPECT_EQ(shown(map.callMethod(I_Map_Generic::$get, {2})), "error: Key not found: 2.");
    EXPECT_EQ(shown(map.callMethod(I_Map_Generic::$get, {2, Any()})), "none");
    EXPECT_EQ(shown(map.get(2)), "error: Key not found: 2.");
    EXPECT_EQ(shown(map.get(2, 3)), "3");
    EXPECT_EQ(shown(map.remove(2)), "error: Key not found: 2.");
}

TEST_F(Map_, TheFirstOfTwoEqualKeysStays) {
    const Map_Generic map = mapOf(pair(1, String(u"integer")));
    map.set(1.0, String(u"float"));
    EXPECT_EQ(shown(map.keys()), "[1]");
    EXPECT_EQ(shown(map.get(Decimal(1))), "float");
    map.set(Decimal(1), String(u"decimal"));
    EXPECT_EQ(shown(map), "{1: 'decimal'}");
}

struct SameKeyCase {
    const char* name;
    Any a;
    Any b;
    bool same;
};

const double kNaN = std::numeric_limits<double>::quiet_NaN();

const SameKeyCase kSameKeyCases[] = {
    {"IntegerAndFloat", 1, 1.0, true},
    {"IntegerAndNextFloat", (std::int64_t{1} << 53) + 1, 9007199254740992.0, false},
    {"LargestIntegerAndItsNeighbour", INT64_MAX, 9223372036854775808.0, false},
    {"SmallestInteger", INT64_MIN, -9223372036854775808.0, true},
    {"Zeros", 0.0, -0.0, true},
    {"IntegerAndDecimal", 1, *Decimal::cast(Decimal::fromString(u"1.00")), true},
    {"FloatAndDecimal", 0.5, *Decimal::cast(Decimal::fromString(u"0.5")), true},
    {"TrueAndOne", true, 1, false},
    {"FalseAndZero", false, 0, false},
    {"NaNs", kNaN, -kNaN, true},
    {"NaNAndNumber", kNaN, 0.0, false},
    {"NoneAndUndefined", Any(), Undefined(), false},
    {"NoneAndFalse", Any(), false, false},
    {"Texts", String(u"text"), String(u"te") + String(u"xt"), true},
    {"EmptyTextAndBytes", String(), ByteArray(), false},
    {"TextsWithNul", String(std::u16string_view(u"a\0b", 3)), String(std::u16string_view(u"a\0c", 3)), false},
    {"TextAndSlice", String(std::u16string(100, u'x')), String(std::u16string(200, u'x')).sliced(50, 100), true},
    {"LoneSurrogates", String(std::u16string_view(u"\xD800", 1)), String(std::u16string_view(u"\xD801", 1)), false},
    {"Bytes", ByteArray("a"), ByteArray("a"), true},
    {"Tuples", tupleOf(1, "a"), tupleOf(1.0, "a"), true},
    {"TupleAndLonger", tupleOf(1), tupleOf(1, 2), false},
    {"NestedTuples", tupleOf(tupleOf(tupleOf(tupleOf(tupleOf(tupleOf(1)))))),
     tupleOf(tupleOf(tupleOf(tupleOf(tupleOf(tupleOf(1.0)))))), true},
    {"LongTuples", Tuple_Generic(std::vector<Any>(100, 1)), Tuple_Generic(std::vector<Any>(100, 1.0)), true},
    {"LongTuplesThatDiffer", Tuple_Generic(std::vector<Any>(100, 1)), Tuple_Generic(std::vector<Any>(101, 1)), false},
    {"TupleAndList", tupleOf(1), listOf(1), false},
    {"ListsOfEqualItems", listOf(1), listOf(1), false},
    {"TuplesOfLists", tupleOf(listOf(1)), tupleOf(listOf(1)), false},
    {"Maps", Map_Generic(), Map_Generic(), false},
    {"Classes", Integer::getClass(), Float::getClass(), false},
    {"Dates", *Date::cast(Date(2024, 2, 29)), *Date::cast(Date(2024, 2, 29)), true},
    {"Lazy", Lazy_Generic([] { return Any(1); }), 1, true},
};

class SameKey : public LiveObjectsOf<::testing::TestWithParam<SameKeyCase>> {};

TEST_P(SameKey, IsFoundByTheOtherExactlyWhenItIsOne) {
    const auto& [name, a, b, same] = GetParam();
    for (const auto& [first, second] : {std::pair(a, b), std::pair(b, a)}) {
        const Map_Generic map;
        map.set(first, 1);
        EXPECT_EQ(shown(map.contains(first)), "true");
        EXPECT_EQ(shown(map.contains(second)), same ? "true" : "false");
        map.set(second, 2);
        EXPECT_EQ(map.size(), same ? 1u : 2u);
        const Set_Generic set;
        EXPECT_EQ(shown(set.insert(first)), "true");
        EXPECT_EQ(shown(set.insert(second)), same ? "false" : "true");
        EXPECT_EQ(shown(set.remove(second)), "true");
        EXPECT_EQ(shown(set.contains(first)), same ? "false" : "true");
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, SameKey, ::testing::ValuesIn(kSameKeyCases),
                         [](const auto& row) { return row.param.name; });

TEST_F(Map_, AContainerIsTheKeyThatItIsWhateverItHolds) {
    const List_Generic list = listOf(1);
    const Map_Generic map = mapOf(pair(list, 1));
    list.append(2);
    EXPECT_EQ(shown(map.get(list)), "1");
    EXPECT_EQ(shown(map.contains(listOf(1, 2))), "false");
}

TEST_F(Map_, IsMadeFromAnyMap) {
    const Class_Generic cls = Map_Generic::getClass();
    EXPECT_EQ(shown(cls()), "{}");
    const Map_Generic source = mapOf(pair(1, 2), pair(String(u"a"), listOf(3)));
    const Any copy = cls(source);
    EXPECT_EQ(shown(copy), "{1: 2, 'a': [3]}");
    source.set(4, 5);
    EXPECT_EQ(unchecked<Map_Generic>(copy).size(), 2u);
    EXPECT_EQ(shown(cls(listOf(1))), "error: Unable to cast a value of class 'ling.List' to 'ling.I_Map'.");
    EXPECT_TRUE(JsonObject::getClass()(source).is(Kind::Map));
    EXPECT_EQ(raw_class_of(JsonObject::getClass()(source)), JsonObject::getClass());
}

TEST_F(Map_, NeverHoldsAnErrorResult) {
    const Error error(u"Refused.", true);
    const Map_Generic map;
    for (const Any& outcome :
         {map.set(1, error), map.set(error, 1), map.get(error), map.get(error, 1), map.contains(error),
          map.remove(error), map.callMethod(I_MutableMap_Generic::$set, {1, error}),
          map.set(Lazy_Generic([error] { return error; }), 1)})
        EXPECT_TRUE(outcome.isSameAs(error)) << shown(outcome);
    EXPECT_EQ(map.size(), 0u);
}

TEST_F(Map_, IteratingSurvivesEveryChange) {
    const Map_Generic map = mapOf(pair(1, 1), pair(2, 2), pair(3, 3));
    const Any iterator = map.iter();
    const auto& keys = unchecked<I_Iterator_Generic>(iterator);
    EXPECT_EQ(shown(keys.next()), "1");
    map.set(2, 22);
    map.remove(3);
    map.set(4, 4);
    EXPECT_EQ(shown(keys.next()), "2");
    map.clear();
    EXPECT_EQ(shown(keys.next()), "3");
    EXPECT_TRUE(StopIteration::cast(keys.next()));
    for (int i = 0; i < 20; ++i)
        map.set(i, i);
    for (iteration walk = map.beginImpl(); walk.advance();)
        map.remove(walk.item());
    EXPECT_EQ(map.size(), 0u);
}

TEST_F(Map_, StaysSmallWhenKeysComeAndGo) {
    const Map_Generic map;
    for (int i = 0; i < 100'000; ++i) {
        map.set(i, i);
        if (i >= 10) {
            ASSERT_EQ(shown(map.remove(i - 10)), std::to_string(i - 10));
        }
    }
    EXPECT_EQ(shown(map.keys()), "[99990, 99991, 99992, 99993, 99994, 99995, 99996, 99997, 99998, 99999]");
    for (int i = 0; i < 1000; ++i)
        map.set(i, i);
    for (int i = 0; i < 995; ++i)
        map.remove(i);
    map.remove(99'990);
    EXPECT_EQ(map.size(), 14u);
    EXPECT_EQ(shown(map.get(999)), "999");
    EXPECT_EQ(shown(map.get(99'999)), "99999");
    EXPECT_EQ(shown(map.get(5, 0)), "0");
}

TEST_F(Map_, FindsEveryOneOfManyKeys) {
    const Map_Generic map;
    constexpr std::int64_t kStep = std::int64_t{1} << 32;  // Hashes that differ in their high bits alone.
    for (std::int64_t i = 0; i < 20'000; ++i)
        map.set(i * kStep, i);
    for (std::int64_t i = 0; i < 20'000; ++i)
        ASSERT_TRUE(map.get(i * kStep).isSameAs(i));
    EXPECT_EQ(shown(map.get(kStep / 2, -1)), "-1");
}

TEST_F(Map_, PairsAreReadWithLazyValuesResolved) {
    const Map_Generic map = mapOf(pair(1, Lazy_Generic([] { return Any(7); })));
    const auto pairs = static_cast<internal::object_value_hash_map*>(map.object())->copy_and_load_pairs();
    ASSERT_EQ(pairs.size(), 1u);
    EXPECT_TRUE(pairs[0].second.isSameAs(7));
    EXPECT_TRUE(map.get(1).is(Kind::Lazy)) << "The map itself keeps what it was given.";
}

class Set_ : public LiveObjects {};

TEST_F(Set_, InsertsAndRemoves) {
    const Set_Generic set;
    EXPECT_EQ(shown(set.insert(1)), "true");
    EXPECT_EQ(shown(set.insert(1.0)), "false");
    EXPECT_EQ(shown(set.insert(String(u"a"))), "true");
    EXPECT_EQ(shown(set), "{1, 'a'}");
    EXPECT_EQ(shown(set.extend(listOf(2, 1, 2))), "none");
    EXPECT_EQ(walked(set), "[1, 'a', 2]");
    EXPECT_EQ(shown(set.remove(1)), "true");
    EXPECT_EQ(shown(set.remove(1)), "false");
    EXPECT_EQ(shown(set.contains(2)), "true");
    EXPECT_EQ(shown(set.length()), "2");
    EXPECT_EQ(shown(set.propertyValue(I_Set_Generic::$$length)), "2");
    EXPECT_EQ(shown(set.extend(set)), "none");
    EXPECT_EQ(shown(set.clear()), "none");
    EXPECT_EQ(walked(set), "[]");
}

TEST_F(Set_, IsMadeFromAnyIterable) {
    const Class_Generic cls = Set_Generic::getClass();
    EXPECT_EQ(cls().kind(), Kind::Set);
    EXPECT_EQ(shown(cls(listOf(2, 1, 2))), "{2, 1}");
    EXPECT_EQ(shown(cls(5)), "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'.");
}

TEST_F(Set_, NeverHoldsAnErrorResult) {
    const Error error(u"Refused.", true);
    const Set_Generic set;
    for (const Any& outcome : {set.insert(error), set.contains(error), set.remove(error)})
        EXPECT_TRUE(outcome.isSameAs(error));
    EXPECT_EQ(set.size(), 0u);
}

}  // namespace
}  // namespace ling
