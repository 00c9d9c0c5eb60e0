/// Holds whole processes of the plug-in against a bare interpreter that does the same: the start up to the value of an
/// expression, and the import of all modules. Time and memory as the system counts them, medians of runs that take
/// turns, so that what else the machine does meets both alike. Prints a table; the ratios are what matters.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Arguments = std::vector<std::string>;

/// What one process took: milliseconds, and megabytes at its largest.
struct Cost {
    double wall = 0;
    double processor = 0;
    double memory = 0;
};

double milliseconds(const timeval& time) {
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-3 * static_cast<double>(time.tv_usec);
}

Cost run(const Arguments& command) {
    std::vector<char*> pointers;
    for (const std::string& argument : command)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    char* environment[] = {nullptr};
    const auto begin = std::chrono::steady_clock::now();
    pid_t child = 0;
    int status = posix_spawn(&child, pointers[0], &actions, nullptr, pointers.data(), environment);
    rusage usage{};
    if (status != 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
        std::fprintf(stderr, "%s failed\n", pointers[0]);
        std::exit(1);
    }
    const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - begin;
    posix_spawn_file_actions_destroy(&actions);
    return {wall.count(), milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime),
            static_cast<double>(usage.ru_maxrss) / 1024};
}

double median(const std::vector<Cost>& costs, double Cost::*part) {
    std::vector<double> values;
    for (const Cost& cost : costs)
        values.push_back(cost.*part);
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void compare(const char* title, std::size_t rounds, const Arguments& work, const Arguments& yardstick) {
    std::vector<Cost> works;
    std::vector<Cost> yardsticks;
    for (std::size_t round = 0; round < rounds; ++round) {
        yardsticks.push_back(run(yardstick));
        works.push_back(run(work));
    }
    std::printf("%s, medians of %zu\n%-16s %10s %10s %7s %6s\n", title, rounds, "", "ling", "bare", "ratio", "limit");
    const struct {
        const char* name;
        double Cost::*part;
    } rows[] = {{"wall, ms", &Cost::wall}, {"processor, ms", &Cost::processor}, {"memory, MB", &Cost::memory}};
    for (const auto& row : rows) {
        const double left = median(works, row.part);
        const double right = median(yardsticks, row.part);
        std::printf("%-16s %10.1f %10.1f %7.2f %6.1f\n", row.name, left, right, left / right, 2.0);
    }
}

}  // namespace

int main() {
    const std::filesystem::path hosts = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const std::filesystem::path stage = hosts / ".." / ".." / "stage";
    const std::string extensions = std::filesystem::canonical(stage / "qcomponents/qextensions").string();
    const std::string shell = std::filesystem::canonical(stage / "lingsh").string();
    const std::string bare = (hosts / "bare_host").string();
    const std::string importer = (hosts / "import_host").string();
    const std::string names = (hosts / "modules.txt").string();

    (void)run({importer, extensions, names});  // Warms the files up, too.
    (void)run({bare, extensions, "import", names});
    compare("from the start to the value of 1+1", 41, {shell, "-e", "1+1"}, {bare, extensions, "eval", "1+1"});
    compare("importing all modules", 15, {importer, extensions}, {bare, extensions, "import", names});
    return 0;
}
