#include "host.h"

#include "messages.h"

#include "ling/extension.h"

#include <system_error>

namespace ling::shell {

std::filesystem::path ownExecutable() {
    std::error_code failure;  // No /proc: the extensions are then looked for in the current directory.
    return std::filesystem::read_symlink("/proc/self/exe", failure);
}

void startHost(const std::filesystem::path& extensions) {
    const std::filesystem::path directory =
        extensions.empty() ? ownExecutable().parent_path() / "qcomponents" / "qextensions" : extensions;
    for (const ExtensionReport& report : load_extensions(directory)) {
        if (!report.problem.isEmpty())
            tell(report.file.string() + ": " + report.problem.toStdString());
    }
    for (const String& problem : run_init_handlers())
        tell("initialisation: " + problem.toStdString());
}

}  // namespace ling::shell
