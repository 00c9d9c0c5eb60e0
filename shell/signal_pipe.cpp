#include "signal_pipe.h"

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace ling::shell {

namespace {

constexpr std::array kTerminalSignals = {SIGWINCH, SIGCONT};

volatile std::sig_atomic_t listener = -1;
std::array<struct sigaction, kTerminalSignals.size()> before;

void note(int signal) {
    const int error = errno;
    const auto byte = static_cast<unsigned char>(signal);
    [[maybe_unused]] const ssize_t written = write(static_cast<int>(listener), &byte, 1);  // Full: enough is waiting.
    errno = error;
}

}  // namespace

SignalPipe::SignalPipe() { (void)pipe2(ends_, O_CLOEXEC | O_NONBLOCK); }

SignalPipe::~SignalPipe() {
    for (const int end : ends_)
        (void)close(end);
}

std::vector<int> SignalPipe::take() const {
    std::vector<int> signals;
    unsigned char byte = 0;
    while (read(readEnd(), &byte, 1) == 1)
        signals.push_back(byte);
    return signals;
}

Listening::Listening(const SignalPipe& pipe) {
    listener = pipe.writeEnd();
    struct sigaction action = {};
    action.sa_handler = note;
    (void)sigemptyset(&action.sa_mask);
    for (std::size_t index = 0; index < kTerminalSignals.size(); ++index)
        (void)sigaction(kTerminalSignals[index], &action, &before[index]);
}

Listening::~Listening() {
    for (std::size_t index = 0; index < kTerminalSignals.size(); ++index)
        (void)sigaction(kTerminalSignals[index], &before[index], nullptr);
}

}  // namespace ling::shell
