#pragma once

#include "host/entry.h"
#include "host/interpreter.h"
#include "host/platform.h"
#include "host/stack_room.h"
#include "language/run.h"

namespace ling::python {

/// None when an evaluation can begin on this thread, or an error result.
inline ling::Any prepareEvaluation() {
    if (!hasStackRoom())
        return platform::failure(u"The evaluation is nested too deeply.");
    return ensureStarted();
}

/// What every evaluation has around it: `code` runs with the interpreter lock held, in a run that ends when `limit`
/// seconds have passed. What it answers, or an error result.
template <class Code>
ling::Any evaluateWith(double limit, Code&& code) {
    const Run::Time start = std::chrono::steady_clock::now();
    if (ling::Any problem = prepareEvaluation(); !problem.isNone())
        return problem;
    const PythonEntry entry;
    Run run(limit, start);
    return run.finish(code());
}

}  // namespace ling::python
