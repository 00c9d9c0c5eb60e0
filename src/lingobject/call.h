#pragma once

#include <Python.h>

namespace ling::python {

/// `tp_call` of the callable and the per-class types: calls the held value, by position or, as soon as there is one
/// keyword, by name. An error result is raised.
PyObject* call(PyObject* self, PyObject* arguments, PyObject* keywords);

}  // namespace ling::python
