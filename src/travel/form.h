#pragma once

#include "ling/any.h"
#include "ling/error.h"

namespace ling::python {

/// How values travel: what a value is taken apart into, and how it is made again.
enum class Form {
    AsItIs,    ///< Its Python form comes back as an equal value of the same kind.
    Float,     ///< Without a fraction: Python's `float` would come back as an integer.
    Time,      ///< With a zone, or finer than a microsecond.
    DateTime,  ///< The same.
    Tuple,
    Name,       ///< A module, class or function: by its dotted name.
    Method,     ///< A method bound to a value: the value, and the name.
    Container,  ///< A list, map or set: the name of its class, and its items.
    Object,     ///< An object whose class opts in: the name of its class, and its state.
    None,       ///< Not at all.
};

/// `value` stands for nothing else: lazy values and weak references are resolved. Leaves no error pending.
Form formOf(const ling::Any& value);

/// Whether a container is of the runtime's own class for its kind: no name has to tell which.
inline bool isOfNativeClass(const ling::Any& container) noexcept { return container.object()->ownClass() == nullptr; }

/// A new value of the class of `value` without items or state, or an error result.
ling::Any makeEmptyLike(const ling::Any& value);

/// An object says what it is made of by its method `__state__`, without parameters, and takes that in by its method
/// `__restore__(state)`, called on a new instance that `__init__` has not seen. A class that has both opts in.
ling::Any stateOf(const ling::Any& object);
/// None, or an error result.
ling::Any restoreState(const ling::Any& object, const ling::Any& state);

/// The value that a method is bound to and answers it by its name. None for every other function.
ling::Any receiverOf(const ling::Any& function);

/// The text of the `TypeError` for a value that does not travel.
ling::String refusalOf(const ling::Any& value);

}  // namespace ling::python
