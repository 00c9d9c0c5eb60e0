#pragma once

#include "options.h"
#include "python_driver.h"

namespace ling::shell {

/// Does what the command line asks for, up to the point where the process may end. Answers its exit status, or
/// `PythonDriver::kInterrupted`.
int run(const Options& options, const PythonDriver& driver);

}  // namespace ling::shell
