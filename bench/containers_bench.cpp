#include "ling/hash_containers.h"
#include "ling/list.h"
#include "ling/string.h"
#include "ratio.h"

#include <string>
#include <unordered_map>
#include <vector>

/// What the native containers cost, each beside the standard container that knows no other thread.

namespace ling::bench {
namespace {

constexpr std::size_t kItems = 1'000'000;
constexpr std::size_t kKeys = 10'000;

std::vector<Any> someItems(std::size_t count) {
    std::vector<Any> items;
    for (std::size_t i = 0; i < count; ++i)
        items.emplace_back(i);
    return items;
}

/// Appending a million items, one by one, beside a vector of the same values.
void AppendToList(benchmark::State& state) {
    measureRatio(
        state, 3, kItems, 1,
        [] {
            const List_Generic list;
            for (std::size_t i = 0; i < kItems; ++i)
                list.append(i);
            benchmark::DoNotOptimize(list.size());
        },
        [] {
            std::vector<Any> list;
            for (std::size_t i = 0; i < kItems; ++i)
                list.emplace_back(i);
            benchmark::DoNotOptimize(list.data());
        });
}
BENCHMARK(AppendToList)->UseManualTime();

/// Iterating a million items from native code.
void IterateList(benchmark::State& state) {
    const std::vector<Any> items = someItems(kItems);
    const List_Generic list(items);
    measureRatio(
        state, 10, kItems, 1,
        [&] {
            std::int64_t sum = 0;
            for (iteration walk = list.beginImpl(); walk.advance();)
                sum += walk.item().asInteger();
            benchmark::DoNotOptimize(sum);
        },
        [&] {
            std::int64_t sum = 0;
            for (const Any& item : items) {
                Any copy = item;
                benchmark::DoNotOptimize(copy);
                sum += copy.asInteger();
            }
            benchmark::DoNotOptimize(sum);
        });
}
BENCHMARK(IterateList)->UseManualTime();

/// Looking integers up, beside a standard hash table.
void FindIntegerInMap(benchmark::State& state) {
    const Map_Generic map;
    std::unordered_map<std::int64_t, Any> table;
    for (std::size_t i = 0; i < kKeys; ++i) {
        map.set(i, i);
        table.emplace(i, i);
    }
    measureRatio(
        state, 20, kKeys, 8,
        [&] {
            for (std::size_t i = 0; i < kKeys; ++i)
                benchmark::DoNotOptimize(map.get(i));
        },
        [&] {
            for (std::size_t i = 0; i < kKeys; ++i)
                benchmark::DoNotOptimize(Any(table.find(static_cast<std::int64_t>(i))->second));
        });
}
BENCHMARK(FindIntegerInMap)->UseManualTime();

/// Looking texts up.
void FindTextInMap(benchmark::State& state) {
    const Map_Generic map;
    std::unordered_map<std::u16string, Any> table;
    std::vector<String> keys;
    std::vector<std::u16string> plain;
    for (std::size_t i = 0; i < kKeys; ++i) {
        keys.emplace_back("key number " + std::to_string(i));
        plain.emplace_back(keys.back().view());
        map.set(String(keys.back().view()), i);
        table.emplace(plain.back(), i);
    }
    measureRatio(
        state, 3, kKeys, 8,
        [&] {
            for (const String& key : keys)
                benchmark::DoNotOptimize(map.get(key));
        },
        [&] {
            for (const std::u16string& key : plain)
                benchmark::DoNotOptimize(Any(table.find(key)->second));
        });
}
BENCHMARK(FindTextInMap)->UseManualTime();

/// Filling a map with integers and emptying it again.
void FillAndEmptyMap(benchmark::State& state) {
    measureRatio(
        state, 5, kKeys, 4,
        [] {
            const Map_Generic map;
            for (std::size_t i = 0; i < kKeys; ++i)
                map.set(i, i);
            for (std::size_t i = 0; i < kKeys; ++i)
                benchmark::DoNotOptimize(map.remove(i));
        },
        [] {
            std::unordered_map<std::int64_t, Any> table;
            for (std::size_t i = 0; i < kKeys; ++i)
                table.emplace(i, i);
            for (std::size_t i = 0; i < kKeys; ++i)
                table.erase(static_cast<std::int64_t>(i));
        });
}
BENCHMARK(FillAndEmptyMap)->UseManualTime();

}  // namespace
}  // namespace ling::bench
