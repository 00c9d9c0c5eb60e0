#pragma once

#include "ling/any.h"

#include <utility>

namespace ling::internal {

/// How a language tells that a value which it answered stands in the place of one that has no form in the runtime.
///
/// A single such value passes as what it is, a number or a text that says nothing, with the failure kept beside it. An
/// operation on many values asks for the failure, and ends with it.
struct failure_source {
    /// Forgets a failure that nobody is left to ask for.
    void (*forget)();
    /// The failure beside what this thread was answered last, as an error result, or none. It is not kept any longer.
    Any (*take)();
    /// Whether that failure is somebody's wish to end the program. The answer that it met may then be any: the
    /// operation should end with it, and change nothing that rests on the answer.
    bool (*isInterruption)();
    /// The error for what was raised in the language and ended an operation on many items: given back to the language,
    /// it is raised as the very thing it was. Any other error is answered as it is.
    Any (*asRaised)(const Any& error);
};

/// Makes `source`, which has to live for ever, the one that is asked. Any thread.
LING_EXPORT void set_failure_source(const failure_source* source) noexcept;

/// The source, or null as long as no language has set one.
LING_EXPORT const failure_source* current_failure_source() noexcept;

/// Whether an interruption met what this thread asked last.
inline bool is_interrupted() {
    const failure_source* source = current_failure_source();
    return source != nullptr && source->isInterruption();
}

/// What an operation on many items answers when `error` ends it.
inline Any as_raised(const Any& error) {
    const failure_source* source = current_failure_source();
    return source == nullptr ? error : source->asRaised(error);
}

/// What `ask` answers, or the failure that is beside it: for one of the many values that an operation takes.
template <class Ask>
Any answer_or_failure(Ask&& ask) {
    const failure_source* source = current_failure_source();
    if (source == nullptr)
        return std::forward<Ask>(ask)();
    source->forget();
    Any answer = std::forward<Ask>(ask)();
    Any failure = source->take();
    return failure.isNone() ? answer : failure;
}

}  // namespace ling::internal
