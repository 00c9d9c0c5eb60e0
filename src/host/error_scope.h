#pragma once

#include "host/interruption.h"

namespace ling::python {

/// Puts the pending Python error aside for as long as it lives, and an interruption that is held with it: the code
/// below it starts without one, and what that code leaves pending is forgotten, an interruption held. For work on the
/// side, which must neither be confused by an error that is not its own nor replace it. Needs the interpreter lock
/// throughout.
class ErrorScope {
public:
    ErrorScope() noexcept
        : pending_(PyErr_GetRaisedException()), held_(isInterruptionHeld() ? releaseInterruption() : nullptr) {}
    ~ErrorScope() {
        forgetError();
        if (held_ != nullptr) {
            Py_XDECREF(releaseInterruption());
            holdInterruption(held_);
        }
        if (pending_ != nullptr)
            PyErr_SetRaisedException(pending_);
    }
    ErrorScope(const ErrorScope&) = delete;
    ErrorScope& operator=(const ErrorScope&) = delete;

private:
    PyObject* const pending_;
    PyObject* const held_;
};

/// Several steps of which each may leave an error pending beside what it answers, and none may start with one: between
/// two steps `endStep` puts it aside. In the end the first of them is pending again, unless an interruption came.
class ErrorSteps {
public:
    ErrorSteps() noexcept = default;
    ~ErrorSteps() {
        endStep();
        if (first_ != nullptr)
            PyErr_SetRaisedException(first_);
    }
    ErrorSteps(const ErrorSteps&) = delete;
    ErrorSteps& operator=(const ErrorSteps&) = delete;

    void endStep() noexcept {
        if (PyErr_Occurred() == nullptr)
            return;
        if (first_ == nullptr && PyErr_ExceptionMatches(PyExc_Exception) != 0)
            first_ = PyErr_GetRaisedException();
        else
            forgetPendingError();
    }

private:
    PyObject* first_ = nullptr;  // Owned.
};

}  // namespace ling::python
