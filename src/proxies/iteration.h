#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/list.h"

namespace ling::python {

/// What the collection proxies share.

/// Resolves a lazy result; an error passes through, anything that is not of the kind is the standard cast error.
ling::Any asBoolean(const ling::Any& result);
ling::Any asInteger(const ling::Any& result);

/// `__iter__()` as a proxy of the class `PythonProxyIterator`.
ling::Any iterate(const ling::Any& self);
/// `__contains__(value)` as a boolean, and `__len__()` as an integer.
ling::Any containsValue(const ling::Any& self, const ling::Any& value);
ling::Any lengthOf(const ling::Any& self);

/// Appends all that a Python iterator still gives. None, or the error that it ended with. The interpreter lock must be
/// held.
ling::Any takeItems(PyObject* iterator, const ling::List_Generic& items);

}  // namespace ling::python
