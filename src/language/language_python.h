#pragma once

namespace ling::python {

/// Defines the class `LanguagePython`, by which the host and its other languages find Python (`I_Language`), in the
/// module "ling.python", and makes its one instance. To be called once, after the interpreter was started; needs no
/// lock.
void buildLanguageClass();

}  // namespace ling::python
