#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/string.h"

namespace ling::python {

/// Compiles a small function from Python source, for those below the language room that need one: the text of a
/// definition, of a `lambda`, or of a body.
///
/// Returns  a new reference to the callable, or null; `error` is then the error result that says why.
/// Lock     must be held.
PyObject* compileHelper(const ling::String& source, ling::Any& error);

}  // namespace ling::python
