#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

/// Runs the small host programs of this folder on the staged plug-in or on a copy of it.
namespace host_run {

using Environment = std::vector<std::pair<std::string, std::string>>;

/// What became of a program.
struct Ended {
    int status = -1;  ///< The exit status; minus the signal that ended it, SIGKILL when it ran out of time.
    std::string out;
    std::string err;

    std::vector<std::string> lines() const;  ///< Of the standard output.
};

/// The staged tree.
std::filesystem::path stage();

/// Nothing but what the sanitizers of this build are told.
Environment emptyEnvironment();

/// Runs a host program in an environment that holds `environment` and what the sanitizers are told, and waits for its
/// end, half a minute at most.
Ended runHost(const std::string& name, const std::vector<std::string>& arguments, const Environment& environment = {});
/// A copy of the staged extensions in a folder of its own, removed in the end. Everybody may read it.
class ScratchTree {
public:
    explicit ScratchTree(const std::u8string& name = u8"tree");
    ~ScratchTree();
    ScratchTree(const ScratchTree&) = delete;
    ScratchTree& operator=(const ScratchTree&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path extensions() const { return path_ / "qcomponents/qextensions"; }

private:
    std::filesystem::path root_;
    std::filesystem::path path_;
};

/// Runs a host program on `tree` as the user "nobody". For root.
Ended runHostAsNobody(const ScratchTree& tree, const std::string& name, const std::vector<std::string>& arguments);

/// Writes a zip archive with one module in it: `inside_archive`, whose `value` is "inside".
void writeArchive(const std::filesystem::path& file);

/// Every file under `directory` with its size, sorted.
std::vector<std::string> filesOf(const std::filesystem::path& directory);

}  // namespace host_run
