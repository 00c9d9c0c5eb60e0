#pragma once

#include "ling/class_record.h"

#include <initializer_list>
#include <span>

namespace ling::internal {

/// Adds the parents of an instance of a generic beyond the generic itself.
using generic_parents = void (*)(object_value_class* instance, std::span<const Type> parameters);

/// A native class of which instances for types can be had: `I_Sequence` as `I_Sequence<Integer>`. The instance for some
/// types derives from the generic and from what `addParents` adds, which is the instances of the generic's own parents.
inline Class_Generic generic_class(const char* name, std::initializer_list<Class_Generic> parents,
                                   generic_parents addParents) {
    Class_Generic cls = native_class(name, parents);
    cls.record()->set_generic_parents_unsafe(addParents);
    return cls;
}

/// The instance of `generic` for the given types: made once, then the same for all.
template <class... Types>
Class_Generic generic_instance(const Class_Generic& generic, const Types&... types) {
    const Type parameters[] = {types...};
    return generic.record()->genericInstance(parameters);
}

}  // namespace ling::internal
