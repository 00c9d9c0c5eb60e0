#pragma once

#include <Python.h>

namespace ling::python {

/// `tp_getattro` and `tp_setattro` of every type of the family: properties and methods of the held value by name.
/// Both run with the interpreter lock held by their caller. Names that begin with "_" are read from the Python object,
/// never from the value; written, they reach it as all others do, and are stored in a declared field of that name.
PyObject* lookUpAttribute(PyObject* self, PyObject* name);
int assignAttribute(PyObject* self, PyObject* name, PyObject* value);

}  // namespace ling::python
