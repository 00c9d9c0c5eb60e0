#pragma once

namespace ling::python {

/// Has the interpreter lock let go while native code runs that its author marked as blocking, on a thread that holds
/// the lock. Values that the code drops and functions that it calls back take the lock by the guard. Called once, after
/// the start; needs no lock.
void leaveLockToBlockingCode();

}  // namespace ling::python
