#pragma once

#include <Python.h>

#include "ling/any.h"

namespace ling::python {

/// Reads an exact `int` of one digit, as most are, where it stands. False for everything else, which `toLing` converts.
/// Runs no code and cannot fail. Needs the interpreter lock.
inline bool readSmallInteger(PyObject* object, ling::Any& value) noexcept {
    auto* number = reinterpret_cast<PyLongObject*>(object);
    if (!PyLong_CheckExact(object) || PyUnstable_Long_IsCompact(number) == 0)
        return false;
    value = ling::Any(PyUnstable_Long_CompactValue(number));
    return true;
}

}  // namespace ling::python
