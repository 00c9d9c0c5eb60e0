#pragma once

#include <Python.h>

namespace ling::python {

/// A new exception of the class that stands for the error class of that name, as it is raised for an error with this
/// message; one that stands for no error when the message is None. A new reference, or null with the Python error set.
/// Needs the interpreter lock. What an exception is reduced to is in `bridge/travel.h`.
PyObject* makeException(PyObject* name, PyObject* message);

}  // namespace ling::python
