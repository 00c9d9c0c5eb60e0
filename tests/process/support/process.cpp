#include "process/support/process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace process {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr unsigned kNobody = 65534;

std::string setting(const char* variable, const char* fallback) {
    const char* value = std::getenv(variable);
    return value != nullptr ? value : fallback;
}

/// A pipe whose ends are closed with it, unless they were before. Programs that are started do not inherit them.
struct Pipe {
    int reader = -1;
    int writer = -1;

    Pipe() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw std::runtime_error("pipe");
        reader = ends[0];
        writer = ends[1];
    }
    ~Pipe() {
        drop(reader);
        drop(writer);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    static void drop(int& end) {
        if (end >= 0)
            close(end);
        end = -1;
    }
};

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
    for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"}) {
        std::string value = setting(name, "");
#ifdef __SANITIZE_ADDRESS__
        // The allocator that Python starts with keeps its objects where the leak checker does not look for pointers,
        // so that all they hold would count as lost. The tests within one process have the plain allocator.
        if (std::string(name) == "ASAN_OPTIONS")
            value += (value.empty() ? "" : ":") + std::string("detect_leaks=0");
#endif
        if (!value.empty())
            variables.push_back(name + ("=" + value));
    }
    return variables;
}

/// A running program and what it has said so far.
class Running {
public:
    explicit Running(const Command& command) : command_(command), end_(Clock::now() + command.limit) {
        child_ = fork();
        if (child_ == 0) {
            dup2(in_.reader, STDIN_FILENO);
            const fs::path& file = command_.output;
            dup2(file.empty() ? out_.writer : open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
            dup2(err_.writer, STDERR_FILENO);
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

/// Links where it can, since the stage is large.
void copyTree(const fs::path& from, const fs::path& to) {
    constexpr auto kCopy = fs::copy_options::recursive | fs::copy_options::copy_symlinks;
    std::error_code failed;
    fs::copy(from, to, kCopy | fs::copy_options::create_hard_links, failed);
    if (!failed)
        return;
    fs::remove_all(to);
    fs::copy(from, to, kCopy);
}

}  // namespace

void become(const Command& command) {
    (void)std::signal(SIGPIPE, SIG_DFL);  // As a user's programs find them, whatever runs the tests.
    (void)std::signal(SIGINT, SIG_DFL);
    std::vector<std::string> arguments = {command.program.string()};
    arguments.insert(arguments.end(), command.arguments.begin(), command.arguments.end());
    std::vector<std::string> variables = variablesOf(command);
    const bool isUser =
        !command.asNobody || (setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0);
    if (isUser && chdir(command.directory.c_str()) == 0)
        execve(command.program.c_str(), pointersTo(arguments).data(), pointersTo(variables).data());
    _exit(127);
}

int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR)
        continue;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::vector<std::string> Ended::lines() const {
    std::vector<std::string> found;
    std::istringstream stream(out);
    for (std::string line; std::getline(stream, line);)
        found.push_back(line);
    return found;
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

fs::path stage() { return setting("LING_STAGE", LING_STAGE); }

fs::path python() { return setting("LING_TEST_PYTHON", LING_TEST_PYTHON); }

Command shell(std::vector<std::string> arguments) {
    Command command;
    command.program = stage() / "lingsh";
    command.arguments = std::move(arguments);
    command.environment = {{"LC_ALL", "C.UTF-8"}, {"PATH", "/usr/bin:/bin"}};
    return command;
}

Command host(const std::string& name, std::vector<std::string> arguments) {
    Command command;
    command.program = fs::path(setting("LING_TEST_HOSTS", LING_TEST_HOSTS)) / name;
    command.arguments = std::move(arguments);
    command.limit = std::chrono::seconds(30);
    return command;
}

Folder::Folder() {
    std::string pattern = (fs::canonical(fs::temp_directory_path()) / "lingsh-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("mkdtemp");
    path_ = pattern;
    fs::permissions(path_, fs::perms::others_read | fs::perms::others_exec, fs::perm_options::add);
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

ScratchTree::ScratchTree(const std::u8string& name) : path_(root_.path() / fs::path(name)) {
    fs::create_directory(path_);
    copyTree(stage() / "lib", path_ / "lib");
    fs::create_directory(path_ / "qcomponents");
    copyTree(stage() / "qcomponents/qextensions", extensions());
}

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> filesOf(const fs::path& directory) {
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        const std::string size = entry.is_regular_file() ? std::to_string(entry.file_size()) : "-";
        files.push_back(entry.path().string() + " " + size);
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace process
