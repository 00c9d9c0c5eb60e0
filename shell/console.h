#pragma once

#include "python_driver.h"

namespace ling::shell {

/// Runs the interactive console until the user ends it. At a terminal, lines are edited; other input is taken as it
/// comes, without prompts and history. Answers the exit status.
int runConsole(const PythonDriver& driver);

}  // namespace ling::shell
