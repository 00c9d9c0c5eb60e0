#pragma once

#include "ling/class.h"
#include "ling/member_table.h"

#include <span>

namespace ling::internal {

/// The class that every class derives from.
const Class_Generic& rootClass();

/// Calls the initialiser that the class of a new instance has, as `callMethod` would. The caller keeps the instance;
/// what is new has no members of its own that could stand in for it, unless its class saw to that.
Any initialise(const Any& instance, const found_member& initialiser, std::span<const Any> arguments);

/// Give the native classes of this room their members, once all native classes exist.
void define_class_members();
void define_function_members();
void define_property_members();

}  // namespace ling::internal
