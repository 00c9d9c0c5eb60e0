#pragma once

#include "process/support/host_run.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

/// Runs any program as a process, with all that it can be given.
namespace process {

using host_run::Ended;
using host_run::Environment;

struct Command {
    std::filesystem::path program;
    std::vector<std::string> arguments;
    /// All of it, besides what the sanitizers are told.
    Environment environment;
    std::filesystem::path directory = "/";
    /// What the program reads from its standard input. Sent as fast as it is taken.
    std::string input;
    /// A file that takes the standard output, in the place of what is answered.
    std::filesystem::path output;
    std::chrono::seconds limit{60};
};

/// Runs to the end. A program that takes longer than its limit is ended by SIGKILL.
Ended run(const Command& command);

/// Runs, sends `signal` as soon as the standard output begins with `sign`, and waits for the end.
Ended runAndSignal(const Command& command, const std::string& sign, int signal);

/// In a child, after the fork: starts the program. Never comes back.
[[noreturn]] void become(const Command& command);

/// Waits for the end of a child. Its status as `Ended` has it.
int waitFor(pid_t child);

/// A folder of a test's own, removed in the end.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// Writes a file, folders above it included. Its path.
    std::filesystem::path write(const std::string& name, const std::string& content) const;

private:
    std::filesystem::path path_;
};

/// What a file holds. Empty when there is none.
std::string contentOf(const std::filesystem::path& file);

/// The staged shell, in the environment of a user with a terminal for UTF-8.
Command shell(std::vector<std::string> arguments);

}  // namespace process
