#pragma once

#include "ling/class.h"

namespace ling::internal {

/// The class that every class derives from.
const Class_Generic& rootClass();

/// Give the native classes of this room their members, once all native classes exist.
void define_class_members();
void define_function_members();
void define_property_members();

}  // namespace ling::internal
