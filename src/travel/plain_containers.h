#pragma once

#include "ling/any.h"

namespace ling::python {

/// Whole structures across the border, copied. What a conversion of single values never does, since it would cost a
/// container its identity, somebody may ask for. Both take the interpreter lock themselves, and answer an error result
/// when an item does not convert.

/// Lists, maps, sets and tuples, in each other, those of Python included, as Python's own: `list`, `dict`, `set` and
/// `tuple`. What is shared stays shared, and what holds itself does so in the copy. Everything else is what it is. A
/// value that is no container is answered itself.
ling::Any withPythonContainers(const ling::Any& value);

/// The other way: Python's `list`, `dict`, `set`, `frozenset` and `tuple` as native containers.
ling::Any withNativeContainers(const ling::Any& value);

/// Registers both in the module "ling.python", as `to_python` and `from_python`.
void registerContainerFunctions();

}  // namespace ling::python
