#pragma once

#include <Python.h>

namespace ling::python {

/// What the conversion of a Python value into a `ling` value can lose. The value is what it is either way: a warning of
/// the category `ling.python.LossWarning` tells of it besides, once for each place in a program.
enum class Loss {
    Range,     ///< An infinite or very large float becomes the least integer.
    Fraction,  ///< A number of another type than `int`, `float` and `Decimal` becomes an integer.
    Zone,      ///< An aware time or date-time becomes a naive one.
};

/// Gives the warning. A filter that makes it an error leaves that pending, for the slot that Python has called to
/// raise; where no Python code is below, nobody could get it, and it is reported as unraisable. Runs any code, as
/// warnings do, so it is called with nothing half done. Does nothing while an error is pending. Needs the interpreter
/// lock.
void tellLoss(Loss loss);

/// The category, borrowed, made when it is first needed; null with the Python error set when there is no memory.
PyObject* lossWarning();

/// Registers the property `LossWarning` of the module "ling.python".
void registerLossWarning();

}  // namespace ling::python
