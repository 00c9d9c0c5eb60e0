#pragma once

#include <Python.h>

#include "ling/string.h"

namespace ling::python {

/// Text across the border, from the storage of one kind of string straight into that of the other. The outcome is that
/// of a detour over UTF-8, errors included. Both need the interpreter lock.

/// The text of a `str`. Lone surrogates are no text: the result is empty then, and a `UnicodeEncodeError` is pending.
ling::String textFromPython(PyObject* unicode);

/// A new `str`, or null with a `MemoryError`. A lone surrogate becomes U+FFFD.
PyObject* textToPython(const ling::String& text);

}  // namespace ling::python
