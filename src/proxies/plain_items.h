#pragma once

#include <Python.h>

#include "ling/any.h"

#include <optional>

namespace ling::python {

/// All items of one of Python's own containers in a native list, taken without its iterator: a `range`, an `array`, a
/// `deque`, a set, a dictionary (its keys), a view of one. Nothing for any other object, and where an item is not
/// plain (`toLingPlainly`): no code has run then, and the container has to be asked in the usual way. The interpreter
/// lock must be held, with no error pending.
std::optional<ling::Any> plainItems(PyObject* object);
/// The values of an exact `dict`, in the same way.
std::optional<ling::Any> plainValues(PyObject* dict);

}  // namespace ling::python
