#pragma once

#include "ling/identifier.h"
#include "ling/property.h"

namespace ling::internal {

/// Gives the native functions of a property that nobody has seen yet its name, which was not known when they were made:
/// what they complain about is the property. Answers the property.
const Property& name_accessors(const Property& property, const property_ident_untyped& id);

}  // namespace ling::internal
