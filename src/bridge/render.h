#pragma once

#include "ling/any.h"

namespace ling::python {

/// Writes a value as Python source: scalars and text as literals, containers with their items, a Python object behind a
/// proxy as its own `repr`. What holds itself, directly or through Python objects that show it, shows as "..." in its
/// brackets where it comes round again.
///
/// Returns  a string, or an error result when the value, or one inside it, has no source form ("Boxed object.",
///          "External object.", "Non-reachable class."), lies too deep for the stack that is left, or the program
///          is to stop.
/// Lock     takes the interpreter lock for Python objects only; holds nothing of the runtime's while it renders.
ling::Any renderPython(const ling::Any& value);

}  // namespace ling::python
