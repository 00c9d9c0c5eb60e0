#pragma once

#include <Python.h>

#include "ling/class.h"

namespace ling::python {

/// The name text of the family. Its address marks the types of the family; its ">" is part of the name.
extern const char kFamilyName[];

/// The Python type for the instances of a `ling` class: one of its own when the class is a module's or declares public
/// members of its own, else the callable type or the plain one.
///
/// Returns  a borrowed reference to a type that lives for ever, or null with the Python error set.
/// Lock     the interpreter lock must be held; it may be given up while another thread makes the type.
PyTypeObject* typeForClass(const ling::Class_Generic& cls);

}  // namespace ling::python
