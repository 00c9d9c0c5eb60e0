#pragma once

#include "host/py_ref.h"
#include "ling/any.h"

namespace ling::python {

/// The names by which Python code reaches the host: its top-level modules, and the members of modules that ask for it
/// (`Module::$$bindMembers`). Modules come while the process runs: what is bound is bound anew when some have, and the
/// members of those that ask for it each time. All needs the interpreter lock.

/// Binds each top-level module under its name in the dictionary `target`. None, or an error result.
ling::Any bindModules(PyObject* target);

/// The classes and functions of the modules that are marked, by their bare names, and the top-level modules, which
/// override them, merged into the dictionary `target`, which an evaluation starts with. None, or an error result.
ling::Any mergeNamespace(PyObject* target);

}  // namespace ling::python
