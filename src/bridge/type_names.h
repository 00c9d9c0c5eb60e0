#pragma once

#include "ling/class.h"
#include "ling/string.h"
#include "ling/type.h"

namespace ling::python {

/// The class that stands for the Python type which matches a native class: for `Integer` the class
/// "python.builtins.int". For a generic made for parameters, that of the generic, applied to those of the parameters.
/// A none handle when nothing matches, or while the tree of Python modules does not have the class yet.
ling::Class_Generic pythonClassOf(const ling::Class_Generic& native);

/// The other way round: the first native class that `pythonClassOf` answers `pythonClass` for, or a none handle.
ling::Class_Generic nativeClassOf(const ling::Class_Generic& pythonClass);

/// The text of a Python annotation for a type: "int", "Optional[str]", "List[bytes]", "Callable[[int], str]", "Any".
/// Classes that Python does not know go by their own name.
ling::String annotationText(const ling::Type& type);

}  // namespace ling::python
