#pragma once

#include "ling/any.h"

namespace ling::internal {

/// Watches the comparisons, hashes and display texts that this thread makes while it lives.
///
/// None of them has a way to say that it ended before it was done: because the stack, or the patience for a value that
/// makes its items while it is walked, came to an end, or because the program is to stop (`interruption_poll`). Then
/// all of them end at once, with answers that mean nothing, and the operation that asked for them answers `problem()`
/// instead of its result.
class LING_EXPORT walk_check {
public:
    walk_check() noexcept;
    walk_check(const walk_check&) = delete;
    walk_check& operator=(const walk_check&) = delete;
    ~walk_check();

    /// None, or the error result "The value is nested too deeply." or "The call was interrupted.".
    Any problem() const;

    /// Whether a walk ended too soon, and the others with it; and whether the depth was the reason.
    static bool isEnded() noexcept;
    static bool isTooDeep() noexcept;
    static void noteTooDeep() noexcept;
    static void noteInterrupted() noexcept;
};

/// The error result "The call was interrupted.", which ends an operation that takes many steps (`interruption_poll`).
LING_EXPORT Any interrupted_error();

/// The result of `operation`, or the error result when a walk in it ended too soon.
template <class Operation>
Any checking_walks(Operation&& operation) {
    const walk_check check;
    Any result = operation();
    Any problem = check.problem();
    return problem.isNone() ? result : problem;
}

}  // namespace ling::internal
