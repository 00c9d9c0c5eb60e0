#pragma once

#include "host/gil_guard.h"
#include "host/interruption.h"

namespace ling::python {

/// Makes native work ask Python from time to time whether to end (`platform::setInterruptionCheck`): it does when a
/// signal has come whose handler raises. On the thread that handles signals, while it holds the interpreter lock; other
/// work is none that Python waits for. The exception is raised once control is back in Python, whatever its class.
///
/// Further reasons to stop a thread belong here, too.
void watchForInterruptions() noexcept;

/// The guard of an entry from `ling`: it starts with a clean error indicator, since Python code never runs with an
/// error pending.
///
/// A conversion may have left one beside a value that says nothing (an integer beyond 64 bits). With Python code of
/// this thread below, the slot that it called will raise it: it is put aside, and back in the end, where it goes before
/// one that came meanwhile. An interruption goes before all others. With no Python code below, an error from an earlier
/// call is forgotten, so that it does not surface in this one.
class PythonEntry {
public:
    PythonEntry() : PythonEntry(PyThreadState_GetUnchecked()) {}
    ~PythonEntry() {
        if (aside_ != nullptr || isInterruptionHeld())
            putBack();
    }
    /// Whether an entry would do nothing on this thread: it holds the lock, and no error is pending or held.
    static bool isNeedless() noexcept {
        const PyThreadState* state = PyThreadState_GetUnchecked();
        return state != nullptr && state->current_exception == nullptr && !isInterruptionHeld();
    }
    PythonEntry(const PythonEntry&) = delete;
    PythonEntry& operator=(const PythonEntry&) = delete;

private:
    explicit PythonEntry(const PyThreadState* current) : gil_(current) {
        if (current != nullptr ? current->current_exception != nullptr : PyErr_Occurred() != nullptr)
            putAside();
    }

    void putAside() noexcept;
    void putBack() noexcept;

    const GilGuard gil_;
    PyObject* aside_ = nullptr;  // Owned.
};

}  // namespace ling::python
