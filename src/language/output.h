#pragma once

#include "ling/any.h"

namespace ling::python {

/// Puts streams into `sys.stdout` and `sys.stderr` that give all that is written to `output(text, stream)`, at once, on
/// the thread that writes; `stream` is "stdout" or "stderr". What it answers is not looked at, but an error is raised
/// in the code that writes. None puts the streams back that the process was started with. None, or an error result.
/// Takes the interpreter lock itself.
///
/// What native code and child processes write goes on to the descriptors of the process.
ling::Any takeOutput(const ling::Any& output);

/// Does what `python3` does before a process ends: waits for the threads that are no daemons, runs the functions of
/// `atexit`, and writes out what was printed and what open files hold. What fails on the way is told on `sys.stderr`,
/// as there. None, or the error result "What was printed could not be written.". Python can be used afterwards, and
/// this be called again. Takes the interpreter lock itself.
ling::Any finish();

}  // namespace ling::python
