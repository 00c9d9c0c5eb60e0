#pragma once

#include <Python.h>

namespace ling::python {

/// The number, sequence and mapping slots. Each table is made once, zero-filled, and shared by every type of the
/// family; null when there is no memory for it.
PyNumberMethods* numberTable();
PySequenceMethods* sequenceTable();
PyMappingMethods* mappingTable();

}  // namespace ling::python
