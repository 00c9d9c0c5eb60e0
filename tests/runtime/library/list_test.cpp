#include "runtime/support/live_objects.h"
#include "runtime/support/sequence_model.h"

namespace ling {
namespace {

using namespace ling::testing;

class List_ : public LiveObjects {};

TEST_F(List_, AgreesWithTheModel) {
    expectAgreement(3, true, [] { return List_Generic(); });
    expectAgreement(3, true, [] { return listOf(5, 1, 2); }, {5, 1, 2});
}

TEST_F(List_, AgreesWithTheModelWhenAClassDerivesFromIt) {
    const Class_Generic derived = internal::defclass_impl("Derived", "").parent(List_Generic::getClass()).build();
    expectAgreement(2, true, [&] { return derived(); });
}

struct IndexCase {
    const char* name;
    Any index;
    const char* expected;
};

const IndexCase kIndexCases[] = {
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

class ListIndex : public LiveObjectsOf<::testing::TestWithParam<IndexCase>> {};

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

INSTANTIATE_TEST_SUITE_P(Rows, ListIndex, ::testing::ValuesIn(kIndexCases),
                         [](const auto& row) { return row.param.name; });

TEST_F(List_, RemovesAllThatIsAskedForOrNothing) {
    const List_Generic list = listOf(0, 1, 2, 3);
    EXPECT_EQ(shown(list.removeAt(2, 3)), "error: Index out of range: 4.");
    EXPECT_EQ(shown(list.removeAt(2, INT64_MAX)), "error: Index out of range: 9223372036854775807.");
    EXPECT_EQ(shown(list.removeAt(9, 2)), "error: Index out of range: 9.");
    EXPECT_EQ(shown(list.removeAt(9, 0)), "none");
    EXPECT_EQ(shown(list.removeAt(9, -1)), "none");
    EXPECT_EQ(shown(list), "[0, 1, 2, 3]");
    EXPECT_EQ(shown(list.removeAt(0, 4)), "none");
    EXPECT_EQ(shown(list), "[]");
    EXPECT_EQ(shown(list.removeAt(0, 1)), "error: Index out of range: 0.");
}

TEST_F(List_, IsMadeFromAnyIterable) {
    const Class_Generic cls = List_Generic::getClass();
    EXPECT_EQ(shown(cls()), "[]");
    EXPECT_EQ(shown(cls(Any())), "[]");
    EXPECT_EQ(shown(cls(tupleOf(1, 2))), "[1, 2]");
    EXPECT_EQ(shown(cls(Set_Generic(std::vector<Any>{3, 3, 4}))), "[3, 4]");
    const std::pair<Any, Any> pairs[] = {{1, 2}};
    EXPECT_EQ(shown(cls(Map_Generic(pairs))), "[1]");
    EXPECT_EQ(shown(cls(listOf(1, 2).iter())), "[1, 2]");
    EXPECT_EQ(shown(cls(5)), "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'.");
    EXPECT_TRUE(cls().isSameAs(cls()) == false);
    EXPECT_EQ(shown(cls(1, 2)), "error: Superfluous argument 2 of 'List': it takes 1, 2 were given.");
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

TEST_F(List_, NeverHoldsAnErrorResult) {
    const Error error(u"Refused.", true);
    const List_Generic list = listOf(1);
    const auto& handle = unchecked<I_MutableSequence_Generic>(list);
    for (const Any& outcome : {handle.append(error), handle.set(0, error), handle.appendAt(0, error),
                               list.callMethod(I_MutableSequence_Generic::$append, {error})})
        EXPECT_TRUE(outcome.isSameAs(error));
    EXPECT_EQ(shown(list), "[1]");
    EXPECT_EQ(shown(handle.append(Error(u"A value."))), "none") << "Without the flag it is a value like any other.";
    EXPECT_EQ(shown(list), "[1, A value.]");
}

TEST_F(List_, HoldsItselfWithoutHarm) {
    const List_Generic list = listOf(1);
    list.append(list);
    EXPECT_EQ(shown(list.contains(list)), "true");
    EXPECT_EQ(shown(list.indexOf(list)), "1");
    EXPECT_EQ(shown(list), "[1, ...]");
    list.clear();
}

TEST_F(List_, FindsWhatIsTheSameOrEqual) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const List_Generic list = listOf(1, "text", nan, true);
    EXPECT_EQ(shown(list.indexOf(1.0)), "0");
    EXPECT_EQ(shown(list.indexOf(Decimal(1))), "0");
    EXPECT_EQ(shown(list.indexOf(nan)), "2");
    EXPECT_EQ(shown(list.indexOf(true)), "3") << "A truth value is no number.";
    EXPECT_EQ(shown(list.indexOf(String(u"text"))), "1");
    EXPECT_EQ(shown(listOf(listOf(1)).contains(listOf(1))), "true");
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
        internal::defclass_impl("Shouting", "")
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
        internal::defclass_impl("Mixed", "").parent(Error::getClass()).parent(List_Generic::getClass()).build();
    const Any instance = mixed.allocateInstance();
    EXPECT_EQ(shown(List_Generic::cast(instance)), "error: Unable to cast a value of class 'Mixed' to 'ling.List'.");
    EXPECT_EQ(shown(append(instance, 2)), "error: Argument 'self' of 'append' must be of type 'List', not 'Mixed'.");
}

TEST_F(List_, CountsFromItsMembersAsFromItsHandle) {
    EXPECT_EQ(shown(listOf(1, 2).propertyValue(I_Sequence_Generic::$$length)), "2");
    EXPECT_EQ(shown(List_Generic().length()), "0");
    EXPECT_EQ(shown(listOf(1, 2).callMethod(I_Iterable_Generic::$contains, {2})), "true");
}

class Tuple_ : public LiveObjects {};

TEST_F(Tuple_, IsMadeFromAnyIterable) {
    const Class_Generic cls = Tuple_Generic::getClass();
    EXPECT_EQ(shown(cls()), "()");
    EXPECT_EQ(shown(cls(listOf(1, "a", 2.5))), "(1, 'a', 2.5)");
    EXPECT_EQ(shown(cls(5)), "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'.");
    EXPECT_EQ(shown(cls(1, 2)), "error: The class 'ling.Tuple' takes one iterable, 2 arguments were given.");
    EXPECT_EQ(shown(cls.allocateInstance()), "()");
    const Class_Generic derived = internal::defclass_impl("Pair", "").parent(cls).build();
    EXPECT_EQ(raw_class_of(derived(listOf(1, 2))), derived);
}

TEST_F(Tuple_, AddsMultipliesAndSearches) {
    const Tuple_Generic tuple = tupleOf(1, 2);
    EXPECT_EQ(shown(tuple.callMethod(Any::$__add__, {listOf(3)})), "(1, 2, 3)");
    EXPECT_EQ(shown(tuple.callMethod(Any::$__mul__, {2})), "(1, 2, 1, 2)");
    EXPECT_EQ(shown(tuple.callMethod(Any::$__mul__, {INT64_MAX})),
              "error: The result would be too long: 2 items, 9223372036854775807 times.");
    EXPECT_EQ(shown(tuple.contains(2)), "true");
    EXPECT_EQ(shown(tuple.callMethod(I_Iterable_Generic::$contains, {3})), "false");
    EXPECT_EQ(shown(tuple.length()), "2");
    EXPECT_EQ(walked(tuple), "[1, 2]");
    EXPECT_EQ(shown(tuple.collectImpl()), "[1, 2]");
    EXPECT_EQ(shown(tuple.callMethod(I_MutableSequence_Generic::$append, {1})),
              "error: Method 'append' not found in: (1, 2).");
}

}  // namespace
}  // namespace ling
