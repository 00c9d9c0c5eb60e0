#pragma once

#include "ling/function.h"
#include "ling/map_interface.h"

#include <span>

/// How arguments find their parameters, and what is said when they do not.

namespace ling::internal {

/// Calls `function` with `positional` first and the entries of `named` for parameters that are left open.
Any invoke_by_name(const I_Invokable_Generic& function, std::span<const Any> positional, const I_Map_Generic& named);

Any missingArgument(const String& function, const String& parameter);
Any superfluousArgument(const String& function, std::size_t parameters, std::span<const Any> arguments);

/// The name and the documentation of anything that can be called.
String nameOf(const Any& invokable);
String docOf(const Any& invokable);

}  // namespace ling::internal
