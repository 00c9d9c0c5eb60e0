#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/class.h"

namespace ling::python {

/// A `ling` function (an object of the class `FunctionPython`) that calls the Python callable `object`.
///
/// Returns  an invokable, or the error "The source object isn't a function.".
/// Owns     the function keeps the callable alive; `object` is borrowed.
/// Lock     must be held. Runs no Python code: the signature is asked for when it is needed.
ling::Any functionFromPython(PyObject* object);

/// The class `FunctionPython`, made on first use. It specialises `PythonProxy`, so that a callable comes back as the
/// same object.
const ling::Class_Generic& functionPythonClass();

}  // namespace ling::python
