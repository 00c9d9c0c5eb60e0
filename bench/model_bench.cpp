#include "ling/class_builder.h"
#include "ling/class_record.h"
#include "ling/function.h"
#include "ling/native_function.h"
#include "ratio.h"

#include <cstdlib>
#include <functional>
#include <new>
#include <random>
#include <string>

namespace {

/// How often this process asked for memory with `new`.
std::size_t allocations = 0;

void* allocate(std::size_t size) {
    ++allocations;
    void* memory = std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

/// What classes and functions cost, beside the same work without them.

namespace ling::bench {
namespace {

using internal::found_member;
using internal::identifier_data;

/// A hash table with pointer keys that does nothing but its work: a multiplication, one row of slots, at most half
/// full, everything inline.
class pointer_table {
public:
    explicit pointer_table(std::size_t count) {
        while ((std::size_t{1} << bits_) < 2 * count)
            ++bits_;
        slots_.resize(std::size_t{1} << bits_);
    }
    void add(const void* key, const found_member& value) {
        std::size_t index = place(key);
        while (slots_[index].first != nullptr)
            index = (index + 1) & (slots_.size() - 1);
        slots_[index] = {key, value};
    }
    found_member find(const void* key) const noexcept {
        std::size_t index = place(key);
        while (slots_[index].first != key) {
            if (slots_[index].first == nullptr)
                return {};
            index = (index + 1) & (slots_.size() - 1);
        }
        return slots_[index].second;
    }

private:
    std::size_t place(const void* key) const noexcept {
        return (reinterpret_cast<std::uintptr_t>(key) * 0x9E3779B97F4A7C15ULL) >> (64 - bits_);
    }
    unsigned bits_ = 1;
    std::vector<std::pair<const void*, found_member>> slots_;
};

constexpr int kLevels = 10;
constexpr int kMethodsPerLevel = 8;
constexpr std::size_t kLookUps = 4096;
constexpr std::size_t kRounds = 8;

struct deep_class {
    Class_Generic cls;
    std::vector<method_ident_untyped> names;

    deep_class() {
        const FunctionCL_Generic method = make_method("method", "", [](const Any& self) -> Any { return self; });
        for (int level = 0; level < kLevels; ++level) {
            internal::class_builder builder = internal::defclass_impl("Level" + std::to_string(level), "");
            if (level != 0)
                builder.parent(cls);
            for (int i = 0; i < kMethodsPerLevel; ++i) {
                names.emplace_back(String("bench_" + std::to_string(level) + "_" + std::to_string(i)));
                builder.method(names.back(), method);
            }
            cls = builder.build();
        }
    }
};

/// Finding a method by its identifier on a class ten levels deep, beside one probe of a table with pointer keys.
void FindMethod(benchmark::State& state) {
    const deep_class deep;
    pointer_table table(deep.names.size());
    for (const method_ident_untyped& name : deep.names)
        table.add(name.data(), deep.cls.record()->findMethod(name));
    std::mt19937 random(1);
    std::vector<method_ident_untyped> wanted;
    for (std::size_t i = 0; i < kLookUps; ++i)
        wanted.push_back(deep.names[random() % deep.names.size()]);
    const auto findEach = [&](auto&& find) {
        for (const method_ident_untyped& name : wanted) {
            found_member found = find(name);
            benchmark::DoNotOptimize(found);
        }
    };
    const internal::object_value_class* record = deep.cls.record();
    measureRatio(
        state, 2, kLookUps, kRounds, [&] { findEach([&](const auto& name) { return record->findMethod(name); }); },
        [&] { findEach([&](const auto& name) { return table.find(name.data()); }); });
}
BENCHMARK(FindMethod)->UseManualTime();

constexpr std::size_t kCalls = 4096;

std::int64_t add(std::int64_t a, std::int64_t b) { return a + b; }

/// Calling a native function of two arguments by position, beside calling a `std::function`. Nothing is allocated.
void CallNativeFunction(benchmark::State& state) {
    const I_Invokable_Generic function = make_function("add", "a, b", &add);
    std::function<std::int64_t(std::int64_t, std::int64_t)> plain = &add;
    benchmark::DoNotOptimize(plain);
    std::size_t allocated = 0;
    const auto callEach = [](auto&& call) {
        for (std::size_t i = 0; i < kCalls; ++i) {
            auto a = static_cast<std::int64_t>(i);
            benchmark::DoNotOptimize(a);
            auto result = call(a, a);
            benchmark::DoNotOptimize(result);
        }
    };
    measureRatio(
        state, 3, kCalls, kRounds,
        [&] {
            const std::size_t before = allocations;
            callEach([&](std::int64_t a, std::int64_t b) { return function(a, b); });
            allocated += allocations - before;
        },
        [&] { callEach([&](std::int64_t a, std::int64_t b) { return plain(a, b); }); });
    state.counters["allocations"] = static_cast<double>(allocated);
}
BENCHMARK(CallNativeFunction)->UseManualTime();

/// The same for a function that takes and gives values as they are.
void CallFunctionOfValues(benchmark::State& state) {
    const I_Invokable_Generic function =
        make_function("second", "a, b", [](const Any&, const Any& b) -> Any { return b; });
    std::function<Any(const Any&, const Any&)> plain = [](const Any&, const Any& b) { return b; };
    benchmark::DoNotOptimize(plain);
    const Any arguments[] = {1, 2};
    const auto callEach = [](auto&& call) {
        for (std::size_t i = 0; i < kCalls; ++i) {
            Any result = call();
            benchmark::DoNotOptimize(result);
        }
    };
    measureRatio(
        state, 3, kCalls, kRounds, [&] { callEach([&] { return function.invoke(arguments); }); },
        [&] { callEach([&] { return plain(arguments[0], arguments[1]); }); });
}
BENCHMARK(CallFunctionOfValues)->UseManualTime();

}  // namespace
}  // namespace ling::bench
