#include "host.h"

#include "messages.h"

#include "ling/extension.h"

#include <system_error>

namespace ling::shell {

std::filesystem::path ownExecutable() {
    std::error_code failure;  // No /proc: the extensions are then looked for in the current directory.
    return std::filesystem::read_symlink("/proc/self/exe", failure);
}

namespace {

void loadFrom(const std::filesystem::path& directory) {
    for (const ExtensionReport& report : load_extensions(directory)) {
        if (!report.problem.isEmpty())
            tell(report.file.string() + ": " + report.problem.toStdString());
    }
}

}  // namespace

void startHost(std::vector<std::filesystem::path> directories) {
    if (directories.empty())
        directories.push_back(ownExecutable().parent_path() / "qcomponents" / "qextensions");
    for (const std::filesystem::path& directory : directories)
        loadFrom(directory);
    for (const String& problem : run_init_handlers())
        tell("initialisation: " + problem.toStdString());
}

}  // namespace ling::shell
