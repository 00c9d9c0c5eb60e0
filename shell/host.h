#pragma once

#include <filesystem>

namespace ling::shell {

/// The shell's own file, links resolved.
std::filesystem::path ownExecutable();

/// Loads the extensions of a directory (an empty path stands for "qcomponents/qextensions" beside the shell) and runs
/// the initialisation of all. What could not be used is told on standard error, with its file and the reason, and the
/// rest goes on.
void startHost(const std::filesystem::path& extensions);

}  // namespace ling::shell
