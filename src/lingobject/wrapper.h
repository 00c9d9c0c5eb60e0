#pragma once

#include <Python.h>

#include "ling/any.h"

namespace ling::python {

/// The Python objects that stand for `ling` values: instances of the `LingObject` family of types. Each holds one value
/// for as long as it lives and forwards Python's protocols to it.

/// A new wrapper around `value`, of the type that the value's class selects.
///
/// Returns  a new reference, or null with the Python error set.
/// Owns     the wrapper holds a reference of its own to the value and drops it on whichever thread it dies.
/// Lock     takes the interpreter lock itself.
PyObject* wrapValue(const ling::Any& value);
/// The same for callers that hold the interpreter lock. The wrapper takes the caller's reference over.
PyObject* wrapLocked(ling::Any&& value);

/// True for an instance of the family: its type, or that type's direct base, carries the family's name text. Told by
/// the identity of that text, so an impostor with an equal name is none. Never fails and runs no code. `object` is
/// borrowed and must not be null. Needs the interpreter lock.
bool isLingObject(PyObject* object) noexcept;

/// The value that a wrapper holds, borrowed for as long as the wrapper lives. Only for objects that `isLingObject`
/// accepts.
const ling::Any* heldValue(PyObject* wrapper);

}  // namespace ling::python
