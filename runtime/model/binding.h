#pragma once

#include "ling/function.h"
#include "ling/map_interface.h"

#include <span>
#include <vector>

/// How arguments find their parameters, and what is said when they do not.

namespace ling::internal {

/// Puts the arguments of one call in the order of `ParameterMode`: positions first, then names for what they left open,
/// then defaults. None, or the error result that ends the call of the function called `function`. `receivers` of the
/// arguments are none that the caller sees.
Any bind_arguments(const String& function, const Signature& signature, std::span<const Any> positional,
                   std::span<const NamedArgument> named, std::vector<Any>& bound, std::size_t receivers = 0);

/// Reads a map of names. None, or an error result: of the map, of an argument that is one, or about a name that is no
/// text. A map is foreign code: nothing may be locked.
Any take_names(const I_Invokable_Generic& function, const I_Map_Generic& named, std::vector<NamedArgument>& pairs);

/// Each argument that goes to such a parameter has a position of its own.
bool takes_one_position(ParameterMode mode) noexcept;
/// The parameter that an argument was bound to, by the argument's place in the order of `ParameterMode`.
const Parameter& parameter_of_argument(const Signature& signature, std::size_t index);

Any missingArgument(const String& function, const String& parameter);
/// `receivers` of the arguments and parameters are none that the caller sees.
Any superfluousArgument(const String& function, std::size_t parameters, std::span<const Any> arguments,
                        std::size_t receivers = 0);

/// The name and the documentation of anything that can be called.
String nameOf(const Any& invokable);
String docOf(const Any& invokable);

}  // namespace ling::internal
