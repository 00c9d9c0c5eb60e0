#include "runtime/support/values.h"

/// Keys that misbehave, and what containers let go of.

namespace ling::testing {
namespace {

/// Keys whose comparison or hash does what no decent key would. Whatever it is, a table ends its work, and stays whole.
class HostileKeys : public LiveObjects {
protected:
    static constexpr int kSameHash = 5;
    static Any sameHash(const Any&) { return kSameHash; }

    /// Every key is still found by itself, the keys are distinct objects, and the size is their number.
    static void expectWhole(const Map_Generic& map) {
        const auto keys = unchecked<List_Generic>(map.keys()).copyItems();
        ASSERT_EQ(keys.size(), map.size());
        for (std::size_t i = 0; i < keys.size(); ++i)
            for (std::size_t j = 0; j < i; ++j)
                ASSERT_FALSE(keys[i].isSameAs(keys[j]));
    }
};

TEST_F(HostileKeys, EqualHashesAreToldApartByComparison) {
    int comparisons = 0;
    const Class_Generic cls = numberedKeys([](const Any&) { return kSameHash; }, &comparisons);
    const auto key = [&](int value) { return cls(value); };
    const Map_Generic map;
    constexpr int kCount = 200;
    for (int i = 0; i < kCount; ++i)
        map.set(key(i), i);
    EXPECT_EQ(comparisons, kCount * (kCount - 1) / 2) << "No two keys are compared twice.";
    for (int i = 0; i < kCount; ++i)
        ASSERT_EQ(shown(map.get(key(i))), std::to_string(i));
    for (int i = 0; i < kCount; i += 2)
        ASSERT_EQ(shown(map.remove(key(i))), std::to_string(i));
    for (int i = 0; i < kCount; ++i)
        ASSERT_EQ(shown(map.contains(key(i))), i % 2 == 0 ? "false" : "true");
}

const struct MutationCase {
    const char* name;
    void (*mutate)(const Map_Generic& map, const Any& self, const Any& other);
} kMutations[] = {
    {"Clears", [](const Map_Generic& map, const Any&, const Any&) { map.clear(); }},
    {"RemovesThePresentKey",
     [](const Map_Generic& map, const Any& self, const Any& other) {
         map.remove(self);
         map.remove(other);
     }},
    {"AddsPlainKeys",
     [](const Map_Generic& map, const Any&, const Any&) {
         for (int i = 0; i < 50; ++i)
             map.set(static_cast<std::int64_t>(map.size()) + 1000, i);
     }},
    {"AddsAKeyOfTheSameHash",
     [](const Map_Generic& map, const Any& self, const Any&) {
         if (map.size() < 200)
             map.set(raw_class_of(self).allocateInstance(), 0);
     }},
    {"ReadsTheMap",
     [](const Map_Generic& map, const Any& self, const Any& other) {
         map.get(self, 0);
         map.contains(other);
         walked(map);
     }},
};

LING_TABLE(MutatingComparison, LiveObjects, kMutations);

TEST_P(MutatingComparison, NeitherHangsNorBreaksTheTable) {
    for (const int answer : {0, 1}) {
        const Map_Generic map;
        int depth = 0;
        const Class_Generic cls = keyClass(
            [&](const Any& self, const Any& other) -> Any {
                if (depth == 1)
                    return answer;  // Not for ever deeper, which is another matter.
                ++depth;
                GetParam().mutate(map, self, other);
                --depth;
                return answer;
            },
            [](const Any&) -> Any { return 5; });
        const Any probe = cls.allocateInstance();
        for (int i = 0; i < 4; ++i)
            map.set(cls.allocateInstance(), i);
        map.set(probe, String(u"probe"));
        map.get(cls.allocateInstance(), 0);
        map.contains(probe);
        map.remove(cls.allocateInstance());
        map.remove(probe);
        EXPECT_EQ(unchecked<List_Generic>(map.keys()).size(), map.size());
        map.set(1, 2);
        EXPECT_EQ(shown(map.get(1)), "2");
        map.clear();
        EXPECT_EQ(walked(map), "[]");
    }
}

TEST_F(HostileKeys, AComparisonThatKeepsAddingKeysEnds) {
    const Map_Generic map;
    Class_Generic cls;
    bool nested = false;
    int comparisons = 0;
    cls = keyClass(
        [&](const Any&, const Any&) -> Any {
            ++comparisons;
            if (!nested) {
                nested = true;
                map.set(cls.allocateInstance(), 0);
                nested = false;
            }
            return 1;
        },
        sameHash);
    map.set(cls.allocateInstance(), 1);
    map.set(cls.allocateInstance(), 2);
    EXPECT_GT(comparisons, 60);
    EXPECT_LT(comparisons, 5'000);
    expectWhole(map);
}

TEST_F(HostileKeys, AnEqualKeyThatIsAddedDuringTheComparisonIsFound) {
    const Map_Generic map;
    Any early;
    Any present;
    Any twin;
    const Class_Generic cls = keyClass(
        [&](const Any& self, const Any& other) -> Any {
            const bool twins = !self.isSameAs(present) && !other.isSameAs(present);
            if (!twin.isNone() && !twins)
                map.set(std::exchange(twin, Any()), String(u"twin"));
            return twins ? 0 : 1;
        },
        sameHash);
    early = cls.allocateInstance();
    present = cls.allocateInstance();
    map.set(early, 1);
    map.set(present, 2);
    map.remove(early);  // The twin takes its place, which the search has passed by then.
    twin = cls.allocateInstance();
    map.set(cls.allocateInstance(), String(u"both"));
    EXPECT_EQ(shown(map.values()), "[2, 'both']");
}

TEST_F(HostileKeys, AKeyThatDeniesBeingItselfIsFound) {
    const Class_Generic cls = keyClass([](const Any&, const Any&) -> Any { return 1; }, sameHash);
    const Any key = cls.allocateInstance();
    const Map_Generic map;
    map.set(key, 1);
    map.set(key, 2);
    EXPECT_EQ(map.size(), 1u);
    EXPECT_EQ(shown(map.get(key)), "2");
    EXPECT_EQ(shown(map.remove(key)), "2");
}

const struct AnswerCase {
    const char* name;
    Any answer;
} kAnswers[] = {{"Error", Error(u"No answer.", true)}, {"Text", String(u"?")}, {"None", Any()}};

LING_TABLE(BrokenAnswers, LiveObjects, kAnswers);

TEST_P(BrokenAnswers, FallBackToIdentity) {
    const Any& answer = GetParam().answer;
    const Class_Generic noHash =
        keyClass([](const Any&, const Any&) -> Any { return 0; }, [&](const Any&) { return answer; });
    const Class_Generic noOrder =
        keyClass([&](const Any&, const Any&) { return answer; }, [](const Any&) -> Any { return 5; });
    for (const Class_Generic& cls : {noHash, noOrder}) {
        const Any key = cls.allocateInstance();
        const Map_Generic map;
        map.set(key, 1);
        map.set(cls.allocateInstance(), 2);
        EXPECT_EQ(map.size(), 2u);
        EXPECT_EQ(shown(map.get(key)), "1");
        EXPECT_EQ(shown(map.contains(cls.allocateInstance())), "false");
    }
}

TEST_F(HostileKeys, AHashMayChangeTheTable) {
    const Map_Generic map;
    const Class_Generic cls = keyClass([](const Any&, const Any&) -> Any { return 1; },
                                       [&](const Any&) -> Any {
                                           map.clear();
                                           return 5;
                                       });
    map.set(cls.allocateInstance(), 1);
    map.set(cls.allocateInstance(), 2);
    EXPECT_EQ(shown(map.values()), "[2]");
}

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
