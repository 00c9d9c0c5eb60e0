#pragma once

namespace ling::python {

/// Lets Python programs import the host's modules: puts a finder at the end of `sys.meta_path`, so that Python's own
/// modules and the user's files are found first. It looks at the host when it is asked for a module, not before.
///
/// Without a `sys.meta_path`, in an interpreter that never came up whole, nothing happens. Takes the interpreter lock
/// itself.
void installModuleFinder();

}  // namespace ling::python
