#include "host/cached_import.h"

#include "host/error_scope.h"
#include "host/names.h"
#include "host/py_ref.h"

namespace ling::python {

namespace {

constinit const Name kSpec{"__spec__"};
constinit const Name kInitializing{"_initializing"};

/// True while the body of the module is still running, further down on this thread: what it lacks may yet come.
bool isInitializing(PyObject* module) {
    PyRef spec = PyRef::steal(attribute(module, kSpec));
    PyRef flag = PyRef::steal(spec ? attribute(spec.get(), kInitializing) : nullptr);
    return flag && PyObject_IsTrue(flag.get()) == 1;
}

}  // namespace

PyObject* CachedImport::find() noexcept {
    const ErrorScope scope;
    PyRef module = PyRef::steal(PyImport_ImportModule(module_));
    PyObject* dictionary = module ? PyModule_GetDict(module.get()) : nullptr;
    PyObject* found = dictionary != nullptr ? PyDict_GetItemString(dictionary, attribute_) : nullptr;
    if (found == nullptr && module && isInitializing(module.get()))
        return nullptr;
    if (!settled_.load(std::memory_order_acquire)) {  // The lock was given up during the import.
        object_ = Py_XNewRef(found);
        settled_.store(true, std::memory_order_release);
    }
    return object_;
}

}  // namespace ling::python
