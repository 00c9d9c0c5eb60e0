#pragma once

#include "ling/list.h"
#include "ling/result.h"
#include "ling/string.h"

namespace ling::python {

/// Writes a stub for each module of the host that Python programs can import, into a folder, which is made where it is
/// missing. What checks and completes Python code then knows the host. Files that are there already are replaced.
///
/// Returns  the paths of the files, a list of texts; or an error result that names what could not be written.
/// Lock     takes the interpreter lock itself.
ling::Any writeStubs(const ling::String& folder);

/// Registers the function `ling.python.write_stubs`.
void registerStubFunctions();

}  // namespace ling::python
