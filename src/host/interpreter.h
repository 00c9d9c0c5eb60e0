#pragma once

#include "ling/any.h"

namespace ling::python {

/// The start of the embedded interpreter. This header knows nothing of what a start involves: what follows it is
/// registered from above (`host/startup.cpp`), so that evaluation can make sure of an interpreter without knowing.

/// Makes sure that the interpreter has been started, starting it now if it has not. None, or an error result when no
/// interpreter runs after all. Call it before constructing a guard. The interpreter lock may be held or not; it is in
/// the same state afterwards. From within the start itself it returns at once.
ling::Any ensureStarted();

/// Starts the interpreter, once per process, and then does what was registered with `setStartSteps`. A failed start is
/// not reported: `ensureStarted` tells those who need an interpreter.
void startInterpreter();

/// What follows the start. Both run without the interpreter lock, on the thread that starts.
struct StartSteps {
    /// After an interpreter of our own came up; not in a process whose interpreter ran already. Answers whether the
    /// start goes on.
    bool (*afterOwnStart)() = nullptr;
    /// After every start.
    void (*afterAnyStart)() = nullptr;
};
/// For static initialisers: replaces nothing that a start has seen already.
void setStartSteps(const StartSteps& steps) noexcept;

}  // namespace ling::python
