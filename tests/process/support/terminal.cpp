#include "process/support/terminal.h"

#include <algorithm>
#include <csignal>
#include <stdexcept>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace process {

namespace {

constexpr const char* kLastOfSequence = "@ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz=>";

/// The beginning of a sequence that is not there as a whole yet.
std::string cutSequence(const std::string& text) {
    const std::size_t start = text.rfind('\x1b');
    const bool isCut = start != std::string::npos && text.find_first_of(kLastOfSequence, start) == std::string::npos;
    return isCut ? text.substr(start) : "";
}

}  // namespace

Terminal::Terminal(const Command& command) : end_(std::chrono::steady_clock::now() + command.limit) {
    winsize size = {24, 80, 0, 0};
    child_ = forkpty(&file_, nullptr, nullptr, &size);
    if (child_ < 0)
        throw std::runtime_error("forkpty");
    if (child_ == 0)
        become(command);
}

Terminal::~Terminal() {
    if (child_ > 0) {
        (void)kill(child_, SIGKILL);
        (void)waitFor(child_);
    }
    (void)close(file_);
}

void Terminal::type(std::string_view keys) const {
    if (write(file_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
        throw std::runtime_error("the terminal takes no keys");
}

void Terminal::signal(int number) const { (void)kill(child_, number); }

bool Terminal::receive() {
    using std::chrono::milliseconds;
    const auto left = std::chrono::duration_cast<milliseconds>(end_ - std::chrono::steady_clock::now()).count();
    pollfd polled = {file_, POLLIN, 0};
    if (left <= 0 || poll(&polled, 1, static_cast<int>(left)) <= 0)
        return false;
    char buffer[4096];
    const ssize_t count = read(file_, buffer, sizeof(buffer));
    if (count > 0)
        unread_.append(buffer, static_cast<std::size_t>(count));
    return count > 0;
}

std::string Terminal::expect(const std::string& text) {
    std::string shown = plain(unread_);
    while (shown.find(text) == std::string::npos) {
        if (!receive())
            return shown + "<there is no '" + text + "'>";
        shown = plain(unread_);
    }
    const std::size_t end = shown.find(text) + text.size();
    unread_ = shown.substr(end) + cutSequence(unread_);
    return shown.substr(0, end);
}

Ended Terminal::finish() {
    while (receive())
        continue;
    if (std::chrono::steady_clock::now() >= end_)
        signal(SIGKILL);
    Ended ended;
    ended.out = plain(unread_);
    ended.status = waitFor(child_);
    child_ = -1;
    return ended;
}

std::string plain(std::string_view text) {
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] == '\r')
            continue;
        if (text[index] != '\x1b') {
            result += text[index];
            continue;
        }
        index = std::min(text.find_first_of(kLastOfSequence, index), text.size());
    }
    return result;
}

}  // namespace process
