#pragma once

#include "ling/any.h"
#include "ling/class.h"
#include "ling/function.h"
#include "ling/property.h"

namespace ling {

/// Finding the members of any value. A value answers, in this order: members of its own, members of its class, and
/// class-level members of its class. A class as the receiver answers its own class-level members first. The
/// functions without `raw_` ask the member protocol of `Any` first (`$__method__`, ...) when the class overrides it.
///
/// Each answers a handle that is none when there is no such member. New references. No lock of the runtime is held
/// while a class's own look-up runs.
LING_EXPORT I_Invokable_Generic method_of(const Any& value, const method_ident_untyped& id);
LING_EXPORT I_Invokable_Generic raw_method_of(const Any& value, const method_ident_untyped& id);
LING_EXPORT Property property_of(const Any& value, const property_ident_untyped& id);
LING_EXPORT Property raw_property_of(const Any& value, const property_ident_untyped& id);

/// What a single object carries beyond its class, in order of insertion: lists of names.
LING_EXPORT List_Generic own_methods_of(const Any& value);
LING_EXPORT List_Generic own_properties_of(const Any& value);

/// Puts a member on a single object, in the place of one of the same name. None, or an error result: an immediate
/// value cannot carry members, and a class may refuse.
LING_EXPORT Any insert_property(const Any& value, const property_ident_untyped& id, const Property& property);
LING_EXPORT Any insert_property_value(const Any& value, const property_ident_untyped& id, const Any& propertyValue);
LING_EXPORT Any insert_method(const Any& value, const method_ident_untyped& id, const I_Invokable_Generic& method);
LING_EXPORT Any raw_insert_property(const Any& value, const property_ident_untyped& id, const Property& property);
LING_EXPORT Any raw_insert_method(const Any& value, const method_ident_untyped& id, const I_Invokable_Generic& method);
/// Takes a member off a single object. True when there was one.
LING_EXPORT bool remove_property(const Any& value, const property_ident_untyped& id);
LING_EXPORT bool remove_method(const Any& value, const method_ident_untyped& id);

namespace internal::helpers {
LING_EXPORT Any error_method_not_found(const String& name, const Any& value);
LING_EXPORT Any error_property_not_found(const String& name, const Any& value);
}  // namespace internal::helpers

}  // namespace ling
