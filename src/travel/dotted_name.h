#pragma once

#include "ling/any.h"
#include "ling/string.h"

namespace ling::python {

/// Modules, classes and functions by their dotted names: in another process the same name finds the same thing.

/// The module, the class, the function of a module or the class-level method of a class that has this name; none when
/// there is none. Imports nothing.
ling::Any findByDottedName(const ling::String& name);

/// The name by which `value`, a module, class or function, is found again; empty for one that no name leads to, such
/// as a bound method or a class that is in no module.
ling::String dottedNameOf(const ling::Any& value);

}  // namespace ling::python
