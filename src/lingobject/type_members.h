#pragma once

#include <Python.h>

namespace ling::python {

/// What Python's tools look for in a type rather than at an object, put into the dictionaries of the types beside what
/// their slots give. Python's own look-up finds it there; the slot for attributes answers before it.
///
/// Each returns false with the Python error set when there is no memory, needs the interpreter lock, and runs no Python
/// code. `type` has to be ready.

/// For the types that the others derive from: `__signature__`, where `inspect` looks before it reads the text of a
/// signature, in which it understands no types; `__dir__`, which adds to what the type offers what the object itself
/// does, for `dir()` and completion; `__copy__` and `__reduce_ex__`, for `copy` and `pickle`.
bool addSharedMembers(PyTypeObject* type);

/// For every type: `__doc__`, by which `help()` finds the text of a value; it looks past the slot, and would take the
/// text of the type for that of the object.
bool addDocumentation(PyTypeObject* type);

}  // namespace ling::python
