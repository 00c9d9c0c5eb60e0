#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace ling::bench {

/// What measuring a row gives: the nanoseconds of one operation, those of its yardstick, and the figure that is held
/// against the target. The figure is the ratio of the two, unless the row says otherwise.
struct Figures {
    double nanoseconds = 0;
    double yardstick = 0;
    double figure = 0;
};

/// One row of the table. A row that keeps its target has a figure that is not above it.
struct Row {
    std::string name;
    double target;
    std::function<Figures()> measure;
};

/// Does something so many times. The loop is inside, so that what is measured is inlined in it, as it would be in a
/// program.
using Loop = std::function<void(std::size_t turns)>;

template <class Work>
Loop repeat(Work work) {
    return [work = std::move(work)](std::size_t turns) mutable {
        for (std::size_t i = 0; i < turns; ++i)
            work();
    };
}

/// Keeps a value from being optimised away.
template <class T>
void keep(const T& value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

/// Work beside its yardstick, which does the same by hand. `nothing`, where there is one, is what both sides spend on
/// repeating alone; it is taken off both. `count` is how many operations one turn has.
struct Contest {
    Loop work;
    Loop yardstick;
    Loop nothing = nullptr;
    std::size_t count = 1;
};

/// Lets the sides take turns, so that what else the machine does meets them alike. Five runs; each side's time in a run
/// is that which one look in ten stays below; the ratio is the median of the runs.
Figures compare(const Contest& contest);

/// The exponent with which the time of `work` grows with its size, from the least time of a few runs at each of two
/// sizes. `work` does something whole of that size, and is given a fresh start each time.
Figures growth(std::size_t small, std::size_t large, const std::function<void(std::size_t size)>& work);

/// The time that this thread has spent computing, in seconds. What other processes do at the same time is not in it.
double threadSeconds();
double median(std::vector<double> values);

}  // namespace ling::bench
