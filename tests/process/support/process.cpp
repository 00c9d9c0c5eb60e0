#include "process/support/process.h"

#include "support/pipe.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace process {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> variablesOf(const Command& command) {
    std::vector<std::string> variables;
    for (const auto& [name, value] : command.environment)
        variables.push_back(name + "=" + value);
    for (const auto& [name, value] : host_run::emptyEnvironment())
        variables.push_back(name + "=" + value);
    return variables;
}

/// A running program and what it has said so far.
class Running {
public:
    explicit Running(const Command& command) : command_(command), end_(Clock::now() + command.limit) {
        child_ = fork();
        if (child_ == 0) {
            connect();
            become(command_);
        }
        Pipe::drop(in_.reader);
        Pipe::drop(out_.writer);
        Pipe::drop(err_.writer);
        (void)fcntl(in_.writer, F_SETFL, O_NONBLOCK);
    }

    const std::string& out() const { return ended_.out; }
    pid_t child() const { return child_; }

    /// Passes on what is there to pass on. False at the end of both outputs, and when the time is over.
    bool step() {
        if (sent_ == command_.input.size())
            Pipe::drop(in_.writer);
        pollfd files[] = {{out_.reader, POLLIN, 0}, {err_.reader, POLLIN, 0}, {in_.writer, POLLOUT, 0}};
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end_ - Clock::now()).count();
        if (left <= 0 || poll(files, 3, static_cast<int>(left)) <= 0) {
            (void)kill(child_, SIGKILL);
            return false;
        }
        receive(files[0], out_, ended_.out);
        receive(files[1], err_, ended_.err);
        if (files[2].revents != 0)
            send();
        return out_.reader >= 0 || err_.reader >= 0;
    }

    Ended finish() {
        while (step())
            continue;
        ended_.status = waitFor(child_);
        return ended_;
    }

private:
    void connect() const {
        dup2(in_.reader, STDIN_FILENO);
        const fs::path& file = command_.output;
        dup2(file.empty() ? out_.writer : open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
        dup2(err_.writer, STDERR_FILENO);
    }

    static void receive(const pollfd& polled, Pipe& pipe, std::string& text) {
        if (polled.revents == 0)
            return;
        char buffer[65536];
        const ssize_t count = read(pipe.reader, buffer, sizeof(buffer));
        if (count > 0)
            text.append(buffer, static_cast<std::size_t>(count));
        else
            Pipe::drop(pipe.reader);
    }

    void send() {
        const ssize_t count = write(in_.writer, command_.input.data() + sent_, command_.input.size() - sent_);
        if (count > 0)
            sent_ += static_cast<std::size_t>(count);
        else
            sent_ = command_.input.size();  // Nobody wants the rest.
    }

    const Command& command_;
    Clock::time_point end_;
    Pipe in_, out_, err_;
    std::size_t sent_ = 0;
    pid_t child_ = -1;
    Ended ended_;
};

}  // namespace

void become(const Command& command) {
    (void)std::signal(SIGPIPE, SIG_DFL);  // As a user's programs find them, whatever runs the tests.
    (void)std::signal(SIGINT, SIG_DFL);
    std::vector<std::string> arguments = {command.program.string()};
    arguments.insert(arguments.end(), command.arguments.begin(), command.arguments.end());
    std::vector<std::string> variables = variablesOf(command);
    if (chdir(command.directory.c_str()) == 0)
        execve(command.program.c_str(), pointersTo(arguments).data(), pointersTo(variables).data());
    _exit(127);
}

int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR)
        continue;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

Ended run(const Command& command) {
    (void)std::signal(SIGPIPE, SIG_IGN);  // A program that takes no input must not end the tests.
    return Running(command).finish();
}

Ended runAndSignal(const Command& command, const std::string& sign, int signal) {
    Running running(command);
    while (!running.out().starts_with(sign) && running.step())
        continue;
    (void)kill(running.child(), signal);
    return running.finish();
}

Folder::Folder() {
    std::string pattern = (fs::canonical(fs::temp_directory_path()) / "lingsh-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("mkdtemp");
    path_ = pattern;
}

Folder::~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

fs::path Folder::write(const std::string& name, const std::string& content) const {
    const fs::path file = path_ / name;
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file;
}

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

Command shell(std::vector<std::string> arguments) {
    Command command;
    command.program = host_run::stage() / "lingsh";
    command.arguments = std::move(arguments);
    command.environment = {{"LC_ALL", "C.UTF-8"}, {"PATH", "/usr/bin:/bin"}};
    return command;
}

}  // namespace process
