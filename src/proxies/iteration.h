#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/class.h"

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

/// What becomes of a list when an item has no form in `ling`.
enum class Items : bool {
    AsTheyCome,  ///< The value that says so stands in its place, and the first error stays pending.
    Whole,       ///< There is no list, but the error of the conversion.
};

/// All that a Python iterator still gives, in a native list, or the error that it ended with. The interpreter lock must
/// be held.
ling::Any listOfItems(PyObject* iterator, Items wanted);
/// All that `__iter__()` gives, under one acquisition of the lock, for a proxy of the class `cls` that nobody put
/// members on; any other is collected by its own members.
ling::Any collectItems(const ling::Any& self, const ling::Class_Generic& cls);

/// Whether the proxy is of the class `cls` itself and nobody put members of `ling` on it, so that what `cls` registers
/// is what its members do.
bool isStock(const ling::Any& self, const ling::Class_Generic& cls) noexcept;
/// What the runtime does for an iterable that has no way of its own to give all items at once.
ling::Any collectByDefault(const ling::Any& self);

}  // namespace ling::python
