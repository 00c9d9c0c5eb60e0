#pragma once

#include "ling/any.h"
#include "ling/string.h"

#include <vector>

namespace ling::python {

constexpr int kOneOfAllModules = 1;  ///< A value of `exportModule`'s flag.

/// Imports the Python module `pythonName` and puts the `ling` module that exports it into the host's tree under
/// `lingName`, with its submodules when it is a package. A submodule that fails is left out, with a line in the host's
/// log. When `flag` is 1 the module is one of all that Python can find: what is wrong with it or its submodules goes to
/// the log of that walk instead.
///
/// Returns  the exporting object, or an error result: the import failed, or the name is taken by something else. A
///          module that is exported under this name already is answered again.
/// Lock     takes the interpreter lock itself; the interpreter must be running.
ling::Any exportModule(const ling::String& lingName, const ling::String& pythonName, int flag);

/// Puts a `ling` module into the host's tree under `lingName` that imports the Python module when somebody first looks
/// into it, and is from then on what `exportModule` would have made. Submodules are not looked for.
///
/// Returns  the exporting object, or an error result: the name is taken by something else.
/// Lock     needs none.
ling::Any exportModuleLater(const ling::String& lingName, const ling::String& pythonName);

/// The names in a list of what `pkgutil` tells about modules; those that nobody is to see left out. Needs the
/// interpreter lock; nothing is pending afterwards.
std::vector<ling::String> publicNamesIn(const ling::Any& listing);

/// The dotted name of a member.
ling::String joinedName(const ling::String& parent, const ling::String& name);

}  // namespace ling::python
