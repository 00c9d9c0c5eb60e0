#pragma once

#include "ling/any.h"
#include "ling/string.h"

namespace ling::python {

/// Imports the Python module `pythonName` and puts the `ling` module that exports it into the host's tree under
/// `lingName`, with its submodules when it is a package. `flag` is 1 when the module is one of all that are exported
/// at once, 0 otherwise.
///
/// Returns  the exporting object, or an error result: the import failed, or the name is taken by something else. A
///          module that is exported under this name already is answered again.
/// Lock     takes the interpreter lock itself; the interpreter must be running.
ling::Any exportModule(const ling::String& lingName, const ling::String& pythonName, int flag);

/// Exports every top-level module that Python can find under the `ling` module "python". None, or an error result when
/// the modules cannot be listed. Takes the interpreter lock itself; the interpreter must be running.
ling::Any importAllModules();

}  // namespace ling::python
