#pragma once

#include "ling/any.h"
#include "ling/string.h"

namespace ling::python {

/// Imports a Python module, or one object of a module: what stands before the last dot of `path` is the module, what
/// follows it a name in the module's dictionary. Submodules are not looked for.
///
/// Returns  the module or object as a `ling` value, none for an empty path, or an error result: the Python error of
///          the import, or a text that says what is missing.
/// Lock     takes the interpreter lock itself, and starts the interpreter if need be.
ling::Any importObject(const ling::String& path);

/// Registers `python_add_sys_path` and `python_import` in the module "ling.python".
void registerAddSysPath();
void registerImport();

}  // namespace ling::python
