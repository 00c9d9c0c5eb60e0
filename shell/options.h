#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ling::shell {

/// What the shell is to do.
enum class Mode { Console, File, StandardInput, Module, Expression, Code, Stubs, PythonVersion };

/// What `python3` would be told of the interpreter, as far as one that runs already can still obey it.
struct InterpreterOptions {
    std::vector<std::string> warnings;  ///< Filters, as `-W` takes them.
    std::vector<std::string> extras;    ///< What `-X` takes.
    bool unbuffered = false;

    bool areGiven() const noexcept { return unbuffered || !warnings.empty() || !extras.empty(); }
};

/// The command line of the shell.
struct Options {
    Mode mode = Mode::Console;
    /// The file, the module's name, the expression, the statements, or the folder for stubs.
    std::string subject;
    /// The program's own arguments, untouched.
    std::vector<std::string> arguments;
    /// The directories to load extensions from, in this order. None stands for the one beside the shell.
    std::vector<std::filesystem::path> extensions;
    InterpreterOptions interpreter;
    /// A console follows the program, or reads standard input that is no terminal.
    bool interactive = false;
    /// The console does not greet.
    bool quiet = false;
};

/// Reads the command line. Nothing when all is said already: `exitStatus` is then 0 after "--help" and "--version",
/// and 2 after wrong usage, which was explained on standard error.
std::optional<Options> parseOptions(const std::vector<std::string>& arguments, int& exitStatus);

}  // namespace ling::shell
