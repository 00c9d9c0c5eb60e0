#include "proxies/argument_array.h"

#include "bridge/convert.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "host/stack_room.h"

namespace ling::python {

ArgumentArray::ArgumentArray(std::size_t capacity)
    : large_(capacity > kSmall ? std::make_unique<PyObject*[]>(capacity + 1) : nullptr),
      items_((large_ == nullptr ? small_ : large_.get()) + 1) {}

ArgumentArray::~ArgumentArray() {
    while (count_ != 0)
        Py_DECREF(items_[--count_]);
}

bool ArgumentArray::add(const ling::Any& value) {
    PyObject* converted = toPythonLocked(value);
    if (converted == nullptr)
        return false;
    items_[count_++] = converted;
    return true;
}

PyObject* ArgumentArray::call(PyObject* callable) const {
    if (!hasStackRoom()) {
        PyErr_SetString(PyExc_RecursionError, "The call is nested too deeply.");
        return nullptr;
    }
    return PyObject_Vectorcall(callable, items_, count_ | PY_VECTORCALL_ARGUMENTS_OFFSET, nullptr);
}

ling::Any takeResult(PyObject* result) {
    PyRef owned = PyRef::steal(result);
    if (owned)
        return toLingLocked(owned.get());
    const ling::Any error = takePythonError();
    // What is no `Exception` (an interrupt, an exit) leaves no error behind; the call gave nothing all the same.
    return error.isNone() ? platform::failure(u"The call was interrupted.") : error;
}

ling::Any cannotConvert(const ling::Any& argument) {
    PyErr_Clear();
    return platform::failure(ling::String(u"Unable to convert an argument: {}.").arg(argument));
}

}  // namespace ling::python
