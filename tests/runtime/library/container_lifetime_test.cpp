#include "runtime/support/values.h"

namespace ling::testing {
namespace {

class ContainerLifetime : public LiveObjects {};

/// Each way in which a container lets go of an item, with a destructor that comes back to the container.
const struct DropCase {
    const char* name;
    void (*drop)(const List_Generic& list, const Map_Generic& map);
} kDrops[] = {
    {"Clear", [](auto& list, auto&) { list.clear(); }},
    {"Pop", [](auto& list, auto&) { list.pop(0); }},
    {"RemoveAt", [](auto& list, auto&) { list.removeAt(0, 2); }},
    {"RemoveOne", [](auto& list, auto&) { list.removeOne(list.at(0)); }},
    {"Set", [](auto& list, auto&) { unchecked<I_MutableSequence_Generic>(list).set(0, 7); }},
    {"MultiplyByNothing", [](auto& list, auto&) { list.callMethod(Any::$__imul__, {0}); }},
    {"ClearWhileIterated",
     [](auto& list, auto& map) {
         const Any iterators[] = {list.iter(), map.iter()};
         list.clear();
         map.clear();
     }},
    {"MapClear", [](auto&, auto& map) { map.clear(); }},
    {"MapRemove", [](auto&, auto& map) { map.remove(1); }},
    {"MapSet", [](auto&, auto& map) { map.set(1, 7); }},
    {"RemoveKeyByKey",
     [](auto&, auto& map) {
         for (iteration walk = map.beginImpl(); walk.advance();)
             map.remove(walk.item());
     }},
};
LING_TABLE(ContainerDrop, LiveObjects, kDrops);

TEST_P(ContainerDrop, LetsTheDestructorComeBack) {
    const List_Generic list;
    const Map_Generic map;
    int dropped = 0;
    const auto comeBack = [&] {
        ++dropped;
        list.append(String(u"late"));
        walked(list);
        list.removeOne(String(u"late"));
        for (int i = 100; i < 140; ++i)
            map.set(i, i);
        for (int i = 100; i < 140; ++i)
            map.remove(i);
    };
    list.append(onDrop(comeBack));
    list.append(onDrop(comeBack));
    map.set(1, onDrop(comeBack));
    map.set(onDrop(comeBack), 2);
    GetParam().drop(list, map);
    EXPECT_GE(dropped, 1);
    list.clear();
    map.clear();
    EXPECT_EQ(dropped, 4);
    EXPECT_EQ(shown(list) + shown(map), "[]{}");
}

TEST_F(ContainerLifetime, AnIteratorKeepsItsItems) {
    int dropped = 0;
    Any iterator;
    {
        const List_Generic list;
        list.append(1);
        list.append(onDrop([&] { ++dropped; }));
        iterator = list.iter();
        list.clear();
        EXPECT_EQ(dropped, 0);
    }
    EXPECT_EQ(shown(unchecked<I_Iterator_Generic>(iterator).next()), "1");
    iterator = Any();
    EXPECT_EQ(dropped, 1);
}

TEST_F(ContainerLifetime, AMillionItemsGo) {
    constexpr int kCount = 1'000'000;
    {
        const List_Generic list;
        const Map_Generic map;
        const Set_Generic set;
        for (int i = 0; i < kCount; ++i)
            list.append(String(u"text"));
        for (int i = 0; i < kCount / 4; ++i) {
            map.set(i, List_Generic());
            set.insert(tupleOf(i));
        }
        EXPECT_EQ(list.size(), static_cast<std::size_t>(kCount));
        EXPECT_EQ(map.size(), set.size());
        EXPECT_GT(live_object_count(), static_cast<std::size_t>(kCount));
    }
}

/// A value, `depth` containers deep.
const struct NestingCase {
    const char* name;
    Any (*around)(const Any& inner);
} kNestings[] = {
    {"Lists", [](const Any& inner) { return Any(listOf(inner)); }},
    {"Tuples", [](const Any& inner) { return Any(tupleOf(inner)); }},
    {"MapValues",
     [](const Any& inner) {
         const Map_Generic map;
         map.set(1, inner);
         return Any(map);
     }},
    {"MapKeys",
     [](const Any& inner) {
         const Map_Generic map;
         map.set(inner, 1);
         return Any(map);
     }},
    {"Iterators", [](const Any& inner) { return listOf(inner).iter(); }},
    {"Causes",
     [](const Any& inner) {
         const Error error(u"Outer.");
         error.setCause(inner);
         return Any(error);
     }},
    {"LazyValues",
     [](const Any& inner) {
         Lazy_Generic lazy([inner] { return listOf(inner); });
         lazy.evaluate();
         return Any(lazy);
     }},
    {"UnevaluatedLazyValues", [](const Any& inner) { return Any(Lazy_Generic([inner] { return inner; })); }},
};

LING_TABLE(Nesting, LiveObjects, kNestings);

TEST_P(Nesting, GoesWithoutADeepStack) {
    Any value;
    for (int depth = 0; depth < 100'000; ++depth)
        value = GetParam().around(value);
}

}  // namespace
}  // namespace ling::testing
