#pragma once

#include <Python.h>

#include "ling/identifier.h"

namespace ling::python {

/// The `ling` identifier of a Python attribute name, borrowed for ever, or null with the Python error set when the name
/// is no text or cannot be encoded. Attribute names are interned strings, so a name that was used before is found by
/// its address. The interpreter lock must be held.
const ling::internal::identifier_data* memberName(PyObject* name);

/// Whether the name begins with "_".
bool isPrivateName(PyObject* name) noexcept;

}  // namespace ling::python
