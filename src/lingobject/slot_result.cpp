#include "lingobject/slot_result.h"

#include "bridge/errors.h"
#include "host/py_ref.h"

namespace ling::python {

PyObject* raise(PyObject* type, const ling::String& text) {
    if (mustRaiseInterruption())
        return nullptr;
    PyErr_Clear();
    PyRef message = PyRef::steal(toPython(text));
    if (message)
        PyErr_SetObject(type, message.get());
    return nullptr;
}

ling::String messageOf(const ling::Any& error) {
    const ling::Result<ling::Error> known = ling::Error::cast(error);
    return known ? known->message() : ling::String();
}

PyObject* raiseMessage(const ling::Any& error) {
    return raiseCarried(error) ? nullptr : raise(PyExc_RuntimeError, messageOf(error));
}

}  // namespace ling::python
