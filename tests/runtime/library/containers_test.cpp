#include "runtime/support/values.h"

/// The native list, tuple, map and set.

namespace ling::testing {
namespace {

class List_ : public LiveObjects {};

const struct IndexCase {
    const char* name;
    Any index;
    const char* expected;
} kIndexCases[] = {
    {"First", 0, "10"},
    {"Last", 2, "30"},
    {"LastFromTheEnd", -1, "30"},
    {"FirstFromTheEnd", -3, "10"},
    {"PastTheEnd", 3, "error: Index out of range: 3."},
    {"BeforeTheStart", -4, "error: Index out of range: -4."},
    {"Smallest", INT64_MIN, "error: Index out of range: -9223372036854775808."},
    {"Largest", INT64_MAX, "error: Index out of range: 9223372036854775807."},
    {"Lazy", Lazy_Generic([] { return Any(1); }), "20"},
    {"Float", 1.0, "error: An index must be an integer, not a value of class 'ling.Float'."},
    {"Boolean", true, "error: An index must be an integer, not a value of class 'ling.Boolean'."},
    {"Text", String(u"1"), "error: An index must be an integer, not a value of class 'ling.String'."},
    {"None", Any(), "error: An index must be an integer, not a value of class 'ling.None'."},
    {"ErrorResult", Error(u"No index.", true), "error: No index."},
};

LING_TABLE(ListIndex, LiveObjects, kIndexCases);

TEST_P(ListIndex, NamesAnItemOrIsRefused) {
    const std::string expected = GetParam().expected;
    const Any& index = GetParam().index;
    const bool found = expected.rfind("error", 0) != 0;
    for (const Any& sequence : {Any(listOf(10, 20, 30)), Any(tupleOf(10, 20, 30))}) {
        const auto& handle = unchecked<I_Sequence_Generic>(sequence);
        EXPECT_EQ(shown(handle.at(index)), expected);
        EXPECT_EQ(shown(sequence.callMethod(I_Sequence_Generic::$at, {index})), expected);
        EXPECT_EQ(shown(handle.atOr(index, String(u"else"))), found ? expected : "else");
    }
    EXPECT_EQ(shown(listOf(10, 20, 30).pop(index)), expected);
    const std::string done = found ? "none" : expected;
    EXPECT_EQ(shown(unchecked<I_MutableSequence_Generic>(listOf(10, 20, 30)).set(index, 0)), done);
    EXPECT_EQ(shown(listOf(10, 20, 30).removeAt(index)), done);
}

TEST_F(List_, ContainersAreMadeFromWhatCanBeWalked) {
    const Class_Generic list = List_Generic::getClass();
    const Class_Generic tuple = Tuple_Generic::getClass();
    const Class_Generic map = Map_Generic::getClass();
    const Class_Generic set = Set_Generic::getClass();
    const std::pair<Any, const char*> rows[] = {
        {list(), "[]"},
        {list(Any()), "[]"},
        {list(tupleOf(1, 2)), "[1, 2]"},
        {list(Map_Generic{{1, 2}}), "[1]"},
        {list(listOf(1, 2).iter()), "[1, 2]"},
        {list(5), "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'."},
        {list(1, 2), "error: Superfluous argument 2 of 'List': it takes 1, 2 were given."},
        {tuple(), "()"},
        {tuple(listOf(1, "a", 2.5)), "(1, 'a', 2.5)"},
        {tuple(5), "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'."},
        {tuple(1, 2), "error: The class 'ling.Tuple' takes one iterable, 2 arguments were given."},
        {set(), "Set()"},
        {set(listOf(2, 1, 2)), "{2, 1}"},
        {set(5), "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'."},
        {map(), "{}"},
        {map(Map_Generic{{1, 2}, {"a", listOf(3)}}), "{1: 2, 'a': [3]}"},
        {map(listOf(1)), "error: Unable to cast a value of class 'ling.List' to 'ling.I_Map'."},
        {JsonObject::getClass()(Map_Generic{{1, 2}}), "{1: 2}"}};
    for (const auto& [made, expected] : rows)
        EXPECT_EQ(shown(made), expected);
    const Class_Generic derived = defclass_impl("Pair", "").parent(tuple).build();
    EXPECT_EQ(raw_class_of(derived(listOf(1, 2))), derived);
    EXPECT_EQ(raw_class_of(JsonObject::getClass()()), JsonObject::getClass());
    const Map_Generic source{{1, 2}};
    const Any copy = map(source);
    source.set(4, 5);
    EXPECT_EQ(shown(copy), "{1: 2}");
}

TEST_F(List_, NoContainerHoldsAnErrorResult) {
    const Error error(u"Refused.", true);
    const List_Generic list = listOf(1);
    const Map_Generic map;
    const Set_Generic set;
    const auto& handle = unchecked<I_MutableSequence_Generic>(list);
    for (const Any& outcome :
         {handle.append(error), handle.set(0, error), handle.appendAt(0, error), list.callMethod("append", {error}),
          map.set(1, error), map.set(error, 1), map.get(error), map.get(error, 1), map.contains(error),
          map.remove(error), map.callMethod("set", {1, error}), map.set(Lazy_Generic([error] { return error; }), 1),
          set.insert(error), set.contains(error), set.remove(error)})
        EXPECT_TRUE(outcome.isSameAs(error)) << shown(outcome);
    EXPECT_EQ(map.size() + set.size(), 0u);
    EXPECT_EQ(shown(handle.append(Error(u"A value."))), "none") << "Without the flag it is a value like any other.";
    EXPECT_EQ(shown(list), "[1, A value.]");
}

TEST_F(List_, AddsAndMultiplies) {
    const List_Generic list = listOf(1, 2);
    EXPECT_EQ(shown(list.callMethod(Any::$__add__, {tupleOf(3)})), "[1, 2, 3]");
    EXPECT_EQ(shown(list.callMethod(Any::$__add__, {list})), "[1, 2, 1, 2]");
    EXPECT_EQ(shown(list.callMethod(Any::$__add__, {3})),
              "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'.");
    EXPECT_EQ(shown(list.callMethod(Any::$__mul__, {2})), "[1, 2, 1, 2]");
    EXPECT_EQ(shown(list.callMethod(Any::$__mul__, {0})), "[]");
    EXPECT_EQ(shown(list.callMethod(Any::$__mul__, {-1})), "[]");
    EXPECT_EQ(shown(list.callMethod(Any::$__mul__, {INT64_MAX})),
              "error: The result would be too long: 2 items, 9223372036854775807 times.");
    EXPECT_EQ(shown(List_Generic().callMethod(Any::$__mul__, {INT64_MAX})), "[]");
    EXPECT_EQ(shown(list.callMethod(Any::$__mul__, {1.5})),
              "error: An index must be an integer, not a value of class 'ling.Float'.");
    EXPECT_EQ(shown(list), "[1, 2]");
    const Tuple_Generic tuple = tupleOf(1, 2);
    EXPECT_EQ(shown(tuple.callMethod(Any::$__add__, {listOf(3)})), "(1, 2, 3)");
    EXPECT_EQ(shown(tuple.callMethod(Any::$__mul__, {2})), "(1, 2, 1, 2)");
    EXPECT_EQ(shown(tuple.callMethod(Any::$__mul__, {INT64_MAX})),
              "error: The result would be too long: 2 items, 9223372036854775807 times.");
    EXPECT_EQ(shown(tuple.contains(2)), "true");
    EXPECT_EQ(shown(tuple.callMethod("append", {1})), "error: Method 'append' not found in: (1, 2).");
}

TEST_F(List_, AddsAndMultipliesInPlace) {
    const List_Generic list = listOf(1, 2);
    EXPECT_TRUE(list.callMethod(Any::$__iadd__, {list}).isSameAs(list));
    EXPECT_EQ(shown(list), "[1, 2, 1, 2]");
    EXPECT_EQ(shown(list.callMethod(Any::$__iadd__, {5})),
              "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'.");
    EXPECT_TRUE(list.callMethod(Any::$__imul__, {2}).isSameAs(list));
    EXPECT_EQ(list.size(), 8u);
    EXPECT_EQ(shown(list.callMethod(Any::$__imul__, {INT64_MAX})),
              "error: The result would be too long: 8 items, 9223372036854775807 times.");
    EXPECT_TRUE(list.callMethod(Any::$__imul__, {1}).isSameAs(list));
    EXPECT_EQ(list.size(), 8u);
    EXPECT_TRUE(list.callMethod(Any::$__imul__, {0}).isSameAs(list));
    EXPECT_EQ(shown(list), "[]");
}

TEST_F(List_, AComparisonMayChangeTheListItSearches) {
    const List_Generic list;
    const Class_Generic cls = keyClass(
        [&list](const Any&, const Any&) -> Any {
            list.clear();
            return 1;
        },
        [](const Any&) -> Any { return 0; });
    for (int i = 0; i < 10; ++i)
        list.append(cls.allocateInstance());
    EXPECT_EQ(shown(list.indexOf(5)), "-1");
    EXPECT_EQ(shown(list), "[]");
}

TEST_F(List_, RemovingOneFindsTheItemAgainWhereverItMovedTo) {
    const List_Generic list;
    const Class_Generic cls = keyClass(
        [&list](const Any&, const Any&) -> Any {
            list.appendAt(0, String(u"moved"));
            return 0;
        },
        [](const Any&) -> Any { return 0; });
    list.append(cls.allocateInstance());
    EXPECT_EQ(shown(list.removeOne(5)), "true");
    EXPECT_EQ(shown(list), "['moved']");
}

TEST_F(List_, RemovingOneGivesUpWhereAComparisonAlwaysTakesTheItemAway) {
    const List_Generic list;
    Class_Generic cls;
    cls = keyClass(
        [&](const Any&, const Any&) -> Any {
            list.clear();
            list.append(cls.allocateInstance());
            return 0;
        },
        [](const Any&) -> Any { return 0; });
    list.append(cls.allocateInstance());
    EXPECT_EQ(shown(list.removeOne(5)), "false");
    EXPECT_EQ(list.size(), 1u);
}

TEST_F(List_, ADerivedClassOverridesForEveryCaller) {
    const Class_Generic derived =
        defclass_impl("Shouting", "")
            .parent(List_Generic::getClass())
            .method(I_Sequence_Generic::$at, "index", [](const Any&, const Any&) -> Any { return String(u"!"); })
            .build();
    const Any list = derived(listOf(1, 2));
    EXPECT_TRUE(list.is(Kind::List));
    EXPECT_EQ(raw_class_of(list), derived);
    EXPECT_EQ(shown(unchecked<I_Sequence_Generic>(list).at(0)), "!");
    EXPECT_EQ(shown(unchecked<List_Generic>(list).at(0)), "1") << "The storage itself is not asked through the class.";
    EXPECT_EQ(shown(List_Generic::cast(list)), shown(list));
}

TEST_F(List_, MembersRefuseAnotherReceiver) {
    const I_Invokable_Generic append = method_of(List_Generic(), I_MutableSequence_Generic::$append);
    EXPECT_EQ(shown(append(tupleOf(1), 2)),
              "error: Argument 'self' of 'append' must be of type 'List', not 'ling.Tuple'.");
    // A class may derive from the list and yet make objects of another kind.
    const Class_Generic mixed =
        defclass_impl("Mixed", "").parent(Error::getClass()).parent(List_Generic::getClass()).build();
    const Any instance = mixed.allocateInstance();
    EXPECT_EQ(shown(List_Generic::cast(instance)), "error: Unable to cast a value of class 'Mixed' to 'ling.List'.");
    EXPECT_EQ(shown(append(instance, 2)), "error: Argument 'self' of 'append' must be of type 'List', not 'Mixed'.");
}

class Map_ : public LiveObjects {
protected:
    template <class... Pairs>
    static Map_Generic mapOf(const Pairs&... pairs) {
        const std::vector<std::pair<Any, Any>> list{pairs...};
        return Map_Generic(list);
    }
    static std::pair<Any, Any> pair(const Any& key, const Any& value) { return {key, value}; }
};

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

TEST_F(Map_, PairsAreReadWithLazyValuesResolved) {
    const Map_Generic map = mapOf(pair(1, Lazy_Generic([] { return Any(7); })));
    const auto pairs = static_cast<object_value_hash_map*>(map.object())->copy_and_load_pairs();
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
    EXPECT_EQ(shown(set.propertyValue(I_Set_Generic::$$length)), "2");
    EXPECT_EQ(shown(set.extend(set)), "none");
    EXPECT_EQ(shown(set.extend(failing(2, 3))), "error: Broken.");
    EXPECT_EQ(walked(set), "['a', 2]") << "What fails adds nothing.";
    EXPECT_EQ(shown(set.clear()), "none");
    EXPECT_EQ(walked(set), "[]");
}

}  // namespace
}  // namespace ling::testing
