#pragma once

#include <Python.h>

namespace ling::python {

/// Values that travel, as wrappers and errors see it: what `copy` and `pickle` ask them for. All needs the interpreter
/// lock.

/// `copy.copy`: a wrapper around a new container with the same items, or around a new object with the same state. What
/// cannot change (functions, classes, modules) is its own copy.
///
/// Returns  a new reference, or null with a `TypeError` that says what the class lacks, or the error of the object.
PyObject* copyWrapper(PyObject* wrapper);

/// `__reduce_ex__`: how `copy.deepcopy` and `pickle`, with any protocol, take the value apart and put it together
/// again. Two wrappers of one value give one object, and so does a value that holds itself.
///
/// Returns  a new reference to a tuple, or null as above.
PyObject* reduceWrapper(PyObject* wrapper);

/// The member `__reduce_ex__` of the classes of exceptions that stand for error classes: by name and message, since
/// what `pickle` would find under the name of such a class is the error class. A new reference, or null with the Python
/// error set.
PyObject* makeExceptionReducer();

}  // namespace ling::python
