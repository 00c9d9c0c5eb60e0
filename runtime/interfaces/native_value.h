#pragma once

#include "ling/any.h"
#include "values/extras.h"

namespace ling::internal {

inline bool carries_members(const object_value& object) noexcept {
    const object_extras* extras = object.findExtras();
    return extras != nullptr && extras->ownMembers.load(std::memory_order_acquire) != nullptr;
}

/// A native container of this kind whose behaviour is exactly that of its native class: no derived class and no member
/// of the object itself can have replaced an operation, so that a handle may skip looking the operation up.
inline bool is_native(const Any& value, Kind kind) noexcept {
    const object_value* object = value.object();
    return object != nullptr && object->kind() == kind && object->ownClass() == nullptr && !carries_members(*object);
}

}  // namespace ling::internal
