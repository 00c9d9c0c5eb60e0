#pragma once

#include "ling/any.h"

#include <cstdint>

namespace ling::python {

/// The order of a proxy and another value: what Python's rich comparison says of the two objects, else the order of
/// their `ling` identities. An integer, or an error result when the helper of last resort cannot be compiled. Takes the
/// interpreter lock itself and leaves no error pending.
ling::Any compareObjects(const ling::Any& self, const ling::Any& other);

/// Python's hash of the object, so that an object is found again as a key of `ling` containers, by whichever proxy it
/// comes. One that Python does not hash is found by its identity alone. Takes the interpreter lock itself and leaves no
/// error pending.
std::int64_t hashObject(const ling::Any& self);

}  // namespace ling::python
