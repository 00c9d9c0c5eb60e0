#pragma once

#include <benchmark/benchmark.h>

#include <ctime>

#include <algorithm>
#include <vector>

namespace ling::bench {

/// The time that this thread has spent computing, in seconds. What other processes do at the same time is not in it.
inline double threadSeconds() {
    std::timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

template <class Work>
double secondsOf(std::size_t rounds, Work&& work) {
    const double begin = threadSeconds();
    for (std::size_t i = 0; i < rounds; ++i)
        work();
    return threadSeconds() - begin;
}

/// The time that one run in ten stays below: what the work takes when nothing else is in its way.
inline double undisturbed(std::vector<double> times) {
    const auto tenth = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 10);
    std::nth_element(times.begin(), tenth, times.end());
    return *tenth;
}

/// Holds one piece of work against another that does the same by hand, the yardstick. They take turns, so that what
/// else the machine does meets both alike; the counter "ratio" is that of their undisturbed times, and "limit" what it
/// should stay below. Each piece does its work `count` times, and is run for `rounds` between two looks at the clock.
/// To be registered with `UseManualTime`: the time shown is that of the work of one look.
template <class Work, class Yardstick>
void measureRatio(benchmark::State& state, double limit, std::size_t count, std::size_t rounds, Work&& work,
                  Yardstick&& yardstick) {
    std::vector<double> times;
    std::vector<double> yardsticks;
    for (auto unused : state) {
        (void)unused;
        yardsticks.push_back(secondsOf(rounds, yardstick));
        times.push_back(secondsOf(rounds, work));
        state.SetIterationTime(times.back());
    }
    const double nanoSeconds = 1e9 / static_cast<double>(count * rounds);
    state.counters["ratio"] = undisturbed(times) / undisturbed(yardsticks);
    state.counters["limit"] = limit;
    state.counters["ns"] = undisturbed(times) * nanoSeconds;
    state.counters["yardstick_ns"] = undisturbed(yardsticks) * nanoSeconds;
}

}  // namespace ling::bench
