#include "runtime/support/foreign_containers.h"
#include "runtime/support/live_objects.h"

namespace ling {
namespace {

using namespace ling::testing;

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
    EXPECT_EQ(shown(map.keys()), "['one', 2, 'gone']");
    EXPECT_EQ(shown(map.length()), "3");
    EXPECT_EQ(shown(map.contains(2)), "true");
    EXPECT_EQ(shown(unchecked<I_Iterable_Generic>(map).contains(3)), "false");
}

TEST_F(MapInterface, AMissingKeyIsToldFromEveryValue) {
    const auto map = foreign();
    EXPECT_EQ(shown(map.get(String(u"one"))), "1");
    EXPECT_EQ(shown(map.get(String(u"gone"))), "none") << "None is a value like any other.";
    EXPECT_EQ(shown(map.get(3)), "error: Key not found: 3.");
    EXPECT_EQ(shown(map.get(3, String(u"three"))), "three");
    EXPECT_EQ(shown(map.get(3, Any())), "none");
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
        internal::defclass_impl("Broken", "")
            .parent(I_Map_Generic::getClass())
            .property(I_Map_Generic::$$keys,
                      internal::property_builder().getter([](const Any&) { return listOf(1, 2); }))
            .method(I_Map_Generic::$get, "key, default",
                    [](const Any&, const Any& key, const Any&) -> Any {
                        return key.isSameAs(2) ? internal::failure(u"Unreadable.") : key;
                    })
            .build();
    const auto map = unchecked<I_Map_Generic>(cls.allocateInstance());
    EXPECT_EQ(shown(map.values()), "error: Unreadable.");
    EXPECT_EQ(walked(map), "[1, 2]");
}

TEST_F(MapInterface, KeysThatAreNoCollectionAreAnError) {
    const Class_Generic cls =
        internal::defclass_impl("Broken", "")
            .parent(I_Map_Generic::getClass())
            .property(I_Map_Generic::$$keys, internal::property_builder().getter([](const Any&) { return 5; }))
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
    EXPECT_EQ(shown(set.length()), "3");
    EXPECT_EQ(shown(set.extend(set)), "none");
    EXPECT_EQ(walked(set), "[1, 2, 4]");
    EXPECT_EQ(shown(set.clear()), "none");
    EXPECT_EQ(walked(set), "[]");
}

TEST_F(SetInterface, TheFirstItemThatIsRefusedEndsAnExtension) {
    const Class_Generic cls = internal::defclass_impl("Refusing", "")
                                  .parent(I_MutableSet_Generic::getClass())
                                  .method(I_MutableSet_Generic::$insert, "item",
                                          [](const Any&, const Any& item) -> Any {
                                              return item.isSameAs(2) ? internal::failure(u"Refused.") : Any(true);
                                          })
                                  .build();
    const auto set = unchecked<I_MutableSet_Generic>(cls.allocateInstance());
    EXPECT_EQ(shown(set.extend(listOf(1, 2, 3))), "error: Refused.");
    EXPECT_EQ(shown(set.extend(listOf(1, 3))), "none");
    EXPECT_EQ(shown(set.extend(7)), "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'.");
}

TEST_F(SetInterface, AnAnswerThatIsNoTruthValueIsAnError) {
    const Class_Generic cls =
        internal::defclass_impl("Odd", "")
            .parent(I_MutableSet_Generic::getClass())
            .method(I_MutableSet_Generic::$insert, "item", [](const Any&, const Any&) { return 1; })
            .build();
    EXPECT_EQ(shown(unchecked<I_MutableSet_Generic>(cls.allocateInstance()).insert(1)),
              "error: Unable to cast a value of class 'ling.Integer' to 'ling.Boolean'.");
}

}  // namespace
}  // namespace ling
