#pragma once

#include "ling/any.h"
#include "ling/function.h"

namespace ling::python {

/// The evaluation entry points as functions of the runtime, new ones each time: for the module "ling.python" and, under
/// the names of `I_Language`, for the class `LanguagePython`. What follows the code may be left out and is an empty map
/// then; variables handed back into a map that was left out are lost.
ling::FunctionCL_Generic makeEvaluate(const char* name);
ling::FunctionCL_Generic makeEvaluateExpression(const char* name);
ling::FunctionCL_Generic makeEvaluateMethod(const char* name);

/// `evaluate` with a time limit: a number of seconds in front of the code.
ling::FunctionCL_Generic makeEvaluateWithin(const char* name);

}  // namespace ling::python
