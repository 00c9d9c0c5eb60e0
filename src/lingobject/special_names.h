#pragma once

#include <Python.h>

#include "ling/any.h"

namespace ling::python {

/// Answers the attribute names that stand for what the runtime knows of a value: its documentation, signature,
/// annotations, module, name, code, conversions and member names. They are data, not functions.
///
/// Returns  true when the name is one of these and the value has what it asks for; `answer` is then a new reference, or
///          null with the Python error set. False leaves the name to Python's own look-up.
/// Lock     must be held.
bool answerSpecialName(const ling::Any& value, PyObject* name, PyObject*& answer);

}  // namespace ling::python
