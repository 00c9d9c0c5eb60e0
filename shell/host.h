#pragma once

#include <filesystem>
#include <vector>

namespace ling::shell {

/// The shell's own file, links resolved.
std::filesystem::path ownExecutable();

/// Loads the extensions of the directories, in this order (of "qcomponents/qextensions" beside the shell when there are
/// none), and runs the initialisation of all. What could not be used is told on standard error, with its file and the
/// reason, and the rest goes on.
void startHost(std::vector<std::filesystem::path> directories);

}  // namespace ling::shell
