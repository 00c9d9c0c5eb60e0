#pragma once

#include <Python.h>

#include "ling/class.h"

#include <string>

namespace ling::python {

/// The method and property tables of a per-class type. Made once per class and never freed, as the type itself.

/// Whether the class declares methods or properties of its own whose names Python sees.
bool declaresPublicMembers(const ling::Class_Generic& cls);
/// One entry for each public method. The table lists methods with their signatures for `help()` and introspection;
/// nothing is ever called through it, since attribute look-up finds the methods first.
PyMethodDef* makeMethodTable(const ling::Class_Generic& cls);
/// One entry for each public property, with a setter only where the property has one.
PyGetSetDef* makePropertyTable(const ling::Class_Generic& cls);

/// A copy of a text that lives for ever.
const char* keepText(const std::string& text);

}  // namespace ling::python
