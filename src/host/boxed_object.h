#pragma once

#include <Python.h>

#include "ling/indirect_values.h"
#include "ling/type.h"

namespace ling::python {

/// A raw Python object pointer, carried through `ling` as a boxed value of the class under the key "P7_object". A new
/// box holds null.
///
/// The box owns no reference: boxing, copying and unboxing never change the reference count, and need no interpreter
/// lock. Whoever stores a box is responsible for the reference behind it.
using BoxedObject = ling::Boxed<PyObject*>;

/// The type of a place that holds a boxed object pointer or none.
const ling::Type& boxedObjectOption();

/// Copies the pointer of `source` into `target`. None, or the error "Types mismatch." for a source that is not a boxed
/// object pointer; the target is unchanged then.
ling::Any assignBoxedObject(const BoxedObject& target, const ling::Any& source);

/// The pointer in `value`, borrowed, or null when the value is not a boxed object pointer.
PyObject* boxedObject(const ling::Any& value);

}  // namespace ling::python
