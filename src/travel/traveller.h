#pragma once

#include <Python.h>

#include "host/py_ref.h"
#include "ling/any.h"

namespace ling::python {

/// A traveller stands for one `ling` value while `copy` and `pickle` work.
///
/// They tell objects apart by address, but a wrapper is made anew each time a value is read: a value that is reached
/// twice would become two, and one that holds itself would never end. So a wrapper is reduced to a call that opens its
/// traveller, of which each value has one as long as it lives; the items of a container are the travellers of its
/// items. It is Python's memo that keeps them alive, for as long as it needs them. A traveller also stands for what
/// would change on the way to Python and back, such as a float without a fraction.
///
/// A traveller is reduced to a call of `rebuild(kind, argument)`, after which its container is filled by `append` and
/// `[key] = value`, and its state is set by `__setstate__`.
///
/// All needs the interpreter lock. What answers a reference answers null with the Python error set when it fails.

/// What stands for `value` among the items of another: its Python form where that comes back as it was, else its
/// traveller. Lazy values and weak references give what they stand for.
PyRef travellerOrObject(const ling::Any& value);

/// The traveller of a value that does not cross as it is.
PyRef travellerFor(const ling::Any& value);

/// The value of a traveller, or of any other object as it crosses. False with the Python error set.
bool valueOfTraveller(PyObject* object, ling::Any& value);

/// Whether the object is a traveller.
bool isTraveller(PyObject* object) noexcept;

}  // namespace ling::python
