#include "runtime/support/foreign_containers.h"
#include "runtime/support/values.h"

/// What the interfaces do for a class that gives no more than their abstract members.

namespace ling::testing {
namespace {

/// What the interfaces of containers do for a class that gives no more than their abstract members.

class Sequence : public LiveObjects {
protected:
    static I_MutableSequence_Generic foreign(const Any& content) {
        return unchecked<I_MutableSequence_Generic>(wrap(foreignSequence(), content));
    }
};

TEST_F(Sequence, AnIterationFollowsTheLengthAndStaysEnded) {
    const List_Generic content = listOf(1, 2, 3);
    const auto sequence = foreign(content);
    const Any iterator = sequence.iter();
    const auto& next = unchecked<I_Iterator_Generic>(iterator);
    EXPECT_EQ(shown(next.next()), "1");
    content.pop();
    EXPECT_EQ(shown(next.next()), "2");
    EXPECT_TRUE(StopIteration::cast(next.next()));
    content.append(4);
    content.append(5);
    EXPECT_TRUE(StopIteration::cast(next.next())) << "What is added after the end was reached comes too late.";
}

TEST_F(Sequence, WhatVanishesBetweenLengthAndItemIsTheEnd) {
    const List_Generic content = listOf(1, 2);
    const Class_Generic shrinking =
        defclass_impl("Shrinking", "")
            .parent(I_Sequence_Generic::getClass())
            .property(I_Sequence_Generic::$$length, property_builder().getter([content](const Any&) {
                return static_cast<std::int64_t>(content.size());
            }))
            .method(I_Sequence_Generic::$at, "index",
                    [content](const Any&, const Any& index) -> Any {
                        content.clear();
                        return content.at(index);
                    })
            .build();
    EXPECT_EQ(walked(shrinking.allocateInstance()), "[]");
}

TEST_F(Sequence, ALengthThatIsNoneIsReportedByEveryDefault) {
    const auto withLength = [](const Any& length) {
        const auto get = property_builder().getter([length](const Any&) -> Any { return length; });
        const Class_Generic cls = defclass_impl("Broken", "")
                                      .parent(I_MutableSequence_Generic::getClass())
                                      .property(I_Sequence_Generic::$$length, get)
                                      .build();
        return unchecked<I_MutableSequence_Generic>(cls.allocateInstance());
    };
    const std::pair<Any, const char*> rows[] = {
        {failure(u"No length."), "error: No length."},
        {String(u"3"), "error: Unable to cast a value of class 'ling.String' to 'ling.Integer'."},
        {Any(), "error: Unable to cast a value of class 'ling.None' to 'ling.Integer'."}};
    for (const auto& [length, expected] : rows) {
        const auto sequence = withLength(length);
        EXPECT_EQ(walked(sequence), expected);
        for (const Any& outcome : {sequence.length().toAny(), Any(sequence.indexOf(1)), Any(sequence.indexOf(1, -1)),
                                   sequence.append(1), sequence.pop(), sequence.removeOne(1), sequence.clear()})
            EXPECT_EQ(shown(outcome), expected);
    }
    const auto negative = withLength(-5);
    EXPECT_EQ(walked(negative), "[]");
    EXPECT_EQ(shown(negative.indexOf(1)), "-1");
    EXPECT_EQ(shown(negative.pop()), "error: Index out of range: -1.");
    EXPECT_EQ(shown(negative.clear()), "none");
    EXPECT_EQ(shown(negative.at(0)), "error: Method 'at' not found in: <Broken>.");
}

TEST_F(Sequence, ExtendingByAnotherViewOfTheSameItemsEnds) {
    const List_Generic content = listOf(1, 2);
    const Class_Generic cls = foreignSequence();
    const Any view = wrap(cls, content);
    const Any other = wrap(cls, content);
    EXPECT_EQ(shown(unchecked<I_MutableSequence_Generic>(view).extend(other)), "none");
    EXPECT_EQ(shown(content), "[1, 2, 1, 2]");
}

TEST_F(Sequence, ExtendingByWhatFailsAddsNothing) {
    const auto sequence = foreign(listOf(1));
    EXPECT_EQ(shown(sequence.extend(5)), "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'.");
    EXPECT_EQ(shown(sequence.extend(Error(u"Not there.", true))), "error: Not there.");
    EXPECT_EQ(walked(sequence), "[1]");
}

class MapInterface : public LiveObjects {
protected:
    static I_MutableMap_Generic foreign() {
        const std::pair<Any, Any> pairs[] = {{String(u"one"), 1}, {2, String(u"two")}, {String(u"gone"), Any()}};
        return unchecked<I_MutableMap_Generic>(wrap(foreignMap(), Map_Generic(pairs)));
    }
};

TEST_F(MapInterface, ReadsByTheDefaults) {
    const auto map = foreign();
    EXPECT_EQ(walked(map), "['one', 2, 'gone']");
    EXPECT_EQ(shown(map.values()), "[1, 'two', none]");
    EXPECT_EQ(shown(map.collectImpl()), "['one', 2, 'gone']");
    EXPECT_EQ(shown(map.length()), "3");
    EXPECT_EQ(shown(map.get(3)), "error: Key not found: 3.");
    EXPECT_EQ(shown(map.get(3, Any())), "none");
    EXPECT_EQ(shown(unchecked<I_Iterable_Generic>(map).contains(3)), "false");
}

TEST_F(MapInterface, ChangesThroughTheImplementation) {
    const auto map = foreign();
    EXPECT_EQ(shown(map.set(2, 22)), "none");
    EXPECT_EQ(shown(map.remove(String(u"one"))), "1");
    EXPECT_EQ(shown(map.remove(String(u"one"))), "error: Key not found: one.");
    EXPECT_EQ(shown(map.values()), "[22, none]");
    EXPECT_EQ(shown(map.clear()), "none");
    EXPECT_EQ(walked(map), "[]");
}

TEST_F(MapInterface, AValueThatCannotBeReadIsTheErrorOfAllValues) {
    const Class_Generic cls =
        defclass_impl("Broken", "")
            .parent(I_Map_Generic::getClass())
            .property(I_Map_Generic::$$keys, property_builder().getter([](const Any&) { return listOf(1, 2); }))
            .method(I_Map_Generic::$get, "key, default",
                    [](const Any&, const Any& key, const Any&) -> Any {
                        return key.isSameAs(2) ? failure(u"Unreadable.") : key;
                    })
            .build();
    const auto map = unchecked<I_Map_Generic>(cls.allocateInstance());
    EXPECT_EQ(shown(map.values()), "error: Unreadable.");
    EXPECT_EQ(walked(map), "[1, 2]");
    const Class_Generic midway =
        defclass_impl("Midway", "")
            .parent(I_Map_Generic::getClass())
            .property(I_Map_Generic::$$keys, property_builder().getter([](const Any&) { return failing(1); }))
            .method(I_Map_Generic::$get, "key, default", [](const Any&, const Any& key, const Any&) { return key; })
            .build();
    EXPECT_EQ(shown(unchecked<I_Map_Generic>(midway.allocateInstance()).values()), "error: Broken.");
}

class SetInterface : public LiveObjects {};

TEST_F(SetInterface, ReadsAndChangesByTheDefaults) {
    const auto set = unchecked<I_MutableSet_Generic>(wrap(foreignSet(), Set_Generic()));
    EXPECT_EQ(shown(set.extend(listOf(3, 1, 3, 2))), "none");
    EXPECT_EQ(walked(set), "[3, 1, 2]");
    EXPECT_EQ(shown(set.collectImpl()), "[3, 1, 2]");
    EXPECT_EQ(shown(set.contains(1)), "true");
    EXPECT_EQ(shown(set.contains(4)), "false");
    EXPECT_EQ(shown(set.insert(4)), "true");
    EXPECT_EQ(shown(set.insert(4)), "false");
    EXPECT_EQ(shown(set.remove(3)), "true");
    EXPECT_EQ(shown(set.remove(3)), "false");
    EXPECT_EQ(shown(set.extend(set)), "none");
    EXPECT_EQ(walked(set), "[1, 2, 4]");
    EXPECT_EQ(shown(set.clear()), "none");
    EXPECT_EQ(walked(set), "[]");
}

TEST_F(SetInterface, TheFirstItemThatIsRefusedEndsAnExtension) {
    const Class_Generic cls = defclass_impl("Refusing", "")
                                  .parent(I_MutableSet_Generic::getClass())
                                  .method(I_MutableSet_Generic::$insert, "item",
                                          [](const Any&, const Any& item) -> Any {
                                              return item.isSameAs(2) ? failure(u"Refused.") : Any(true);
                                          })
                                  .build();
    const auto set = unchecked<I_MutableSet_Generic>(cls.allocateInstance());
    EXPECT_EQ(shown(set.extend(listOf(1, 2, 3))), "error: Refused.");
    EXPECT_EQ(shown(set.extend(listOf(1, 3))), "none");
}

/// The interface of what can be walked, and the small interfaces.

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

TEST_F(Iterable, AnErrorThatIsNoResultIsAnItem) { EXPECT_EQ(walked(stepping({Error(u"Kept."), 2})), "[Kept., 2]"); }

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
