#pragma once

#include "ling/error.h"
#include "ling/result.h"

#include <utility>

namespace ling::internal {

/// What an operation answered, read as a handle: a lazy answer is resolved, an error result passed on, and a value of
/// another class gives the standard error of a failed cast.
template <class Handle>
Result<Handle> read_result(Any answer) {
    answer = result_unwrap_lazy(std::move(answer));
    if (is_error_result(answer))
        return Result<Handle>::failure(std::move(answer));
    return Handle::cast(answer);
}

/// The answer of an operation that is only done for its effect: none, or the error result.
inline Any read_done(Any answer) {
    answer = result_unwrap_lazy(std::move(answer));
    return is_error_result(answer) ? answer : Any();
}

}  // namespace ling::internal
