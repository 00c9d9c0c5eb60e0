#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace ling::bench {

/// The time of one run of `work` in seconds.
template <class Work>
double secondsOf(Work&& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Holds one piece of work against another that does the same by hand, the yardstick. They take turns, so that what
/// else the machine does meets both alike; the counter "ratio" is that of the median times, and "limit" what it should
/// stay below. Each piece does its work `count` times. To be registered with `UseManualTime`, the time shown is that of
/// one `work` of `count`.
template <class Work, class Yardstick>
void measureRatio(benchmark::State& state, double limit, std::size_t count, Work&& work, Yardstick&& yardstick) {
    std::vector<double> times;
    std::vector<double> yardsticks;
    for (auto unused : state) {
        (void)unused;
        yardsticks.push_back(secondsOf(yardstick));
        times.push_back(secondsOf(work));
        state.SetIterationTime(times.back());
    }
    const auto each = 1e9 / static_cast<double>(count);
    state.counters["ratio"] = median(times) / median(yardsticks);
    state.counters["limit"] = limit;
    state.counters["ns"] = median(times) * each;
    state.counters["yardstick_ns"] = median(yardsticks) * each;
}

}  // namespace ling::bench
