#pragma once

namespace ling::python {

/// Keeps SIGPIPE from ending the process when Python code, or native code below it, writes to a pipe or a socket that
/// nobody reads: the write fails there, and Python raises `BrokenPipeError`. Everywhere else the signal does what it
/// did before. Nothing is changed where the host has a handler for it or ignores it, and a disposition that it sets
/// later is its own; programs that the process starts have the default again.
///
/// Called once, at the start; needs no lock.
void surviveBrokenPipes();

}  // namespace ling::python
