#include "process/support/host_run.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace host_run {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kTimeLimit(30);
constexpr unsigned kNobody = 65534;
constexpr const char* kSanitizerVariables[] = {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"};

enum class User : bool { Same, Nobody };

std::string setting(const char* variable, const char* fallback) {
    const char* value = std::getenv(variable);
    return value != nullptr ? value : fallback;
}

/// One end of a program's output, read until it is closed.
struct Stream {
    int ends[2] = {-1, -1};
    std::string text;

    Stream() {
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw std::runtime_error("pipe");
    }
    ~Stream() {
        close(ends[0]);
        closeWriter();
    }
    void closeWriter() {
        if (ends[1] >= 0)
            close(ends[1]);
        ends[1] = -1;
    }
    /// False when the writer is gone.
    bool read() {
        char buffer[4096];
        const ssize_t count = ::read(ends[0], buffer, sizeof(buffer));
        if (count > 0)
            text.append(buffer, static_cast<std::size_t>(count));
        return count > 0;
    }
};

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// In the child, after the fork: only what needs no memory.
[[noreturn]] void become(char** arguments, char** environment, int out, int err, User user) {
    setpgid(0, 0);
    dup2(open("/dev/null", O_RDONLY), 0);
    dup2(out, 1);
    dup2(err, 2);
    const bool ready =
        user == User::Same || (setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0);
    if (ready)
        execve(arguments[0], arguments, environment);
    _exit(127);
}

/// Reads both streams until they are closed. False when the time is over before.
bool readAll(std::array<Stream*, 2> streams) {
    const Clock::time_point end = Clock::now() + kTimeLimit;
    std::array<pollfd, 2> polled{pollfd{streams[0]->ends[0], POLLIN, 0}, pollfd{streams[1]->ends[0], POLLIN, 0}};
    while (polled[0].fd >= 0 || polled[1].fd >= 0) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        if (left <= 0 || poll(polled.data(), polled.size(), static_cast<int>(left)) == 0)
            return false;
        for (std::size_t index = 0; index < polled.size(); ++index) {
            if (polled[index].revents != 0 && !streams[index]->read())
                polled[index].fd = -1;
        }
    }
    return true;
}

int statusOf(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR)
        continue;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

Ended run(std::vector<std::string> arguments, std::vector<std::string> environment, User user) {
    Stream out;
    Stream err;
    const std::vector<char*> argumentPointers = pointersTo(arguments);
    const std::vector<char*> environmentPointers = pointersTo(environment);
    const pid_t child = fork();
    if (child == 0)
        become(const_cast<char**>(argumentPointers.data()), const_cast<char**>(environmentPointers.data()), out.ends[1],
               err.ends[1], user);
    out.closeWriter();
    err.closeWriter();
    if (!readAll({&out, &err}))
        kill(-child, SIGKILL);
    return {statusOf(child), out.text, err.text};
}

Ended runIn(const fs::path& program, const std::vector<std::string>& arguments, Environment environment, User user) {
    std::vector<std::string> all = {program.string()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    for (const auto& row : emptyEnvironment())
        environment.push_back(row);
    std::vector<std::string> variables;
    for (const auto& [name, value] : environment)
        variables.push_back(name + "=" + value);
    return run(std::move(all), std::move(variables), user);
}

fs::path programFile(const std::string& name) { return fs::path(setting("LING_TEST_HOSTS", LING_TEST_HOSTS)) / name; }

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

std::vector<std::string> Ended::lines() const {
    std::vector<std::string> found;
    for (std::size_t start = 0; start < out.size();) {
        const std::size_t end = std::min(out.find('\n', start), out.size());
        found.push_back(out.substr(start, end - start));
        start = end + 1;
    }
    return found;
}

fs::path stage() { return setting("LING_STAGE", LING_STAGE); }

Environment emptyEnvironment() {
    Environment environment;
    for (const char* name : kSanitizerVariables) {
        if (const char* value = std::getenv(name))
            environment.emplace_back(name, value);
    }
#ifdef __SANITIZE_ADDRESS__
    // The allocator that Python starts with keeps its objects where the leak checker does not look for pointers, so
    // that all they hold would count as lost. The tests within one process have the plain allocator.
    const std::string options = setting("ASAN_OPTIONS", "");
    std::erase_if(environment, [](const auto& row) { return row.first == "ASAN_OPTIONS"; });
    environment.emplace_back("ASAN_OPTIONS", (options.empty() ? "" : options + ":") + "detect_leaks=0");
#endif
    return environment;
}

Ended runHost(const std::string& name, const std::vector<std::string>& arguments, const Environment& environment) {
    return runIn(programFile(name), arguments, environment, User::Same);
}

Ended runHostAsNobody(const ScratchTree& tree, const std::string& name, const std::vector<std::string>& arguments) {
    const fs::path program = tree.path() / name;  // Where the build lies, nobody may have no access at all.
    fs::copy_file(programFile(name), program, fs::copy_options::skip_existing);
    return runIn(program, arguments, {{"LD_LIBRARY_PATH", (tree.path() / "lib").string()}}, User::Nobody);
}

ScratchTree::ScratchTree(const std::u8string& name) {
    std::string pattern = (fs::temp_directory_path() / "ling-tree-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("mkdtemp");
    root_ = pattern;
    fs::permissions(root_, fs::perms::others_read | fs::perms::others_exec, fs::perm_options::add);
    path_ = root_ / fs::path(name);
    fs::create_directory(path_);
    copyTree(stage() / "lib", path_ / "lib");
    fs::create_directory(path_ / "qcomponents");
    copyTree(stage() / "qcomponents/qextensions", extensions());
}

ScratchTree::~ScratchTree() {
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

void writeArchive(const fs::path& file) {
    constexpr char kBytes[] =
        "PK\x03\x04\x14\0\0\0\0\0\0\0!\0t)nx\x11\0\0\0\x11\0\0\0\x11\0\0\0inside_archive.pyvalue = 'inside'\n"
        "PK\x01\x02\x14\x03\x14\0\0\0\0\0\0\0!\0t)nx\x11\0\0\0\x11\0\0\0\x11\0\0\0\0\0\0\0\0\0\0\0\x80\x01\0\0\0\0"
        "inside_archive.pyPK\x05\x06\0\0\0\0\x01\0\x01\0?\0\0\0@\0\0\0\0\0";
    static_assert(sizeof(kBytes) - 1 == 149);
    std::ofstream(file, std::ios::binary).write(kBytes, sizeof(kBytes) - 1);
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

}  // namespace host_run
