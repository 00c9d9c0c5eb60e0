#include "runtime/support/foreign_containers.h"
#include "runtime/support/live_objects.h"

namespace ling {
namespace {

using namespace ling::testing;

class Iterable : public LiveObjects {};

/// An iterable whose iterators answer `steps`, one after the other, and an end after the last.
Any stepping(std::vector<Any> steps) {
    const Class_Generic iteratorClass =
        internal::defclass_impl("Stepping", "")
            .parent(I_Iterator_Generic::getClass())
            .method(I_Iterator_Generic::$next, "",
                    [steps = std::move(steps), next = std::size_t{0}](const Any&) mutable -> Any {
                        return next < steps.size() ? steps[next++] : StopIteration();
                    })
            .build();
    return iteratorClass.allocateInstance();
}

TEST_F(Iterable, DefaultsWalkTheIteration) {
    const Any items = wrap(foreignIterable(), listOf(1, "two", 3.0));
    const auto& handle = unchecked<I_Iterable_Generic>(items);
    EXPECT_EQ(walked(items), "[1, 'two', 3.0]");
    EXPECT_EQ(shown(handle.collectImpl()), "[1, 'two', 3.0]");
    EXPECT_EQ(shown(items.callMethod(I_Iterable_Generic::$collect)), "[1, 'two', 3.0]");
    EXPECT_EQ(shown(handle.contains(String(u"two"))), "true");
    EXPECT_EQ(shown(handle.contains(3)), "true");
    EXPECT_EQ(shown(handle.contains(4)), "false");
}

TEST_F(Iterable, OfNothing) {
    const Any items = wrap(foreignIterable(), List_Generic());
    EXPECT_EQ(walked(items), "[]");
    EXPECT_EQ(shown(unchecked<I_Iterable_Generic>(items).contains(Any())), "false");
}

TEST_F(Iterable, AnErrorEndsTheIterationAndIsReported) {
    const Any failing = stepping({1, internal::failure(u"Broken."), 3});
    iteration walk = unchecked<I_Iterable_Generic>(failing).beginImpl();
    EXPECT_TRUE(walk.advance());
    EXPECT_EQ(shown(walk.item()), "1");
    EXPECT_FALSE(walk.advance());
    EXPECT_EQ(shown(walk.error()), "error: Broken.");
    EXPECT_FALSE(walk.advance()) << "It stays ended, though the iterator would go on.";
    EXPECT_TRUE(walk.failed());
    for (const Any& outcome :
         {unchecked<I_Iterable_Generic>(stepping({internal::failure(u"Broken.")})).contains(1),
          unchecked<I_Iterable_Generic>(stepping({internal::failure(u"Broken.")})).collectImpl().toAny()})
        EXPECT_EQ(shown(outcome), "error: Broken.");
}

TEST_F(Iterable, AnEndOfADerivedClassIsAnEnd) {
    const Class_Generic derived = internal::defclass_impl("Over", "").parent(StopIteration::getClass()).build();
    EXPECT_EQ(walked(stepping({1, derived(u"Over."), 3})), "[1]");
}

TEST_F(Iterable, AnErrorThatIsNoResultIsAnItem) { EXPECT_EQ(walked(stepping({Error(u"Kept."), 2})), "[Kept., 2]"); }

TEST_F(Iterable, LazyItemsAreResolved) {
    const Any items = stepping({Lazy_Generic([] { return Any(7); }), Lazy_Generic([] { return StopIteration(); })});
    iteration walk = unchecked<I_Iterable_Generic>(items).beginImpl();
    ASSERT_TRUE(walk.advance());
    EXPECT_TRUE(walk.item().is(Kind::Integer));
    EXPECT_FALSE(walk.advance());
    EXPECT_EQ(shown(listOf(Lazy_Generic([] { return Any(7); })).collectImpl()), "[7]");
}

TEST_F(Iterable, AnIteratorGivesWhatItHasLeft) {
    const Any iterator = listOf(1, 2, 3).iter();
    EXPECT_EQ(shown(unchecked<I_Iterator_Generic>(iterator).next()), "1");
    ASSERT_TRUE(I_Iterable_Generic::cast(iterator));
    EXPECT_EQ(walked(iterator), "[2, 3]");
    EXPECT_EQ(walked(iterator), "[]");
    EXPECT_EQ(shown(unchecked<I_Iterator_Generic>(iterator).next()), "error: The iteration has ended.");
    EXPECT_TRUE(StopIteration::cast(iterator.callMethod(I_Iterator_Generic::$next)));
}

TEST_F(Iterable, WhatGivesNoIteratorIsAnError) {
    const Class_Generic broken = internal::defclass_impl("Broken", "")
                                     .parent(I_Iterable_Generic::getClass())
                                     .method(I_Iterable_Generic::$iter, "", [](const Any&) {})
                                     .build();
    EXPECT_EQ(walked(broken.allocateInstance()),
              "error: Unable to cast a value of class 'ling.None' to 'ling.I_Iterator'.");
    const Class_Generic without = internal::defclass_impl("Without", "").parent(I_Iterable_Generic::getClass()).build();
    EXPECT_EQ(walked(without.allocateInstance()), "error: Method 'iter' not found in: <Without>.");
}

TEST_F(Iterable, AMemberOfTheObjectItselfStandsInForTheNativeOne) {
    const List_Generic list = listOf(1, 2);
    ASSERT_FALSE(internal::is_error_result(
        insert_method(list, I_Iterable_Generic::$iter, make_function("iter", "", [] { return listOf(3).iter(); }))));
    EXPECT_EQ(walked(list), "[3]");
    const Any iterator = listOf(1).iter();
    insert_method(iterator, I_Iterator_Generic::$next, make_function("next", "", [] { return Any(5); }));
    EXPECT_EQ(shown(unchecked<I_Iterator_Generic>(iterator).next()), "5");
}

TEST_F(Iterable, NothingElseCasts) {
    for (const Any& value : {Any(), Any(1), Any(String(u"text")), Any(Error(u"x", true))}) {
        EXPECT_FALSE(I_Iterable_Generic::cast(value)) << shown(value);
        EXPECT_FALSE(I_Iterator_Generic::cast(value)) << shown(value);
    }
    EXPECT_EQ(shown(I_Iterable_Generic::cast(5)),
              "error: Unable to cast a value of class 'ling.Integer' to "
              "'ling.I_Iterable'.");
    EXPECT_FALSE(I_Iterator_Generic::cast(listOf(1)));
}

TEST(IteratorClass, MakesNoInstances) {
    const Class_Generic cls = raw_class_of(listOf(1).iter());
    EXPECT_EQ(shown(cls()), "error: The interface 'Iterator' has no instances of its own.");
}

struct GenericCase {
    const char* name;
    Class_Generic (*instance)();
    const char* ancestry;
};

const Type kInteger = Integer::getType();
const Type kText = String::getType();

const GenericCase kGenericCases[] = {
    {"Iterator", [] { return I_Iterator_Generic::genericInstance(kInteger); },
     "I_Iterator<Integer> I_Iterator I_Iterable<Integer> I_Iterable Any"},
    {"MutableSequence", [] { return I_MutableSequence_Generic::genericInstance(kInteger); },
     "I_MutableSequence<Integer> I_MutableSequence I_Sequence<Integer> I_Sequence I_Iterable<Integer> I_Iterable Any"},
    {"List", [] { return List_Generic::genericInstance(kInteger); },
     "List<Integer> List I_MutableSequence<Integer> I_MutableSequence I_Sequence<Integer> I_Sequence "
     "I_Iterable<Integer> I_Iterable Any"},
    {"MutableMap", [] { return I_MutableMap_Generic::genericInstance(kText, kInteger); },
     "I_MutableMap<String, Integer> I_MutableMap I_Map<String, Integer> I_Map I_Iterable<String> I_Iterable Any"},
    {"Map", [] { return Map_Generic::genericInstance(kText, kInteger); },
     "Map<String, Integer> Map I_MutableMap<String, Integer> I_MutableMap I_Map<String, Integer> I_Map "
     "I_Iterable<String> I_Iterable Any"},
    {"Set", [] { return Set_Generic::genericInstance(kText); },
     "Set<String> Set I_MutableSet<String> I_MutableSet I_Set<String> I_Set I_Iterable<String> I_Iterable Any"},
    {"Tuple",
     [] {
         const Type types[] = {kInteger, kText, kInteger};
         return Tuple_Generic::genericInstance(types);
     },
     "Tuple<Integer, String, Integer> Tuple I_Tuple<Integer, String, Integer> I_Tuple I_Sequence<Integer|String> "
     "I_Sequence I_Iterable<Integer|String> I_Iterable I_Immutable Any"},
    {"EmptyTuple", [] { return I_Tuple_Generic::genericInstance({}); }, "I_Tuple<> I_Tuple I_Sequence I_Iterable Any"},
};

class GenericInstance : public ::testing::TestWithParam<GenericCase> {};

TEST_P(GenericInstance, DerivesFromThoseOfItsParents) {
    const Class_Generic instance = GetParam().instance();
    std::string ancestry;
    for (const Class_Generic& ancestor : instance.ancestry())
        ancestry += (ancestry.empty() ? "" : " ") + ancestor.name().toStdString();
    EXPECT_EQ(ancestry, GetParam().ancestry);
    EXPECT_EQ(GetParam().instance(), instance) << "There is one instance for the same types.";
    EXPECT_EQ(instance.parentGeneric().name().toStdString() + "<",
              std::string(GetParam().ancestry).substr(0, std::string(GetParam().ancestry).find('<') + 1));
}

INSTANTIATE_TEST_SUITE_P(Rows, GenericInstance, ::testing::ValuesIn(kGenericCases),
                         [](const auto& row) { return row.param.name; });

TEST(GenericInstance, NativeValuesMatchWhateverTheirItems) {
    EXPECT_TRUE(I_Sequence<Integer>::getType().isMatch(listOf("text")));
    EXPECT_TRUE((I_Map<String, Integer>::getType().isMatch(Map_Generic())));
    EXPECT_FALSE(I_Sequence<Integer>::getType().isMatch(Map_Generic()));
    EXPECT_TRUE(List<Integer>::getType().specializes(I_Iterable<Integer>::getType()));
    EXPECT_FALSE(List<Integer>::getType().specializes(I_Iterable<String>::getType()));
    EXPECT_TRUE(List<Integer>::getType().specializes(I_Sequence_Generic::getType()));
}

}  // namespace
}  // namespace ling
