#include "host.h"
#include "options.h"
#include "programs.h"
#include "python_driver.h"
#include "text_locale.h"

#include <csignal>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

constexpr int kNoPython = 1;
constexpr int kStatusOfInterrupt = 128 + SIGINT;

/// Ends the process by the signal that ended its program: a parent that waits for it, such as a script that runs
/// programs in a loop, sees that the user wants to stop.
int endByInterrupt() {
    (void)std::signal(SIGINT, SIG_DFL);
    (void)kill(getpid(), SIGINT);
    return kStatusOfInterrupt;
}

}  // namespace

int main(int count, char** texts) {
    using namespace ling::shell;
    const std::vector<std::string> commandLine(texts, texts + count);
    useTextLocale();
    int status = 0;
    const std::optional<Options> options =
        parseOptions({commandLine.begin() + (count > 0 ? 1 : 0), commandLine.end()}, status);
    if (!options)
        return status;
    startHost(options->extensions);
    const std::optional<PythonDriver> driver = PythonDriver::start(commandLine);
    if (!driver)
        return kNoPython;
    status = driver->finish(run(*options, *driver));
    return status == PythonDriver::kInterrupted ? endByInterrupt() : status;
}
