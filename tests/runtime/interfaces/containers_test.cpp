#include "runtime/support/foreign_containers.h"

/// What the interfaces of containers do for a class that gives no more than their abstract members.

namespace ling::testing {
namespace {

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

TEST_F(MapInterface, KeysThatAreNoCollectionAreAnError) {
    const Class_Generic cls =
        defclass_impl("Broken", "")
            .parent(I_Map_Generic::getClass())
            .property(I_Map_Generic::$$keys, property_builder().getter([](const Any&) { return 5; }))
            .build();
    const char* expected = "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'.";
    EXPECT_EQ(walked(cls.allocateInstance()), expected);
    EXPECT_EQ(shown(unchecked<I_Map_Generic>(cls.allocateInstance()).values()), expected);
}

TEST(MapTypes, AreThoseThatTheClassWasMadeFor) {
    const Any untyped = wrap(foreignMap(), Map_Generic());
    const Any typed =
        wrap(foreignMap(I_MutableMap_Generic::genericInstance(String::getType(), Integer::getType())), Map_Generic());
    for (const Any& map : {untyped, Any(Map_Generic())}) {
        EXPECT_EQ(shown(map.propertyValue(I_Map_Generic::$$keysType)), "Untyped");
        EXPECT_EQ(shown(map.propertyValue(I_Map_Generic::$$valuesType)), "Untyped");
    }
    EXPECT_EQ(shown(typed.propertyValue(I_Map_Generic::$$keysType)), "String");
    EXPECT_EQ(shown(typed.propertyValue(I_Map_Generic::$$valuesType)), "Integer");
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

}  // namespace
}  // namespace ling::testing
