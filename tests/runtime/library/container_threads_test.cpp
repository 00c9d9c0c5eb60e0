#include "runtime/support/live_objects.h"
#include "runtime/support/values.h"

#include <atomic>
#include <thread>

namespace ling {
namespace {

using namespace ling::testing;

constexpr int kThreads = 8;
constexpr int kRounds = 4000;

/// Eight threads at once on the same containers. What one thread did, in its own part, is all there afterwards.
class ContainerThreads : public LiveObjects {
protected:
    template <class Work>
    static void inThreads(Work work) {
        std::atomic<int> waiting{kThreads};
        std::vector<std::thread> threads;
        for (int number = 0; number < kThreads; ++number)
            threads.emplace_back([&, number] {
                --waiting;
                while (waiting.load() != 0)
                    std::this_thread::yield();
                work(number);
            });
        for (std::thread& thread : threads)
            thread.join();
    }
};

TEST_F(ContainerThreads, EveryAppendedItemIsThereInItsOrder) {
    const List_Generic list;
    inThreads([&](int number) {
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

TEST_F(ContainerThreads, AListTakesEveryOperationAtOnce) {
    const List_Generic list = listOf(0, 1, 2, 3);
    inThreads([&](int number) {
        for (int i = 0; i < kRounds; ++i) {
            switch ((i + number) % 8) {
                case 0:
                    list.append(String(u"item"));
                    break;
                case 1:
                    list.appendAt(i % 5, tupleOf(i));
                    break;
                case 2:
                    list.pop(-1);
                    break;
                case 3:
                    unchecked<I_MutableSequence_Generic>(list).set(0, listOf(i));
                    break;
                case 4:
                    for (iteration walk = list.beginImpl(); walk.advance();)
                        ASSERT_FALSE(walk.item().isNone());
                    break;
                case 5:
                    list.removeAt(0);
                    break;
                case 6:
                    list.extend(tupleOf(1, 2));
                    break;
                default:
                    list.removeOne(1);
                    if (list.size() > 100)
                        list.clear();
            }
        }
    });
    for (iteration walk = list.beginImpl(); walk.advance();)
        EXPECT_FALSE(walk.item().isNone());
}

TEST_F(ContainerThreads, EveryKeyOfAThreadOfItsOwnIsThere) {
    const Map_Generic map;
    const Set_Generic set;
    inThreads([&](int number) {
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

TEST_F(ContainerThreads, ASharedKeyIsInsertedByOneThread) {
    const Set_Generic set;
    std::atomic<int> inserted{0};
    std::atomic<int> removed{0};
    inThreads([&](int) {
        for (int i = 0; i < kRounds; ++i)
            inserted += set.insert(i).asBoolean();
    });
    EXPECT_EQ(inserted, kRounds);
    inThreads([&](int) {
        for (int i = 0; i < kRounds; ++i)
            removed += set.remove(i).asBoolean();
    });
    EXPECT_EQ(removed, kRounds);
    EXPECT_EQ(set.size(), 0u);
}

TEST_F(ContainerThreads, ForeignKeysAreToldApartWhileTheTableChanges) {
    const field_ident_untyped content{"content"};
    const Class_Generic cls =
        internal::defclass_impl("Key", "")
            .field(content)
            .method(Any::$__compare__, "other",
                    [content](const Any& self, const Any& other) -> Any {
                        return compare_objects(self.fieldValue(content), other.fieldValue(content));
                    })
            .method(Any::$__hash__, "",
                    [content](const Any& self) -> Any { return self.fieldValue(content).asInteger() % 7; })
            .build();
    constexpr int kKeys = 60;
    auto key = [&](int number) {
        Any made = cls.allocateInstance();
        made.setFieldValue(content, number);
        return made;
    };
    const Map_Generic map;
    std::atomic<int> added{0};
    inThreads([&](int number) {
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
    inThreads([&](int number) {
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
    inThreads([&](int) {
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
        inThreads([&](int number) { seen[number] = lazy.evaluate(); });
        for (const Any& value : seen)
            ASSERT_TRUE(value.isSameAs(seen[0]));
    }
}

}  // namespace
}  // namespace ling
