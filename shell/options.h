#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ling::shell {

/// What the shell is to do.
enum class Mode { Console, File, StandardInput, Module, Expression, Code };

/// The command line of the shell.
struct Options {
    Mode mode = Mode::Console;
    /// The file, the module's name, the expression or the statements.
    std::string subject;
    /// The program's own arguments, untouched.
    std::vector<std::string> arguments;
    /// The directories to load extensions from, in this order. None stands for the one beside the shell.
    std::vector<std::filesystem::path> extensions;
};

/// Reads the command line. Nothing when all is said already: `exitStatus` is then 0 after "--help" and "--version",
/// and 2 after wrong usage, which was explained on standard error.
std::optional<Options> parseOptions(const std::vector<std::string>& arguments, int& exitStatus);

}  // namespace ling::shell
