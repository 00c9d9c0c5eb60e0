#pragma once

namespace ling::python {

/// Has what Python printed written out when the process ends by `exit` or by returning from `main`, for hosts that did
/// not call `finish`: the streams that the interpreter was started with are flushed, and nothing else runs. Not where
/// the interpreter lock cannot be had within a second, and not in the child of a fork, whose parent writes the same
/// text. Called once, after the start of an interpreter of our own; needs no lock.
void flushAtProcessEnd();

}  // namespace ling::python
