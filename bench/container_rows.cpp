#include "rows.h"

#include "ling/class_builder.h"
#include "ling/hash_containers.h"
#include "ling/list.h"
#include "ling/string.h"

#include <string>
#include <thread>
#include <unordered_map>
#include <variant>
#include <vector>

namespace ling::bench {

namespace {

constexpr std::size_t kItems = 1'000'000;

/// What a standard container holds for the same purpose, in 16 bytes.
using Variant = std::variant<std::monostate, bool, std::int64_t, double>;
static_assert(sizeof(Variant) == sizeof(Any));

Variant variant(std::size_t i) { return static_cast<std::int64_t>(i); }

List_Generic nativeList() {
    const List_Generic list;
    for (std::size_t i = 0; i < kItems; ++i)
        list.append(i);
    return list;
}
std::vector<Variant> standardList() {
    std::vector<Variant> list;
    for (std::size_t i = 0; i < kItems; ++i)
        list.push_back(variant(i));
    return list;
}
/// The keys 0 to a million, in no order: neighbours in the one table or the other are met by chance only.
std::int64_t scattered(std::size_t i) { return static_cast<std::int64_t>(i * 420489 % kItems); }

Map_Generic nativeMap() {
    const Map_Generic map;
    for (std::size_t i = 0; i < kItems; ++i)
        map.set(scattered(i), i);
    return map;
}
std::unordered_map<std::int64_t, Variant> standardMap() {
    std::unordered_map<std::int64_t, Variant> map;
    for (std::size_t i = 0; i < kItems; ++i)
        map.emplace(scattered(i), variant(i));
    return map;
}

template <class Work, class Yardstick>
Figures compareItems(Work&& work, Yardstick&& yardstick) {
    return compare({repeat(work), repeat(yardstick), nullptr, kItems});
}

Figures buildList() {
    return compareItems([] { keep(nativeList()); }, [] { keep(standardList().data()); });
}

Figures readList() {
    const List_Generic list = nativeList();
    const std::vector<Variant> standard = standardList();
    return compareItems(
        [&] {
            for (std::size_t i = 0; i < kItems; ++i)
                keep(list.at(static_cast<std::int64_t>(i)));
        },
        [&] {
            for (std::size_t i = 0; i < kItems; ++i)
                keep(Variant(standard.at(i)));
        });
}

Figures iterateList() {
    const List_Generic list = nativeList();
    const std::vector<Variant> standard = standardList();
    return compareItems(
        [&] {
            for (iteration walk = list.beginImpl(); walk.advance();)
                keep(walk.item());
        },
        [&] {
            for (const Variant& item : standard)
                keep(Variant(item));
        });
}

Figures buildMap() {
    return compareItems([] { keep(nativeMap()); }, [] { keep(standardMap().size()); });
}

Figures readMap() {
    const Map_Generic map = nativeMap();
    const std::unordered_map<std::int64_t, Variant> standard = standardMap();
    return compareItems(
        [&] {
            for (std::size_t i = 0; i < kItems; ++i)
                keep(map.get(scattered(i)));
        },
        [&] {
            for (std::size_t i = 0; i < kItems; ++i)
                keep(Variant(standard.find(scattered(i))->second));
        });
}

Figures iterateMap() {
    const Map_Generic map = nativeMap();
    const std::unordered_map<std::int64_t, Variant> standard = standardMap();
    return compareItems(
        [&] {
            for (iteration walk = map.beginImpl(); walk.advance();)
                keep(walk.item());
        },
        [&] {
            for (const auto& entry : standard)
                keep(entry.first);
        });
}

/// The keys are found by content: the texts that are looked up are others than those stored.
Figures readMapByText() {
    constexpr std::size_t kKeys = 10'000;
    const Map_Generic map;
    std::unordered_map<std::u16string, Variant> standard;
    std::vector<String> keys;
    std::vector<std::u16string> standardKeys;
    for (std::size_t i = 0; i < kKeys; ++i) {
        keys.emplace_back("key number " + std::to_string(i));
        standardKeys.emplace_back(keys.back().view());
        map.set(String(keys.back().view()), i);
        standard.emplace(standardKeys.back(), variant(i));
    }
    const auto work = [&] {
        for (const String& key : keys)
            keep(map.get(key));
    };
    const auto yardstick = [&] {
        for (const std::u16string& key : standardKeys)
            keep(Variant(standard.find(key)->second));
    };
    return compare({repeat(work), repeat(yardstick), nullptr, kKeys});
}

/// Two threads make and drop objects of one class, beside one thread that does so alone.
Figures twoThreads() {
    const Class_Generic cls = internal::defclass_impl("Shared", "bench").field(field_ident_untyped("value")).build();
    constexpr int kObjects = 200'000;
    auto make = [&cls](double* seconds) {
        const double begin = threadSeconds();
        for (int i = 0; i < kObjects; ++i)
            keep(cls.allocateInstance());
        *seconds = threadSeconds() - begin;
    };
    std::vector<double> alone(5);
    std::vector<double> together(10);
    for (std::size_t i = 0; i < alone.size(); ++i) {
        std::thread([&] { make(&alone[i]); }).join();
        std::thread other([&] { make(&together[2 * i]); });
        std::thread([&] { make(&together[2 * i + 1]); }).join();
        other.join();
    }
    const double nanoseconds = 1e9 / kObjects;
    const double work = median(together) * nanoseconds;
    const double yardstick = median(alone) * nanoseconds;
    return {work, yardstick, work / yardstick};
}

}  // namespace

std::vector<Row> containerRows() {
    return {
        {"list, build a million, each", 2, buildList},     {"list, read a million, each", 2, readList},
        {"list, iterate a million, each", 2, iterateList}, {"map, build a million, each", 2, buildMap},
        {"map, look up a million, each", 2, readMap},      {"map, iterate a million, each", 2, iterateMap},
        {"map, look up by text, each", 2, readMapByText},  {"objects, two threads beside one", 1.3, twoThreads},
    };
}

}  // namespace ling::bench
