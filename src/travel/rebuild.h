#pragma once

#include <Python.h>

#include "travel/form.h"

namespace ling::python {

/// The Python functions that pickles name. They stand in the module that `import ling.python` gives, under names that
/// begin with "_", where another process finds them. Each is one object for the process, borrowed, or null with the
/// Python error set. All needs the interpreter lock.

/// `_rebuild(kind, argument)`: the traveller of a new value, or of what a name leads to.
PyObject* rebuildFunction();
/// `_open(traveller)`: the value of a traveller as it crosses; any other object is answered as it is.
PyObject* openFunction();
/// `_exception(name, message)`: an exception that stands for an error.
PyObject* exceptionFunction();

/// The word in pickles for how a value of this form is rebuilt.
const char* kindNameOf(const ling::Any& value, Form form) noexcept;

/// Puts them all into the dictionary of a module. False with the Python error set.
bool addRebuilding(PyObject* dictionary);

}  // namespace ling::python
