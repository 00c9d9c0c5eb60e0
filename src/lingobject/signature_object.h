#pragma once

#include <Python.h>

#include "ling/function.h"

#include <optional>

namespace ling::python {

/// The signature of a value that can be called; no value for any other. One that cannot tell its parameters has none.
std::optional<ling::Signature> signatureOf(const ling::Any& value);

/// The getter of `__signature__`: an `inspect.Signature`, or null with an `AttributeError` for a wrapper around what
/// cannot be called. Needs the interpreter lock.
PyObject* readSignature(PyObject* self, void* closure);

}  // namespace ling::python
