#pragma once

#include "host/gil_guard.h"

namespace ling::python {

/// The guard of an entry from `ling`. When no Python code of this thread is below it, it starts with a clean error
/// indicator: a conversion may leave an error pending on purpose (an integer beyond 64 bits), and such an error must
/// not surface in the next, unrelated call. Below Python code the indicator is the business of the slot that was
/// called, and is left alone.
struct PythonEntry : GilGuard {
    PythonEntry() {
        if (PyErr_Occurred() != nullptr && PyEval_GetFrame() == nullptr)
            PyErr_Clear();
    }
};

}  // namespace ling::python
