#pragma once

#include "ling/any.h"

namespace ling::internal {

/// Whether comparing a value with another such value can run no code but the runtime's own, and little of it, so that
/// it may be done while a table is locked: numbers, texts, bytes, short tuples of them; and native objects that are
/// equal to nothing but themselves.
bool is_plain_key(const Any& value) noexcept;

/// Whether two plain keys are the same key, as `compare_objects` would say; but mutable containers, which are hashed by
/// identity, are the same key only when they are the same object.
bool plain_keys_equal(const Any& a, const Any& b) noexcept;

}  // namespace ling::internal
