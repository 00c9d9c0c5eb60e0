#pragma once

#include "ling/string.h"

#include <vector>

namespace ling::shell {

/// The names of the members of a module or class of the runtime, by its dotted name; sorted. Names are listed as they
/// are registered: no property is read. Nothing for a name that is neither.
std::vector<String> memberNames(const String& path);

}  // namespace ling::shell
