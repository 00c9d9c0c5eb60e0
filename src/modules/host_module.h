#pragma once

#include <Python.h>

#include "ling/module.h"

namespace ling::python {

/// A module of the host as Python's `import` gives it: a Python module that reads through to the host's, so that what
/// is registered there later is here as well. Each read converts anew; a module below it is imported when it is read.
///
/// What is assigned stays in the Python module and hides the host's member from those who import it, as test tools want
/// it, until it is deleted; only a property with a setter is set in the host. Python's own attributes (`__name__`,
/// `__spec__`, ...) are set by the import system. `__doc__`, `__all__` and `__path__` say what the host's module says
/// at the time, unless somebody has assigned them.
///
/// Returns  a new reference, or null with the Python error set.
/// Lock     must be held.
PyObject* makeHostModule(const ling::Module& module);

/// Whether Python code can bind the text as a name: an identifier that is no keyword. -1 with the Python error set. The
/// interpreter lock must be held.
int isBindableName(PyObject* name);

}  // namespace ling::python
