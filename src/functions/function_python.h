#pragma once

#include <Python.h>

#include "ling/any.h"

namespace ling::python {

/// A `ling` function (an object of the class `FunctionPython`) that calls the Python callable `object`.
///
/// Returns  an invokable, or the error "The source object isn't a function.".
/// Owns     the function keeps the callable alive; `object` is borrowed.
/// Lock     must be held. Runs no Python code: the signature is asked for when it is needed.
ling::Any functionFromPython(PyObject* object);

}  // namespace ling::python
