#include "runtime/support/values.h"

/// Iterations, generic instances and small interfaces. What the interfaces of containers do for abstract members is
/// tested beside the plug-in.

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

TEST_F(Iterable, AnErrorThatIsNoResultIsAnItem) { EXPECT_EQ(walked(stepping({Error(u"Kept."), 2})), "[Kept., 2]"); }

TEST_F(Iterable, AMemberOfTheObjectItselfStandsInForTheNativeOne) {
    const List_Generic list = listOf(1, 2);
    ASSERT_FALSE(is_error_result(
        insert_method(list, I_Iterable_Generic::$iter, make_function("iter", "", [] { return listOf(3).iter(); }))));
    EXPECT_EQ(walked(list), "[3]");
    const Any iterator = listOf(1).iter();
    insert_method(iterator, I_Iterator_Generic::$next, make_function("next", "", [] { return Any(5); }));
    EXPECT_EQ(shown(unchecked<I_Iterator_Generic>(iterator).next()), "5");
}

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

}  // namespace
}  // namespace ling::testing
