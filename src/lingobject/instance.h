#pragma once

#include <Python.h>

#include "ling/any.h"

namespace ling::python {

/// The layout of every wrapper: Python's header and one cell on the heap, which the wrapper owns. The value in the cell
/// is never replaced.
struct Instance {
    PyObject ob_base;
    ling::Any* value;
};

/// The value that `self`, a wrapper, holds.
inline const ling::Any& valueOf(PyObject* self) noexcept { return *reinterpret_cast<Instance*>(self)->value; }

}  // namespace ling::python
