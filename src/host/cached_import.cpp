#include "host/cached_import.h"

#include "host/error_scope.h"
#include "host/import_state.h"
#include "host/py_ref.h"

namespace ling::python {

namespace {

/// The import itself may have been fine. Leaves nothing pending.
bool endedByInterruption() {
    const bool ended = PyErr_Occurred() != nullptr && PyErr_ExceptionMatches(PyExc_Exception) == 0;
    forgetError();
    return ended;
}

}  // namespace

PyObject* CachedImport::require() noexcept {
    PyObject* found = get();
    if (found == nullptr && !mustRaise())
        PyErr_Format(PyExc_ImportError, "cannot import name '%s' from '%s'", attribute_, module_);
    return found;
}

PyObject* CachedImport::find() noexcept {
    const ErrorScope scope;
    PyRef module = PyRef::steal(PyImport_ImportModule(module_));
    PyObject* dictionary = module && PyModule_Check(module.get()) ? PyModule_GetDict(module.get()) : nullptr;
    PyObject* found = dictionary != nullptr ? PyDict_GetItemString(dictionary, attribute_) : nullptr;
    if (found == nullptr && (endedByInterruption() || (module && isBeingImported(module.get()))))
        return nullptr;                               // What it lacks may yet come.
    if (!settled_.load(std::memory_order_acquire)) {  // The lock was given up during the import.
        object_ = Py_XNewRef(found);
        settled_.store(true, std::memory_order_release);
    }
    return object_;
}

}  // namespace ling::python
