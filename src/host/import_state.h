#pragma once

#include <Python.h>

namespace ling::python {

/// Whether the body of a module is still running, on whichever thread. For as long as it does an import lock is held,
/// and a body runs any code. Leaves nothing pending. Needs the interpreter lock.
bool isBeingImported(PyObject* module);
/// The same by the module's name: false for one that nobody has begun to import.
bool isBeingImported(const char* utf8Name);

}  // namespace ling::python
