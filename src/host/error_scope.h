#pragma once

#include <Python.h>

namespace ling::python {

/// Puts the pending Python error aside for as long as it lives: the code below it starts without one, and what that
/// code leaves pending is forgotten. For work on the side, which must neither be confused by an error that is not its
/// own nor replace it. Needs the interpreter lock throughout.
class ErrorScope {
public:
    ErrorScope() noexcept : pending_(PyErr_GetRaisedException()) {}
    ~ErrorScope() { PyErr_SetRaisedException(pending_); }
    ErrorScope(const ErrorScope&) = delete;
    ErrorScope& operator=(const ErrorScope&) = delete;

private:
    PyObject* const pending_;
};

}  // namespace ling::python
