#pragma once

#include <Python.h>

/// What the native modules of the tests have in common. They are built as anybody builds one: they are not linked to
/// libpython, and find its functions and its objects among the symbols of the process.
namespace native {

inline PyObject* answer(PyObject*, PyObject*) { return PyLong_FromLong(42); }

/// Uses data of libpython and not only functions: an instance of the interpreter's own classes, or its own exception.
inline PyObject* check(PyObject*, PyObject* value) {
    if (!PyLong_CheckExact(value)) {
        PyErr_Format(PyExc_TypeError, "not an integer: %R", value);
        return nullptr;
    }
    return Py_NewRef(Py_None);
}

inline PyMethodDef methods[] = {
    {"answer", answer, METH_NOARGS, "Returns 42."},
    {"check", check, METH_O, "Accepts integers alone."},
    {nullptr, nullptr, 0, nullptr},
};

}  // namespace native
