#include "host/broken_pipe.h"

#include <Python.h>

#include <csignal>

namespace ling::python {

namespace {

/// Whether this thread is in Python: its code runs, or a guard of ours is under way, which counts one above what a
/// thread keeps. Reads what only this thread changes.
bool isInPython() noexcept {
    const PyThreadState* state = PyGILState_GetThisThreadState();
    return state != nullptr && (state->current_frame != nullptr || state->gilstate_counter > 1);
}

/// The signal comes to the thread that writes. Raised again, it waits until this returns, and ends the process then.
void handle(int number) {
    if (isInPython())
        return;
    (void)std::signal(number, SIG_DFL);
    (void)raise(number);
}

}  // namespace

void surviveBrokenPipes() {
    struct sigaction now {};
    if (sigaction(SIGPIPE, nullptr, &now) != 0 || (now.sa_flags & SA_SIGINFO) != 0 || now.sa_handler != SIG_DFL)
        return;
    struct sigaction ours {};
    ours.sa_handler = handle;
    ours.sa_flags = SA_RESTART | SA_ONSTACK;
    (void)sigemptyset(&ours.sa_mask);
    (void)sigaction(SIGPIPE, &ours, nullptr);
}

}  // namespace ling::python
