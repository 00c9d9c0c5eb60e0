#pragma once

#include <Python.h>

#include "ling/any.h"

namespace ling::python {

/// How values that do not cross as they are are taken apart, for `pickle` and `copy`. Both need the interpreter lock.

/// What `__reduce_ex__` of the value's traveller answers: a call that makes the value, its state, its items. A new
/// reference, or null with the Python error set.
PyObject* reduceValue(const ling::Any& value);

/// Takes in the state that `reduceValue` gave. False with the Python error set.
bool takeState(const ling::Any& value, PyObject* state);

}  // namespace ling::python
