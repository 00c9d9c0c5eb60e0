#pragma once

#include "ling/any.h"

namespace ling::internal {

/// Watches the comparisons and hashes that this thread makes while it lives.
///
/// Neither has a way to say that the stack, or the patience for a value that makes its items while it is walked, came
/// to an end before the answer did. Then all of them end at once, with answers that mean nothing, and the operation
/// that asked for them answers `problem()` instead of its result.
class LING_EXPORT depth_check {
public:
    depth_check() noexcept;
    depth_check(const depth_check&) = delete;
    depth_check& operator=(const depth_check&) = delete;
    ~depth_check();

    /// None, or the error result "The value is nested too deeply.".
    Any problem() const;

    /// Whether a comparison or hash ended too soon, and the others with it.
    static bool isExceeded() noexcept;
    static void noteExceeded() noexcept;
};

/// The result of `operation`, or the error result when a comparison or hash in it ended too soon.
template <class Operation>
Any checking_depth(Operation&& operation) {
    const depth_check check;
    Any result = operation();
    Any problem = check.problem();
    return problem.isNone() ? result : problem;
}

}  // namespace ling::internal
