#pragma once

#include "ling/class_builder.h"

namespace ling::python {

/// Adds what a host controls Python by to the class `LanguagePython`: `interrupt`, `evaluateWithin`, `callWithin`,
/// `makeScope`, `evaluateIn`, `evaluateExpressionIn`, `takeOutput` and `finish`. What each does stands at the methods
/// of the same names of `I_Language`.
void addControl(ling::internal::class_builder& builder);

}  // namespace ling::python
