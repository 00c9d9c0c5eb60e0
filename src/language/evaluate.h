#pragma once

#include "ling/any.h"
#include "ling/map_interface.h"
#include "ling/string.h"

#include <limits>

namespace ling::python {

/// Runs Python code for `ling`. `locals`, `globals` and `outLocals` may be maps of any class; they are read and written
/// through the interface alone, and their keys have to be strings.
///
/// The code sees the host's top-level modules by name, then, each overriding those before: the entries of `globals`,
/// of `outLocals`, of `locals`.
///
/// Each function answers the result as a `ling` value, or an error result: no interpreter, a variable that has no form
/// in Python, what the code raised (a syntax error with its traceback), a nesting of evaluations for which the stack of
/// this thread is too small. Each takes the interpreter lock itself, starts the interpreter if need be, and may be
/// called from any thread, also below Python code.
///
/// Each is a run that can be ended (`language/run.h`), and is so when `limit` seconds have passed since the call.
inline constexpr double kNoLimit = std::numeric_limits<double>::infinity();

/// Statements. The value of a `return` statement is the result. What the code assigns to the names of `locals` is
/// stored in `outLocals` at the end; code that raises leaves `outLocals` as it is.
ling::Any evaluate(const ling::String& code, const ling::I_Map_Generic& locals, const ling::I_Map_Generic& globals,
                   const ling::I_Map_Generic& outLocals, double limit = kNoLimit);

/// The same, with `self` bound to a value.
ling::Any evaluateMethod(const ling::Any& self, const ling::String& code, const ling::I_Map_Generic& locals,
                         const ling::I_Map_Generic& globals, const ling::I_Map_Generic& outLocals,
                         double limit = kNoLimit);

/// One expression, as it is.
ling::Any evaluateExpression(const ling::String& code, const ling::I_Map_Generic& locals,
                             const ling::I_Map_Generic& globals);

}  // namespace ling::python
