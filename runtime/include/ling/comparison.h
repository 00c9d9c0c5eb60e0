#pragma once

#include "ling/any.h"
#include "ling/result.h"
#include "ling/string.h"

#include <cstdint>

namespace ling {

/// The text that shows a value to a person. A string shows as itself, a string inside a container in quotes. What
/// holds itself shows as "..." where it comes round again. Never an error: a class whose `$__display__` fails shows as
/// its name in angle brackets.
LING_EXPORT String display(const Any& value);

/// Negative, zero or positive: the order of two values. Numbers compare by value across kinds, texts, bytes, dates,
/// tuples and lists by content, maps and sets by content for equality; other objects by their class's `$__compare__`,
/// else by identity. Values of different kinds have a fixed order. Containers that hold themselves compare by
/// identity from a fixed depth on.
LING_EXPORT std::int64_t compare_objects(const Any& a, const Any& b);
/// Equal values have equal hashes. Mutable objects hash by identity, unless their class gives `$__hash__`.
LING_EXPORT std::int64_t hash_of(const Any& value);
/// One and the same object, or equal immediates of one kind.
LING_EXPORT bool is_same(const Any& a, const Any& b) noexcept;
/// A number that no other living object has.
LING_EXPORT std::int64_t object_id(const Any& value) noexcept;
/// The name of a value's kind with underscores for spaces: "byte_array", "boxed_value"; "none" for none.
LING_EXPORT String kind_of(const Any& value);

}  // namespace ling
