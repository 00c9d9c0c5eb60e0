#pragma once

#include "ling/module.h"
#include "ling/string.h"

#include <vector>

namespace ling::python {

/// What a module of the host has to offer to those who import it. Knows nothing of Python. None of these runs a getter.

/// The names of what is registered in the module, modules below it among them: what it carries itself, then what its
/// own class says, as the class of an exported Python module does. What every module has (`name`, `doc`, ...) is not
/// listed. A name may come twice.
std::vector<ling::String> memberNamesOf(const ling::Module& module);

/// Whether `member` is the module that stands under `name` below `parent`.
bool isChild(const ling::Module& parent, const ling::String& name, const ling::Any& member);

/// Whether there are modules below this one.
bool hasChildren(const ling::Module& module);

}  // namespace ling::python
