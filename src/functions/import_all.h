#pragma once

#include "ling/list.h"

namespace ling::python {

/// What a host that runs programs has put on Python's search path for the program: the entries as they stand in
/// `sys.path`, added by the host. What is found there is the program's, with scripts that act when they are imported.
const ling::List_Generic& programPath();

/// Exports every top-level module that Python can find under the `ling` module "python", packages with all that is in
/// them, but for the few that are no libraries (the list is in the source) and what `programPath` leads to. A module
/// that fails in any way, be it by `sys.exit`, is left out and the walk goes on; `importProblems` tells of it, and of
/// modules that wrote something. The standard output and error stay as they are.
///
/// Calling it again exports what has come since, and tries again what failed; packages that are in the tree are not
/// walked again. A call during a walk returns at once and leaves the rest to that walk, on whichever thread it comes: a
/// module that the walk imports may be waiting for the one who calls. A module whose body is still running elsewhere is
/// left out for the same reason, and is exported by the next call. (One that imports such a module waits for it, as it
/// would without the walk.)
///
/// What cannot be stopped is a module that ends the process (`os._exit`) or never comes back. Ctrl-C ends the import of
/// one module, not the walk: an interrupt by the user and one that a module raises look the same.
///
/// Returns  none, or an error result: the modules cannot be listed.
/// Lock     takes the interpreter lock itself; the interpreter must be running.
ling::Any importAllModules();

}  // namespace ling::python
