#include "host/interruption.h"

#include <utility>

namespace ling::python {

namespace internal {

constinit std::atomic<int> holders{0};
constinit thread_local PyObject* held = nullptr;

}  // namespace internal

void holdInterruption(PyObject* exception) noexcept {
    if (internal::held != nullptr || PyEval_GetFrame() == nullptr) {
        Py_DECREF(exception);
        return;
    }
    internal::held = exception;
    internal::holders.fetch_add(1, std::memory_order_relaxed);
}

PyObject* releaseInterruption() noexcept {
    PyObject* released = std::exchange(internal::held, nullptr);
    if (released != nullptr)
        internal::holders.fetch_sub(1, std::memory_order_relaxed);
    return released;
}

bool raiseHeldInterruption() noexcept {
    PyObject* interruption = releaseInterruption();
    if (interruption == nullptr)
        return false;
    Py_XDECREF(PyErr_GetRaisedException());  // With nothing pending, as its end may run any code.
    PyErr_SetRaisedException(interruption);
    return true;
}

void forgetPendingError() noexcept {
    PyObject* exception = PyErr_GetRaisedException();
    if (isInterruption(exception))
        holdInterruption(exception);
    else
        Py_DECREF(exception);
}

}  // namespace ling::python
