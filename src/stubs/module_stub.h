#pragma once

#include "ling/module.h"

#include <string>

namespace ling::python {

/// The text of the stub, a `.pyi` file, for a module of the host as `import` gives it: its classes with methods,
/// properties and operators, its functions, its other properties, and the modules below it. Names that no Python code
/// can spell are left out. A module that stands for one of Python's has what that one has.
///
/// Needs the interpreter lock. No getter is run; asking for signatures may run any code.
std::string stubOf(const ling::Module& module);

}  // namespace ling::python
