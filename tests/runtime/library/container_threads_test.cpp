#include "runtime/support/values.h"

namespace ling::testing {
namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 4000;

/// Eight threads at once on the same containers. What one thread did, in its own part, is all there afterwards.
class ContainerThreads : public LiveObjects {};

TEST_F(ContainerThreads, EveryAppendedItemIsThereInItsOrder) {
    const List_Generic list;
    inThreads(kThreads, [&](int number) {
        for (int i = 0; i < kRounds; ++i)
            list.append(tupleOf(number, i));
    });
    EXPECT_EQ(list.size(), static_cast<std::size_t>(kThreads * kRounds));
    int next[kThreads] = {};
    for (const Any& item : list.copyItems()) {
        const auto parts = unchecked<Tuple_Generic>(item).items();
        ASSERT_EQ(parts[1].asInteger(), next[parts[0].asInteger()]++);
    }
}

TEST_F(ContainerThreads, EveryKeyOfAThreadOfItsOwnIsThere) {
    const Map_Generic map;
    const Set_Generic set;
    inThreads(kThreads, [&](int number) {
        for (int i = 0; i < kRounds; ++i) {
            const Any key = i % 2 == 0 ? Any(i * kThreads + number) : Any(tupleOf(number, i));
            map.set(key, i);
            ASSERT_TRUE(set.insert(key).asBoolean());
            ASSERT_TRUE(map.get(key).isSameAs(i));
            if (i % 3 == 0) {
                ASSERT_TRUE(map.remove(key).isSameAs(i));
            }
        }
    });
    constexpr std::size_t kRemoved = (kRounds + 2) / 3;
    EXPECT_EQ(map.size(), kThreads * (kRounds - kRemoved));
    EXPECT_EQ(set.size(), static_cast<std::size_t>(kThreads * kRounds));
}

TEST_F(ContainerThreads, ForeignKeysAreToldApartWhileTheTableChanges) {
    const Class_Generic cls = numberedKeys([](const Any& number) { return number.asInteger() % 7; });
    constexpr int kKeys = 60;
    const auto key = [&](int number) { return cls(number); };
    const Map_Generic map;
    std::atomic<int> added{0};
    inThreads(kThreads, [&](int number) {
        for (int i = 0; i < kKeys; ++i)
            added += static_cast<int>(map.contains(key(i)).asBoolean() ? 0 : 1);
        for (int i = 0; i < kKeys; ++i)
            map.set(key((i * 7 + number) % kKeys), number);
    });
    EXPECT_EQ(map.size(), static_cast<std::size_t>(kKeys));
    for (int i = 0; i < kKeys; ++i)
        EXPECT_EQ(shown(map.contains(key(i))), "true");
}

TEST_F(ContainerThreads, IterationsWalkOneMoment) {
    const Map_Generic map;
    const List_Generic list;
    // All that is ever in them is a row of items from 0 on, so that every moment is such a row.
    inThreads(kThreads, [&](int number) {
        for (int i = 0; i < kRounds / 8; ++i) {
            if (number == 0) {
                if (list.size() == 100) {
                    list.clear();
                    map.clear();
                }
                list.append(static_cast<std::int64_t>(list.size()));
                map.set(static_cast<std::int64_t>(map.size()), 1);
                continue;
            }
            std::int64_t expected = 0;
            for (iteration walk = list.beginImpl(); walk.advance(); ++expected)
                ASSERT_EQ(walk.item().asInteger(), expected);
            expected = 0;
            for (iteration walk = map.beginImpl(); walk.advance(); ++expected)
                ASSERT_EQ(walk.item().asInteger(), expected);
        }
    });
}

TEST_F(ContainerThreads, OneIteratorGivesEachItemToOneThread) {
    const List_Generic list;
    for (int i = 0; i < kThreads * kRounds; ++i)
        list.append(i);
    const Any iterator = list.iter();
    std::atomic<std::int64_t> sum{0};
    inThreads(kThreads, [&](int) {
        for (iteration walk(iterator); walk.advance();)
            sum += walk.item().asInteger();
    });
    constexpr std::int64_t kCount = kThreads * kRounds;
    EXPECT_EQ(sum, kCount * (kCount - 1) / 2);
}

TEST_F(ContainerThreads, ALazyValueIsOneValueForAll) {
    for (int round = 0; round < 50; ++round) {
        const Lazy_Generic lazy([] { return listOf(1); });
        Any seen[kThreads];
        inThreads(kThreads, [&](int number) { seen[number] = lazy.evaluate(); });
        for (const Any& value : seen)
            ASSERT_TRUE(value.isSameAs(seen[0]));
    }
}

}  // namespace
}  // namespace ling::testing
