#pragma once

#include <Python.h>

#include "ling/function.h"

#include <optional>

namespace ling::python {

/// The signature of a value that can be called; no value for any other. One that cannot tell its parameters has none.
std::optional<ling::Signature> signatureOf(const ling::Any& value);

/// Gives a type of the family the attribute `__signature__`: where Python's `inspect` looks for a signature before it
/// reads the text of one, in which it understands no types. It is put beside the slots, into the type's dictionary, so
/// that Python's own look-up finds it. A value that cannot be called does not have it.
///
/// Returns  false with the Python error set when there is no memory.
/// Lock     must be held. Runs no Python code.
bool addSignature(PyTypeObject* type);

}  // namespace ling::python
