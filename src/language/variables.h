#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/map_interface.h"
#include "ling/result.h"
#include "ling/string.h"

#include <vector>

namespace ling::python {

/// Names and values of a map, as they were at one time.
struct Variables {
    std::vector<ling::String> names;
    std::vector<ling::Any> values;
};

/// Reads a map of any class through its interface. An error result where that fails, and for a key that is no string
/// ("Invalid variable name: {}."). Runs foreign code.
ling::Result<Variables> readVariables(const ling::I_Map_Generic& map);

/// Converts `value` and stores it under `name` in the dictionary `target`. None, or an error result: that of the
/// conversion, or "Unable to convert a value: {}." where the value has no form in Python. Needs the interpreter lock.
ling::Any bindVariable(PyObject* target, const ling::String& name, const ling::Any& value);

/// `bindVariable` for each. Stops at the first error.
ling::Any bindVariables(PyObject* target, const Variables& variables);

}  // namespace ling::python
