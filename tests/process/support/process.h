#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

/// Runs programs as processes: the staged shell, and the small hosts of `tests/process/hosts`.
namespace process {

using Environment = std::vector<std::pair<std::string, std::string>>;

struct Command {
    std::filesystem::path program;
    std::vector<std::string> arguments;
    Environment environment;  ///< All of it, besides what the sanitizers are told.
    std::filesystem::path directory = "/";
    std::string input;             ///< What the program reads from its standard input.
    std::filesystem::path output;  ///< A file that takes the standard output, in the place of what is answered.
    std::chrono::seconds limit{60};
    bool asNobody = false;  ///< As the user "nobody". For root.
};

/// What became of a program.
struct Ended {
    int status = -1;  ///< The exit status; minus the signal that ended it, SIGKILL when it ran out of time.
    std::string out;
    std::string err;

    std::vector<std::string> lines() const;  ///< Of the standard output.
};

/// Runs to the end. A program that takes longer than its limit is ended by SIGKILL.
Ended run(const Command& command);

/// Runs, sends `signal` as soon as the standard output begins with `sign`, and waits for the end.
Ended runAndSignal(const Command& command, const std::string& sign, int signal);

/// In a child, after the fork: starts the program. Never comes back.
[[noreturn]] void become(const Command& command);

/// Waits for the end of a child. Its status as `Ended` has it.
int waitFor(pid_t child);

/// The staged tree.
std::filesystem::path stage();

/// The `python3` that the build found.
std::filesystem::path python();

/// The staged shell, in the environment of a user with a terminal for UTF-8.
Command shell(std::vector<std::string> arguments);

/// A host of `tests/process/hosts`, in an empty environment.
Command host(const std::string& name, std::vector<std::string> arguments);

/// A folder of a test's own, removed in the end. Everybody may read it.
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

/// A copy of the staged extensions in a folder of its own.
class ScratchTree {
public:
    explicit ScratchTree(const std::u8string& name = u8"tree");

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path extensions() const { return path_ / "qcomponents/qextensions"; }

private:
    Folder root_;
    std::filesystem::path path_;
};

/// What a file holds. Empty when there is none.
std::string contentOf(const std::filesystem::path& file);

/// Every file under `directory` with its size, sorted.
std::vector<std::string> filesOf(const std::filesystem::path& directory);

}  // namespace process
