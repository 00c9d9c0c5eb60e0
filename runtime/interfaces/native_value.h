#pragma once

#include "ling/any.h"
#include "ling/class_record.h"
#include "values/extras.h"

namespace ling::internal {

/// A native container of this kind whose behaviour is exactly that of its native class: no derived class and no member
/// of the object itself can have replaced an operation, so that a handle may skip looking the operation up.
inline bool is_native(const Any& value, Kind kind) noexcept {
    const object_value* object = value.object();
    return object != nullptr && object->kind() == kind && object->ownClass() == nullptr && !carries_members(*object);
}

/// What the functions of an object's class offer past being called, unless members of the object itself may stand in
/// for them: null then, and where nothing is known as yet.
inline const offered_ways* offered_ways_of(const Any& value) noexcept {
    const object_value* object = value.object();
    if (object == nullptr || object->ownClass() == nullptr || carries_members(*object))
        return nullptr;
    const member_tables* tables = object->ownClass()->presentTables();
    return tables == nullptr ? nullptr : &tables->offered;
}
inline const sequence_access* sequence_access_of(const Any& value) noexcept {
    const offered_ways* ways = offered_ways_of(value);
    return ways == nullptr ? nullptr : ways->sequence;
}
inline const map_access* map_access_of(const Any& value) noexcept {
    const offered_ways* ways = offered_ways_of(value);
    return ways == nullptr ? nullptr : ways->map;
}

}  // namespace ling::internal
