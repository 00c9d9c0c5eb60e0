#pragma once

#include "ling/any.h"
#include "ling/string.h"

namespace ling::python {

/// Imports the Python module `pythonName` and puts the `ling` module that exports it into the host's tree under
/// `lingName`, with its submodules when it is a package. A submodule that fails is left out, with a line in the host's
/// log; without one when `flag` is 1: the module is then one of all that Python can find.
///
/// Returns  the exporting object, or an error result: the import failed, or the name is taken by something else. A
///          module that is exported under this name already is answered again.
/// Lock     takes the interpreter lock itself; the interpreter must be running.
ling::Any exportModule(const ling::String& lingName, const ling::String& pythonName, int flag);

/// One line for the host's log about a module that `exportModule` could not export: `error` is what it answered.
void reportNotExported(const ling::String& pythonName, const ling::Any& error);

/// Exports every top-level module that Python can find under the `ling` module "python". None, or an error result when
/// the modules cannot be listed. Takes the interpreter lock itself; the interpreter must be running.
ling::Any importAllModules();

}  // namespace ling::python
