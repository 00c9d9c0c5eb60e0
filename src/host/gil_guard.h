#pragma once

#include <Python.h>

namespace ling::python {

/// Holds the interpreter lock for as long as it lives.
///
/// Every entry from `ling` into Python constructs one, and lets it go last: after the references that it covers. It
/// nests, also through Python code that calls back. A thread that Python does not know gets a thread state with its
/// first guard and keeps it until the thread ends, so that `threading.local`, context variables and tracing last from
/// one call to the next, and so that later guards cost a fraction of the first.
///
/// A thread that has a current thread state holds the lock already: for it there is nothing to do.
///
/// Must only be constructed while an interpreter runs (`ensureStarted`, or `ifAlive` where that is not certain).
class GilGuard {
public:
    GilGuard() : GilGuard(PyThreadState_GetUnchecked()) {}
    /// The same for who knows the thread's current state already.
    explicit GilGuard(const PyThreadState* current)
        : holds_(current == nullptr), state_(holds_ ? acquire() : PyGILState_LOCKED) {}
    /// A failing release has no way on: it ends the process.
    ~GilGuard() {
        if (holds_)
            PyGILState_Release(state_);
    }
    GilGuard(const GilGuard&) = delete;
    GilGuard& operator=(const GilGuard&) = delete;

    /// A guard that holds the lock if there is an interpreter, and holds nothing if there is none: before the start,
    /// after a start that failed, and once the interpreter is being finalised. For code that may run so late, such as
    /// the destructors of values. Ask the guard before touching Python.
    static GilGuard ifAlive() noexcept { return GilGuard(isInterpreterAlive()); }
    explicit operator bool() const noexcept { return alive_; }

private:
    explicit GilGuard(bool alive)
        : alive_(alive), holds_(alive && !isHeld()), state_(holds_ ? acquire() : PyGILState_LOCKED) {}
    static bool isInterpreterAlive() noexcept { return Py_IsInitialized() != 0 && Py_IsFinalizing() == 0; }
    static bool isHeld() noexcept { return PyThreadState_GetUnchecked() != nullptr; }
    static PyGILState_STATE acquire() {
        return PyGILState_GetThisThreadState() != nullptr ? PyGILState_Ensure() : acquireAsNewcomer();
    }
    static PyGILState_STATE acquireAsNewcomer();

    const bool alive_ = true;
    const bool holds_;  // Took the lock itself.
    const PyGILState_STATE state_;
};

}  // namespace ling::python
