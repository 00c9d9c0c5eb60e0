#include "runtime/support/foreign_containers.h"
#include "runtime/support/values.h"

/// The interface of what can be walked, and the small interfaces.

namespace ling::testing {
namespace {

class Iterable : public LiveObjects {};

/// An iterable whose iterators answer `steps`, one after the other, and an end after the last.
Any stepping(std::vector<Any> steps) {
    const Class_Generic iteratorClass =
        defclass_impl("Stepping", "")
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
    EXPECT_EQ(shown(handle.contains(3)), "true");
    EXPECT_EQ(shown(handle.contains(4)), "false");
}

TEST_F(Iterable, AnErrorEndsTheIterationAndIsReported) {
    const Any failing = stepping({1, failure(u"Broken."), 3});
    iteration walk = unchecked<I_Iterable_Generic>(failing).beginImpl();
    EXPECT_TRUE(walk.advance());
    EXPECT_EQ(shown(walk.item()), "1");
    EXPECT_FALSE(walk.advance());
    EXPECT_EQ(shown(walk.error()), "error: Broken.");
    EXPECT_FALSE(walk.advance()) << "It stays ended, though the iterator would go on.";
    EXPECT_TRUE(walk.failed());
    for (const Any& outcome : {unchecked<I_Iterable_Generic>(stepping({failure(u"Broken.")})).contains(1),
                               unchecked<I_Iterable_Generic>(stepping({failure(u"Broken.")})).collectImpl().toAny()})
        EXPECT_EQ(shown(outcome), "error: Broken.");
}

TEST_F(Iterable, AnEndOfADerivedClassIsAnEnd) {
    const Class_Generic derived = defclass_impl("Over", "").parent(StopIteration::getClass()).build();
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
    EXPECT_EQ(shown(raw_class_of(iterator)()), "error: The interface 'Iterator' has no instances of its own.");
}

TEST_F(Iterable, WhatGivesNoIteratorIsAnError) {
    const Class_Generic broken = defclass_impl("Broken", "")
                                     .parent(I_Iterable_Generic::getClass())
                                     .method(I_Iterable_Generic::$iter, "", [](const Any&) {})
                                     .build();
    EXPECT_EQ(walked(broken.allocateInstance()),
              "error: Unable to cast a value of class 'ling.None' to 'ling.I_Iterator'.");
    const Class_Generic without = defclass_impl("Without", "").parent(I_Iterable_Generic::getClass()).build();
    EXPECT_EQ(walked(without.allocateInstance()), "error: Method 'iter' not found in: <Without>.");
}

TEST_F(Iterable, AMemberOfTheObjectItselfStandsInForTheNativeOne) {
    const List_Generic list = listOf(1, 2);
    ASSERT_FALSE(is_error_result(
        insert_method(list, I_Iterable_Generic::$iter, make_function("iter", "", [] { return listOf(3).iter(); }))));
    EXPECT_EQ(walked(list), "[3]");
    const Any iterator = listOf(1).iter();
    insert_method(iterator, I_Iterator_Generic::$next, make_function("next", "", [] { return Any(5); }));
    EXPECT_EQ(shown(unchecked<I_Iterator_Generic>(iterator).next()), "5");
}

struct GenericCase {
    const char* name;
    Class_Generic (*instance)();
    const char* ancestry;
};

TEST(GenericInstance, DerivesFromThoseOfItsParents) {
    const Type number = Integer::getType();
    const Type text = String::getType();
    const Type types[] = {number, text, number};
    const std::tuple<Class_Generic, Class_Generic, const char*> rows[] = {
        {List_Generic::genericInstance(number), List_Generic::genericInstance(number),
         "List<Integer> List I_MutableSequence<Integer> I_MutableSequence I_Sequence<Integer> I_Sequence "
         "I_Iterable<Integer> I_Iterable Any "},
        {Map_Generic::genericInstance(text, number), Map_Generic::genericInstance(text, number),
         "Map<String, Integer> Map I_MutableMap<String, Integer> I_MutableMap I_Map<String, Integer> I_Map "
         "I_Iterable<String> I_Iterable Any "},
        {Set_Generic::genericInstance(text), Set_Generic::genericInstance(text),
         "Set<String> Set I_MutableSet<String> I_MutableSet I_Set<String> I_Set I_Iterable<String> I_Iterable Any "},
        {Tuple_Generic::genericInstance(types), Tuple_Generic::genericInstance(types),
         "Tuple<Integer, String, Integer> Tuple I_Tuple<Integer, String, Integer> I_Tuple I_Sequence<Integer|String> "
         "I_Sequence I_Iterable<Integer|String> I_Iterable I_Immutable Any "},
        {I_Tuple_Generic::genericInstance({}), I_Tuple_Generic::genericInstance({}),
         "I_Tuple<> I_Tuple I_Sequence I_Iterable Any "}};
    for (const auto& [instance, again, expected] : rows) {
        std::string ancestry;
        for (const Class_Generic& ancestor : instance.ancestry())
            ancestry += ancestor.name().toStdString() + " ";
        EXPECT_EQ(ancestry, expected);
        EXPECT_EQ(instance, again) << "There is one instance for the same types.";
        EXPECT_TRUE(ancestry.starts_with(instance.parentGeneric().name().toStdString() + "<"));
    }
}

TEST(GenericInstance, NativeValuesMatchWhateverTheirItems) {
    EXPECT_TRUE(I_Sequence<Integer>::getType().isMatch(listOf("text")));
    EXPECT_TRUE((I_Map<String, Integer>::getType().isMatch(Map_Generic())));
    EXPECT_FALSE(I_Sequence<Integer>::getType().isMatch(Map_Generic()));
    EXPECT_TRUE(List<Integer>::getType().specializes(I_Iterable<Integer>::getType()));
    EXPECT_FALSE(List<Integer>::getType().specializes(I_Iterable<String>::getType()));
    EXPECT_TRUE(List<Integer>::getType().specializes(I_Sequence_Generic::getType()));
}

class SmallInterfaces : public LiveObjects {};

TEST_F(SmallInterfaces, ImmutableIsWhatMayBeAKeyByItsContent) {
    for (const Any& value :
         {Any(), Any(5), Any(String(std::u16string(200, u'x')).sliced(1, 150)), Any(tupleOf(1)), Any(Decimal(1))})
        EXPECT_TRUE(I_Immutable::cast(value)) << shown(value);
    for (const Any& value : {Any(listOf()), Any(Map_Generic()), Any(Set_Generic()), Any(Error(u"x"))})
        EXPECT_FALSE(I_Immutable::cast(value)) << shown(value);
    EXPECT_FALSE(I_Immutable::cast(Lazy_Generic([] { return Any(1); })));
}

Class_Generic withProperties(const Any& name, const Any& doc) {
    return defclass_impl("Described", "")
        .parent(I_HasName::getClass())
        .parent(I_HasDoc::getClass())
        .property(I_HasName::$$name, property_builder().getter([name](const Any&) { return name; }))
        .property(I_HasDoc::$$doc, property_builder().getter([doc](const Any&) { return doc; }))
        .build();
}

TEST_F(SmallInterfaces, NameAndDocAreReadThroughTheClass) {
    const Any described =
        withProperties(String(u"name"), Lazy_Generic([] { return Any(String(u"text")); })).allocateInstance();
    ASSERT_TRUE(I_HasName::cast(described));
    EXPECT_EQ(unchecked<I_HasName>(described).name(), u"name");
    EXPECT_EQ(unchecked<I_HasDoc>(described).doc(), u"text");
}

TEST_F(SmallInterfaces, WhatIsNoTextReadsAsEmpty) {
    const Any broken = withProperties(5, failure(u"No text.")).allocateInstance();
    EXPECT_EQ(unchecked<I_HasName>(broken).name(), u"");
    EXPECT_EQ(unchecked<I_HasDoc>(broken).doc(), u"");
}

TEST_F(SmallInterfaces, AConvertibleAnswersForTheClassThatItIsAsked) {
    const Class_Generic cls =
        defclass_impl("Convertible", "")
            .parent(I_Convertible::getClass())
            .method(I_Convertible::$tryInto, "target",
                    [](const Any&, const Class_Generic& target) -> Any {
                        return target == Integer::getClass() ? Any(1) : failure(u"Not into that.");
                    })
            .build();
    const Any value = cls.allocateInstance();
    ASSERT_TRUE(I_Convertible::cast(value));
    EXPECT_EQ(shown(unchecked<I_Convertible>(value).tryInto(Integer::getClass())), "1");
    EXPECT_EQ(shown(unchecked<I_Convertible>(value).tryInto(String::getClass())), "error: Not into that.");
    EXPECT_EQ(shown(I_Convertible::cast(1)),
              "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Convertible'.");
}

}  // namespace
}  // namespace ling::testing
