#include "host/entry.h"

#include "host/error_scope.h"
#include "host/platform.h"

#include <utility>

namespace ling::python {

namespace {

bool isInterruptionDue() {
    if (PyThreadState_GetUnchecked() == nullptr)
        return false;
    if (isInterruptionHeld() || (PyErr_Occurred() != nullptr && PyErr_ExceptionMatches(PyExc_Exception) == 0))
        return true;
    PyObject* raised = nullptr;
    {
        const ErrorScope scope;  // A handler is Python code.
        if (PyErr_CheckSignals() != 0)
            raised = PyErr_GetRaisedException();
    }
    if (raised == nullptr)
        return false;
    holdInterruption(raised);
    return true;
}

}  // namespace

void watchForInterruptions() noexcept { platform::setInterruptionCheck(&isInterruptionDue); }

/// An interruption is held rather than put aside: whoever would call Python code next has to see it.
void PythonEntry::putAside() noexcept {
    if (PyEval_GetFrame() == nullptr)
        return PyErr_Clear();
    PyObject* exception = PyErr_GetRaisedException();
    if (isInterruption(exception))
        holdInterruption(exception);
    else
        aside_ = exception;
}

void PythonEntry::putBack() noexcept {
    PyObject* aside = std::exchange(aside_, nullptr);
    PyObject* interruption = releaseInterruption();
    PyObject* pending = PyErr_GetRaisedException();
    if (pending != nullptr && isInterruption(pending) && interruption == nullptr)
        std::swap(pending, interruption);
    PyObject* first = interruption != nullptr ? std::exchange(interruption, nullptr)
                      : aside != nullptr      ? std::exchange(aside, nullptr)
                                              : std::exchange(pending, nullptr);
    Py_XDECREF(aside);  // What is left over goes with nothing pending, as its end may run any code.
    Py_XDECREF(pending);
    PyErr_SetRaisedException(first);
}

}  // namespace ling::python
