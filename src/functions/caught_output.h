#pragma once

#include "host/py_ref.h"
#include "ling/string.h"

#include <array>

namespace ling::python {

/// For as long as it lives, nothing that Python or native code writes gets to the standard output and error of the
/// process, and what is read through `sys.stdin` is at its end. For code that is run for another reason than what it
/// prints.
///
/// It works on the descriptors: only there is everything caught, from `print` to the C library and child processes.
/// What other threads write meanwhile is caught too, which is the price, and why it is for short, rare work. The
/// streams in `sys` are replaced by others on the same descriptors: whoever keeps one of them writes to the standard
/// output again afterwards, and whoever closes one does no harm. `sys` has its own streams back in the end.
///
/// One at a time in a process. The interpreter lock must be held when it is made, used and destroyed.
class CaughtOutput {
public:
    CaughtOutput();
    ~CaughtOutput();
    CaughtOutput(const CaughtOutput&) = delete;
    CaughtOutput& operator=(const CaughtOutput&) = delete;

    /// The beginning of what was written since the last call, without white space around it. Empty without output.
    /// Whoever comes next finds whole streams in `sys` again, whatever was done to them.
    ling::String take();

private:
    void ensureStreams();
    void restoreStreams();

    int file_;
    std::array<int, 2> saved_{-1, -1};
    std::array<PyRef, 3> streams_;   // Those of `sys`, put aside.
    std::array<PyRef, 3> replaced_;  // Those in their place.
};

}  // namespace ling::python
