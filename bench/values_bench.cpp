#include "ling/any.h"
#include "ling/byte_array.h"
#include "ling/string.h"
#include "ratio.h"

#include <cstring>
#include <memory>
#include <string>

/// What values cost, beside the same work on plain memory.

namespace ling::bench {
namespace {

constexpr std::size_t kValues = 1024;  // They fit in the first cache.
constexpr std::size_t kRounds = 64;

struct plain_value {
    std::uint64_t tag;
    std::uint64_t bits;
};

/// A copy that nobody looks at. What dropping it does to a value, looking at its tag in the memory that was written
/// just before, is all the difference, and it is as long as the copy: one cycle.
template <class T>
void copyEach(const std::vector<T>& values) {
    for (const T& value : values) {
        T copy = value;
        benchmark::DoNotOptimize(copy);
    }
}

std::uint64_t payload(const Any& value) { return value.isNone() ? 0 : value.rawBits(); }
std::uint64_t payload(const plain_value& value) { return value.tag == 0 ? 0 : value.bits; }

/// A copy whose tag and payload are read, as whoever makes a copy does.
template <class T>
void copyAndReadEach(const std::vector<T>& values) {
    std::uint64_t sum = 0;
    for (const T& value : values) {
        T copy = value;
        benchmark::DoNotOptimize(copy);
        sum += payload(copy);
    }
    benchmark::DoNotOptimize(sum);
}

struct immediate_values {
    std::vector<Any> values;
    std::vector<plain_value> structs;

    immediate_values() {
        for (std::size_t i = 0; i < kValues; ++i) {
            values.emplace_back(i);
            structs.push_back({3, i});
        }
    }
};

/// Copying an immediate value and letting the copy go, beside copying a struct of the same size.
void CopyImmediate(benchmark::State& state) {
    const immediate_values all;
    measureRatio(
        state, 1.5, kValues, kRounds, [&] { copyEach(all.values); }, [&] { copyEach(all.structs); });
}
BENCHMARK(CopyImmediate)->UseManualTime();

void CopyAndReadImmediate(benchmark::State& state) {
    const immediate_values all;
    measureRatio(
        state, 1.5, kValues, kRounds, [&] { copyAndReadEach(all.values); }, [&] { copyAndReadEach(all.structs); });
}
BENCHMARK(CopyAndReadImmediate)->UseManualTime();

constexpr std::size_t kMebibyte = 1 << 20;

/// What the round trip writes, 2 MiB of units and 1 MiB of bytes, copied into buffers that are there already.
class copied_output {
public:
    void copy() {
        std::memcpy(toUnits_.get(), units_.get(), 2 * kMebibyte);
        benchmark::ClobberMemory();
        std::memcpy(toBytes_.get(), bytes_.get(), kMebibyte);
        benchmark::ClobberMemory();
    }

private:
    static std::unique_ptr<char[]> filled(std::size_t size) {
        auto buffer = std::make_unique<char[]>(size);
        std::memset(buffer.get(), 'a', size);
        return buffer;
    }
    std::unique_ptr<char[]> units_ = filled(2 * kMebibyte);
    std::unique_ptr<char[]> toUnits_ = filled(2 * kMebibyte);
    std::unique_ptr<char[]> bytes_ = filled(kMebibyte);
    std::unique_ptr<char[]> toBytes_ = filled(kMebibyte);
};

void roundTrip(const std::string& text) {
    const ByteArray bytes = String::fromUTF8(text).toUTF8();
    benchmark::DoNotOptimize(bytes.data());
}

/// From UTF-8 to UTF-16 and back, both new values included, beside copying as much as that writes.
void RoundTripAscii(benchmark::State& state) {
    const std::string text(kMebibyte, 'a');
    copied_output yardstick;
    measureRatio(
        state, 4, 1, 1, [&] { roundTrip(text); }, [&] { yardstick.copy(); });
}
BENCHMARK(RoundTripAscii)->UseManualTime();

/// Text of a European language: an umlaut every ten letters.
void RoundTripLatin(benchmark::State& state) {
    std::string text;
    while (text.size() < kMebibyte)
        text += "abcdefgh\xC3\xA4";
    copied_output yardstick;
    measureRatio(
        state, 20, 1, 1, [&] { roundTrip(text); }, [&] { yardstick.copy(); });
}
BENCHMARK(RoundTripLatin)->UseManualTime();

}  // namespace
}  // namespace ling::bench
