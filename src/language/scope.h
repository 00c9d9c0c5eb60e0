#pragma once

#include "language/evaluate.h"
#include "ling/any.h"
#include "ling/string.h"

namespace ling::python {

/// Scopes that last from one evaluation to the next: a dictionary of Python, which both sides read and write live. Code
/// runs in it as a module's does in the module, so that its functions see each other and what comes later.
///
/// All take the interpreter lock themselves and answer error results as `language/evaluate.h` says, besides "A scope is
/// a dictionary of Python, not {}.".

/// A new scope, as a map. It has the host's top-level modules, and what is bound by bare name, as they are now.
ling::Any makeScope();

/// Statements; none when they are done. An assignment before one that raises stays.
ling::Any evaluateIn(const ling::Any& scope, const ling::String& code, double limit = kNoLimit);

/// One expression; its value.
ling::Any evaluateExpressionIn(const ling::Any& scope, const ling::String& code, double limit = kNoLimit);

}  // namespace ling::python
