#pragma once

#include <Python.h>

#include <atomic>

namespace ling::python {

/// Exceptions that are no `Exception`: `KeyboardInterrupt`, `SystemExit` and their like. They are no error of the call
/// that they come out of: somebody wants the program to stop, so nothing here may lose them.
///
/// Where a failed call has a fixed outcome (a text, an order, "not there"), the interruption is held for its thread
/// until control is back in Python, and raised there as the very exception that it is. Until then no other call is made
/// on behalf of the operation. Everything here needs the interpreter lock.

inline bool isInterruption(PyObject* exception) noexcept {
    return PyObject_TypeCheck(exception, reinterpret_cast<PyTypeObject*>(PyExc_Exception)) == 0;
}

namespace internal {

/// How many threads hold one: while that is none, looking costs one load.
extern constinit std::atomic<int> holders;
extern constinit thread_local PyObject* held;  // Owned.

}  // namespace internal

/// Whether this thread holds one.
inline bool isInterruptionHeld() noexcept {
    return internal::holders.load(std::memory_order_relaxed) != 0 && internal::held != nullptr;
}

/// Holds an exception, whose reference comes along: an interruption, or what the handler of a signal raised. The first
/// one stays. On a thread that has no Python code below there is nowhere to raise it later: it is let go.
void holdInterruption(PyObject* exception) noexcept;
/// What this thread holds, with its reference, or null. Nothing is held afterwards.
PyObject* releaseInterruption() noexcept;

/// Makes what this thread holds the pending exception, in place of one that is pending. False when nothing is held.
bool raiseHeldInterruption() noexcept;

/// Whether an error is pending, or was made pending now because an interruption is held: whoever was called by Python
/// asks this before it answers a value.
inline bool mustRaise() noexcept {
    return (isInterruptionHeld() && raiseHeldInterruption()) || PyErr_Occurred() != nullptr;
}

/// The same for interruptions alone: whoever means to raise an error of his own asks this before.
inline bool mustRaiseInterruption() noexcept {
    return (isInterruptionHeld() && raiseHeldInterruption()) ||
           (PyErr_Occurred() != nullptr && PyErr_ExceptionMatches(PyExc_Exception) == 0);
}

/// Drops the pending error, for those to whom any failure means the same; an interruption is held.
void forgetPendingError() noexcept;
inline void forgetError() noexcept {
    if (PyErr_Occurred() != nullptr)
        forgetPendingError();
}

}  // namespace ling::python
