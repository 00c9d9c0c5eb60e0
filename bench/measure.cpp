#include "measure.h"

#include <ctime>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ling::bench {

namespace {

constexpr int kRuns = 5;
constexpr double kLook = 0.0005;  // Seconds between two looks at the clock.
constexpr double kRow = 0.8;      // Seconds that a row takes, if its work is small enough.

double secondsOf(const Loop& loop, std::size_t turns) {
    const double begin = threadSeconds();
    loop(turns);
    return threadSeconds() - begin;
}

/// The time that one look in ten stays below: what the work takes when nothing else is in its way.
double undisturbed(std::vector<double> times) {
    const auto tenth = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 10);
    std::nth_element(times.begin(), tenth, times.end());
    return *tenth;
}

/// One side of a contest: its loop, how often it is repeated in one look, and the looks so far.
struct Side {
    explicit Side(const Loop& work) : loop(&work) {
        if (!work)
            return;
        while ((seconds = secondsOf(work, turns)) < kLook && turns < 1'000'000)
            turns *= seconds < kLook / 16 ? 8 : 2;
    }
    void look() {
        if (*loop)
            looks.push_back(secondsOf(*loop, turns) / static_cast<double>(turns));
    }
    double take() { return looks.empty() ? 0 : undisturbed(std::exchange(looks, {})); }

    const Loop* loop;
    std::size_t turns = 1;
    double seconds = 0;
    std::vector<double> looks;
};

}  // namespace

double threadSeconds() {
    std::timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Figures compare(const Contest& contest) {
    Side work(contest.work);
    Side yardstick(contest.yardstick);
    Side nothing(contest.nothing);
    const double once = work.seconds + yardstick.seconds + nothing.seconds;
    const int looks = std::clamp(static_cast<int>(kRow / (kRuns * once)), 2, 100);
    std::vector<double> works;
    std::vector<double> yardsticks;
    std::vector<double> ratios;
    for (int run = 0; run < kRuns; ++run) {
        for (int i = 0; i < looks; ++i)
            for (Side* side : {&yardstick, &work, &nothing})
                side->look();
        const double idle = nothing.take();
        works.push_back(work.take() - idle);
        yardsticks.push_back(yardstick.take() - idle);
        ratios.push_back(works.back() / yardsticks.back());
    }
    const double nanoseconds = 1e9 / static_cast<double>(contest.count);
    return {median(works) * nanoseconds, median(yardsticks) * nanoseconds, median(ratios)};
}

Figures growth(std::size_t small, std::size_t large, const std::function<void(std::size_t size)>& work) {
    auto least = [&](std::size_t size) {
        double seconds = 1e9;
        for (int i = 0; i < 3; ++i)
            seconds = std::min(seconds, secondsOf([&](std::size_t) { work(size); }, 1));
        return seconds;
    };
    const double first = least(small);
    const double second = least(large);
    const double factor = static_cast<double>(large) / static_cast<double>(small);
    return {1e9 * second / static_cast<double>(large), 1e9 * first / static_cast<double>(small),
            std::log(second / first) / std::log(factor)};
}

}  // namespace ling::bench
