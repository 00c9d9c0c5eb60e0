#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/class.h"
#include "ling/result.h"

namespace ling::python {

/// The `ling` class that stands for a Python type: made once per type and kept, so that the same type always gives the
/// same class, and the class leads back to the type.
class PythonType : public ling::Class_Generic {
public:
    /// The class for a Python type, or an error result ("Not a type.", or that of a member or base that does not
    /// convert). Runs Python code; may be entered again for the same type while it builds its class, since members and
    /// bases refer back to it. That, and another thread that comes meanwhile, gets the class as far as it is built:
    /// nobody waits for anybody, since the builder runs code that may wait for either. `object` is borrowed. Needs the
    /// interpreter lock.
    static ling::Any fromPythonType(PyObject* object);

    static ling::Result<PythonType> cast(const ling::Any& value);
};

/// The Python type that `cls` stands for, borrowed and kept alive by the class, or null when the class stands for none
/// (or the handle is none). Needs no lock.
PyTypeObject* pythonTypeOf(const ling::Class_Generic& cls) noexcept;

}  // namespace ling::python
