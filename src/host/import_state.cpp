#include "host/import_state.h"

#include "host/error_scope.h"
#include "host/names.h"
#include "host/py_ref.h"

namespace ling::python {

namespace {

constinit const Name kSpec{"__spec__"};
constinit const Name kInitializing{"_initializing"};

}  // namespace

bool isBeingImported(PyObject* module) {
    const ErrorScope scope;
    PyRef spec = PyRef::steal(attribute(module, kSpec));
    PyRef flag = PyRef::steal(spec ? attribute(spec.get(), kInitializing) : nullptr);
    return flag && PyObject_IsTrue(flag.get()) == 1;
}

bool isBeingImported(const char* utf8Name) {
    const ErrorScope scope;
    // Not PyImport_GetModule: that one waits for the body's end.
    PyRef module = PyRef::borrow(PyDict_GetItemString(PyImport_GetModuleDict(), utf8Name));
    return module && isBeingImported(module.get());
}

}  // namespace ling::python
