#include "host/cached_import.h"

#include "host/error_scope.h"
#include "host/import_state.h"
#include "host/py_ref.h"

namespace ling::python {

namespace {

/// What the import ended with, without what would keep frames alive; null when the import itself was fine. An
/// interruption is held. Leaves nothing pending.
PyRef takeReason(bool& isInterrupted) {
    isInterrupted = PyErr_Occurred() != nullptr && PyErr_ExceptionMatches(PyExc_Exception) == 0;
    if (isInterrupted)
        forgetError();
    PyRef reason = PyRef::steal(PyErr_GetRaisedException());
    if (reason) {
        (void)PyException_SetTraceback(reason.get(), Py_None);
        PyException_SetContext(reason.get(), nullptr);
        PyException_SetCause(reason.get(), nullptr);
    }
    return reason;
}

}  // namespace

PyObject* CachedImport::require() noexcept {
    PyObject* found = get();
    if (found != nullptr || mustRaise())
        return found;
    PyErr_Format(PyExc_ImportError, "cannot import name '%s' from '%s'", attribute_, module_);
    if (reason_ == nullptr)
        return nullptr;
    PyObject* raised = PyErr_GetRaisedException();
    PyException_SetCause(raised, Py_NewRef(reason_));
    PyErr_SetRaisedException(raised);
    return nullptr;
}

PyObject* CachedImport::find() noexcept {
    const ErrorScope scope;
    PyRef module = PyRef::steal(PyImport_ImportModule(module_));
    PyObject* dictionary = module && PyModule_Check(module.get()) ? PyModule_GetDict(module.get()) : nullptr;
    PyObject* found = dictionary != nullptr ? PyDict_GetItemString(dictionary, attribute_) : nullptr;
    bool isInterrupted = false;
    const PyRef reason = takeReason(isInterrupted);
    if (found == nullptr && (isInterrupted || (module && isBeingImported(module.get()))))
        return nullptr;                               // What it lacks may yet come.
    if (!settled_.load(std::memory_order_acquire)) {  // The lock was given up during the import.
        object_ = Py_XNewRef(found);
        reason_ = Py_XNewRef(reason.get());
        settled_.store(true, std::memory_order_release);
    }
    return object_;
}

}  // namespace ling::python
