#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/string.h"

namespace ling::python {

/// Compiles a small Python function from source, for those below the language room that need one: a lambda, a
/// definition, or, where the text is neither, the body of a function of positional arguments `args`. White space around
/// the text does not matter. The function sees the host's top-level modules by name.
///
/// A definition is a text that begins with "def", "async def" or a decorator; the function is what it binds to the name
/// after its first "def".
///
/// Returns  a new reference to the callable, or null; `error` is then the error result that says why: what Python
///          raised, "Unable to find the function: {}." for a definition that binds nothing callable to its name,
///          "Unable to compile the function." for a body that does not compile and a lambda that gives nothing
///          callable.
/// Lock     must be held.
PyObject* compileHelper(const ling::String& source, ling::Any& error);

}  // namespace ling::python
