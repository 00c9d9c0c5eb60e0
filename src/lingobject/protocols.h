#pragma once

#include <Python.h>

/// The slots that are simple enough to stand together: the end of a wrapper, hash, comparison, text and iteration.
/// All run with the interpreter lock held by their caller.
namespace ling::python {

void deallocate(PyObject* self);
Py_hash_t hash(PyObject* self);
PyObject* compare(PyObject* self, PyObject* other, int operation);
PyObject* representation(PyObject* self);
PyObject* text(PyObject* self);
PyObject* iterate(PyObject* self);
PyObject* nextItem(PyObject* self);

}  // namespace ling::python
