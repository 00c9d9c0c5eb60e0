#include "runtime/support/live_objects.h"
#include "runtime/support/values.h"

namespace ling {
namespace {

using namespace ling::testing;

class ContainerLifetime : public LiveObjects {};

/// Each way in which a container lets go of an item, with a destructor that comes back to the container.
struct DropCase {
    const char* name;
    void (*drop)(const List_Generic& list);
};

const DropCase kListDrops[] = {
    {"Clear", [](const List_Generic& list) { list.clear(); }},
    {"Pop", [](const List_Generic& list) { list.pop(0); }},
    {"RemoveAt", [](const List_Generic& list) { list.removeAt(0, 2); }},
    {"RemoveOne", [](const List_Generic& list) { list.removeOne(list.at(0)); }},
    {"Set", [](const List_Generic& list) { unchecked<I_MutableSequence_Generic>(list).set(0, 7); }},
    {"ClearWhileIterated",
     [](const List_Generic& list) {
         const Any iterator = list.iter();
         list.clear();
     }},
    {"MultiplyByNothing", [](const List_Generic& list) { list.callMethod(Any::$__imul__, {0}); }},
};

class ListDrop : public LiveObjectsOf<::testing::TestWithParam<DropCase>> {};

TEST_P(ListDrop, LetsTheDestructorComeBack) {
    const List_Generic list;
    int dropped = 0;
    auto comeBack = [&] {
        ++dropped;
        list.append(String(u"late"));
        list.size();
        walked(list);
        list.removeOne(String(u"late"));
    };
    list.append(onDrop(comeBack));
    list.append(onDrop(comeBack));
    GetParam().drop(list);
    EXPECT_GE(dropped, 1);
    list.clear();
    EXPECT_EQ(dropped, 2);
    EXPECT_EQ(shown(list), "[]");
}

INSTANTIATE_TEST_SUITE_P(Rows, ListDrop, ::testing::ValuesIn(kListDrops),
                         [](const auto& row) { return row.param.name; });

struct MapDropCase {
    const char* name;
    void (*drop)(const Map_Generic& map);
};

const MapDropCase kMapDrops[] = {
    {"Clear", [](const Map_Generic& map) { map.clear(); }},
    {"Remove", [](const Map_Generic& map) { map.remove(1); }},
    {"Set", [](const Map_Generic& map) { map.set(1, 7); }},
    {"RemoveWhileIterated",
     [](const Map_Generic& map) {
         const Any iterator = map.iter();
         map.remove(1);
     }},
    {"RemoveKeyByKey",
     [](const Map_Generic& map) {
         for (iteration walk = map.beginImpl(); walk.advance();)
             map.remove(walk.item());
     }},
};

class MapDrop : public LiveObjectsOf<::testing::TestWithParam<MapDropCase>> {};

TEST_P(MapDrop, LetsTheDestructorComeBack) {
    const Map_Generic map;
    int dropped = 0;
    auto comeBack = [&] {
        ++dropped;
        for (int i = 100; i < 140; ++i)
            map.set(i, i);
        for (int i = 100; i < 140; ++i)
            map.remove(i);
    };
    map.set(1, onDrop(comeBack));
    map.set(onDrop(comeBack), 2);
    GetParam().drop(map);
    EXPECT_GE(dropped, 1);
    map.clear();
    EXPECT_EQ(dropped, 2);
    EXPECT_EQ(map.size(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Rows, MapDrop, ::testing::ValuesIn(kMapDrops), [](const auto& row) { return row.param.name; });

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
        EXPECT_GT(internal::live_object_count(), static_cast<std::size_t>(kCount));
    }
}

/// A value, `depth` containers deep.
struct NestingCase {
    const char* name;
    Any (*around)(const Any& inner);
};

const NestingCase kNestings[] = {
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

class Nesting : public LiveObjectsOf<::testing::TestWithParam<NestingCase>> {};

TEST_P(Nesting, GoesWithoutADeepStack) {
    Any value;
    for (int depth = 0; depth < 100'000; ++depth)
        value = GetParam().around(value);
}

INSTANTIATE_TEST_SUITE_P(Rows, Nesting, ::testing::ValuesIn(kNestings), [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace ling
