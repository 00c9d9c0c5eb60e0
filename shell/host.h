#pragma once

#include <filesystem>
#include <vector>

namespace ling::shell {

/// The shell's own file, links resolved.
std::filesystem::path ownExecutable();

/// Loads the extensions of the directories, in this order, and runs the initialisation of all. What could not be used
/// is told on standard error, with its file and the reason, and the rest goes on.
///
/// Without directories, those that the shell was given take their place whose program started this process, else
/// "qcomponents/qextensions" beside the shell: programs that start `sys.executable` again find the same host there.
void startHost(std::vector<std::filesystem::path> directories);

}  // namespace ling::shell
