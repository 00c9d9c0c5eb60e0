#pragma once

namespace ling::python {

/// What follows the start of an interpreter of our own: the `ling` module "python" with its documentation, its icon
/// and the modules exported under it. Answers whether the start goes on: not when something that is no module has the
/// name already.
bool setUpPythonModule();

/// What follows every start: the class `LanguagePython`, once per process, the scheme providers, what the module
/// "ling.python" has beyond the functions of its own level, and the finder by which Python programs import the host's
/// modules.
void setUpLanguage();

}  // namespace ling::python
