#pragma once

#include "ling/class.h"

#include <vector>

namespace ling::internal {

/// Every class of the runtime that its languages see by name, in the order in which they are published. A class that is
/// made by need, as the instances of generics are, is not among them.
std::vector<Class_Generic> native_classes();

}  // namespace ling::internal
