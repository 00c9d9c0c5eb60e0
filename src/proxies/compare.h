#pragma once

#include "ling/any.h"

namespace ling::python {

/// The order of a proxy and another value: what Python's rich comparison says of the two objects, else the order of
/// their `ling` identities. An integer, or an error result when the helper of last resort cannot be compiled. Takes the
/// interpreter lock itself and leaves no error pending.
ling::Any compareObjects(const ling::Any& self, const ling::Any& other);

}  // namespace ling::python
