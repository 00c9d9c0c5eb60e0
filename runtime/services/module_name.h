#pragma once

#include "ling/string.h"

#include <vector>

namespace ling::internal {

/// Parts without an empty one between dots; well-formed text without a NUL, since names become identifiers, whose UTF-8
/// must tell them apart.
bool is_module_name(const String& name) noexcept;

/// What stands before the last dot, empty for a name without one, and behind it.
String parent_name(const String& name);
String last_part(const String& name);

}  // namespace ling::internal
