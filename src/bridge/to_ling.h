#pragma once

#include <Python.h>

#include "ling/any.h"

namespace ling::python {

/// What `toLing` answers when it decides by its rules alone, without the short way for the commonest types. The two
/// never differ; tests hold them against each other. The interpreter lock must be held.
ling::Any toLingByRules(PyObject* object);

}  // namespace ling::python
