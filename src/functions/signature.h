#pragma once

#include <Python.h>

#include "ling/any.h"

namespace ling::python {

/// The signature of a Python callable, as `inspect.signature` tells it: a `ling::Signature`, or one of the error
/// results "Unable to access 'inspect.signature' function." and "Unable to fetch signature.". Leaves no error pending.
/// The interpreter lock must be held; runs Python code.
ling::Any deriveSignature(PyObject* callable);

}  // namespace ling::python
