#pragma once

#include "ling/any.h"
#include "ling/result.h"
#include "ling/string.h"

#include <cstdint>

namespace ling {

/// The text that shows a value to a person: "none", "true", "2.0", "b'\\x00'", "[1, 'a']", "(1,)", "{'a': 1}", "{1,
/// 2}", "Set()" for the empty set, the qualified name of a class, the name of a module, "name(parameters)" for a
/// function, the message of an error. A string shows as itself, a string inside a container in quotes, with escapes. An
/// object shows as its class's `$__display__` says; where there is none, or it fails, as the qualified name of the
/// class in angle brackets. What is shown within itself is "..." there. Never an error: "..." stands for what is left
/// out where the stack ends before the text, or where the program is to stop.
LING_EXPORT String display(const Any& value);
/// As `display`, or an error result where that would leave something out.
LING_EXPORT Result<String> try_display(const Any& value);

/// Negative, zero or positive: the order of two values.
///
/// Numbers compare by value across kinds, exactly; not-a-number equals itself and is above all others. A boolean is no
/// number. Texts compare by UTF-16 units, byte arrays by bytes, tuples and lists item by item. Maps and sets of equal
/// content are equal; different ones are ordered by size, then by identity. For other objects the class of `a` answers
/// by its `$__compare__` (self, other), or that of `b` does, turned round; a class derived from the other's comes
/// first. An answer that is no integer does not count. All that remains is ordered by kind, then by identity, which
/// holds while both live.
///
/// Values that hold themselves are equal when walking them shows no difference. Nothing is locked while classes answer.
///
/// Native containers may be nested as deep as memory allows, objects whose classes answer as deep as the stack allows.
/// Where that ends the two are ordered by identity.
LING_EXPORT std::int64_t compare_objects(const Any& a, const Any& b);
/// As `compare_objects`, or an error result where the stack ends before the answer ("The value is nested too deeply."),
/// or where the program is to stop ("The call was interrupted.").
LING_EXPORT Result<std::int64_t> try_compare(const Any& a, const Any& b);
/// Equal values have equal hashes. What can change (lists, maps, sets) and all other objects hash by identity, unless
/// their class gives `$__hash__`; so an equal list is another key. Values without an end, which hold themselves or make
/// their items while they are walked, all hash alike.
LING_EXPORT std::int64_t hash_of(const Any& value);
/// As `hash_of`, or an error result as for `try_compare`.
LING_EXPORT Result<std::int64_t> try_hash(const Any& value);
/// One and the same object, or equal immediates of one kind.
LING_EXPORT bool is_same(const Any& a, const Any& b) noexcept;
/// A number that no other living object has.
LING_EXPORT std::int64_t object_id(const Any& value) noexcept;
/// The name of a value's kind with underscores for spaces: "byte_array", "boxed_value"; "none" for none.
LING_EXPORT String kind_of(const Any& value);

}  // namespace ling
