#pragma once

#include "language/evaluate.h"
#include "ling/any.h"

#include <chrono>
#include <cstddef>

namespace ling::python {

/// One run of Python code on one thread that can be ended from outside: an evaluation, or a call with a time limit.
///
/// Whoever ends it raises `KeyboardInterrupt` in the code, wherever that is. What was sent to a run and has not arrived
/// when the run ends is taken back: no later code on the thread ever sees it. Runs nest; to end one ends those inside.
///
/// A run lives on the stack of its thread. Its construction and `finish` need the interpreter lock, what is between
/// them does not.
class Run {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// `limit` is in seconds, from `start` on.
    explicit Run(double limit = kNoLimit, Time start = std::chrono::steady_clock::now());
    /// Ends the run, if `finish` has not. Needs the lock then.
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    /// Ends the run. Answers `outcome`, what its code answered; or, when that is the interruption by which the time
    /// limit ended it, an error that says so, which interrupts nobody else.
    ling::Any finish(ling::Any outcome);

private:
    friend class Runs;
    ling::Any limitError(const ling::Any& interruption) const;

    // What changes is guarded by the lock of all runs.
    const double limit_;
    const unsigned long thread_;
    bool hasSignal_;  // It is ended by a signal, which reaches code that waits.
    Time next_;       // When the watch looks at it: the end of its time, then each next attempt.
    bool isOpen_ = false;
    bool isInterrupted_ = false;  // By `interruptRuns`.
    bool isOverLimit_ = false;
    bool isDue_ = false;        // An interruption has to be sent to it.
    bool isSent_ = false;       // One was.
    bool isSignalled_ = false;  // By a signal, which has not been taken yet.
    std::chrono::milliseconds pause_{50};
    Run* before_ = nullptr;
    Run* after_ = nullptr;
};

/// Ends all runs that there are, once. Does not wait for their ends, nor for the interpreter lock, and needs no lock.
/// Answers on how many threads they are.
std::size_t interruptRuns();

}  // namespace ling::python
