#include "host.h"

#include "messages.h"

#include "ling/extension.h"

#include <cstdlib>
#include <sstream>
#include <string>
#include <system_error>

namespace ling::shell {

std::filesystem::path ownExecutable() {
    std::error_code failure;  // No /proc: the extensions are then looked for in the current directory.
    return std::filesystem::read_symlink("/proc/self/exe", failure);
}

namespace {

/// What a shell leaves to the shells that its program starts: its own file, which another installation is not, and the
/// directories that it was given; a line each.
constexpr const char* kInherited = "LINGSH_EXTENSIONS";

void bequeath(const std::vector<std::filesystem::path>& directories) {
    std::string lines = ownExecutable().string();
    std::error_code failure;  // No current directory: a relative name leads nowhere for children either.
    for (const std::filesystem::path& directory : directories)
        lines += '\n' + std::filesystem::absolute(directory, failure).string();
    (void)setenv(kInherited, lines.c_str(), 1);
}

std::vector<std::filesystem::path> inherited() {
    const char* value = std::getenv(kInherited);
    std::istringstream lines(value != nullptr ? value : "");
    std::string line;
    if (!std::getline(lines, line) || line != ownExecutable())
        return {};
    std::vector<std::filesystem::path> directories;
    while (std::getline(lines, line))
        directories.emplace_back(line);
    return directories;
}

void loadFrom(const std::filesystem::path& directory) {
    for (const ExtensionReport& report : load_extensions(directory)) {
        if (!report.problem.isEmpty())
            tell(report.file.string() + ": " + report.problem.toStdString());
    }
}

}  // namespace

void startHost(std::vector<std::filesystem::path> directories) {
    if (!directories.empty())
        bequeath(directories);
    else if (directories = inherited(); directories.empty())
        directories.push_back(ownExecutable().parent_path() / "qcomponents" / "qextensions");
    for (const std::filesystem::path& directory : directories)
        loadFrom(directory);
    for (const String& problem : run_init_handlers())
        tell("initialisation: " + problem.toStdString());
}

}  // namespace ling::shell
