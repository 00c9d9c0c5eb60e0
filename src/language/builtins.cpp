#include "language/builtins.h"

#include "bridge/text.h"
#include "host/interruption.h"

namespace ling::python {

namespace {

PyRef findBuiltin(const Name& function) {
    PyObject* key = function.object();
    PyObject* builtins = PyEval_GetBuiltins();
    PyObject* found = nullptr;
    if (key == nullptr || builtins == nullptr || PyDict_GetItemRef(builtins, key, &found) < 0)
        return {};
    if (found == nullptr)
        PyErr_Format(PyExc_NameError, "name '%U' is not defined", key);
    return PyRef::steal(found);
}

}  // namespace

PyRef callBuiltin(const Name& function, const ling::String& source, PyObject* globals, PyObject* locals) {
    PyRef callee = findBuiltin(function);
    // The text as a whole: Python refuses a NUL in it, where a C string would end silently.
    PyRef text = PyRef::steal(callee ? textToPython(source) : nullptr);
    if (!text)
        return {};
    if (isInterruptionHeld() && raiseHeldInterruption())
        return {};
    PyObject* const arguments[] = {text.get(), globals, locals};
    return PyRef::steal(PyObject_Vectorcall(callee.get(), arguments, std::size(arguments), nullptr));
}

}  // namespace ling::python
