#pragma once

#include "python_driver.h"

namespace ling::shell {

/// Whether the console greets the user.
enum class Greeting { No, Yes };

/// Runs the interactive console in the program's namespace until the user ends it. Answers the exit status.
int runConsole(const PythonDriver& driver, Greeting greeting);

}  // namespace ling::shell
