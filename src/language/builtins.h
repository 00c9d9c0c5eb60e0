#pragma once

#include "host/names.h"
#include "host/py_ref.h"
#include "ling/string.h"

namespace ling::python {

namespace names {

inline constinit const Name eval{"eval"};
inline constinit const Name exec{"exec"};

}  // namespace names

/// Calls `function`, which is `eval` or `exec`, of the builtins that are in force with (source, globals, locals). The
/// dictionaries are borrowed.
///
/// Returns  the result, or null with the Python error set; a missing builtin is a `NameError`.
/// Lock     must be held.
PyRef callBuiltin(const Name& function, const ling::String& source, PyObject* globals, PyObject* locals);

}  // namespace ling::python
