#pragma once

namespace ling::python {

/// What the language room puts into the module "ling.python". Its static initialiser queues each of these for the
/// host's initialisation; nobody has to call them.

/// Documents the module.
void documentModule();
/// Register the functions `evaluate`, `evaluate_expr` and `evaluate_method`.
void registerEvaluate();
void registerEvaluateExpression();
void registerEvaluateMethod();

}  // namespace ling::python
