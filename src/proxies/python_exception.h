#pragma once

#include "ling/class.h"

namespace ling::python {

/// What an error that came from Python remembers as its origin: a proxy of the exception, with the properties
/// `className`, `traceback` and `notes`. They are asked of the exception when they are read, and cost nothing before.
///
/// The exception lives as long as the error, and keeps alive what Python's exceptions do: its cause and its context,
/// and the frames of the calls that it ended.
struct PythonException {
    static const ling::Class_Generic& getClass();
};

}  // namespace ling::python
