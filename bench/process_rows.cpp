#include "rows.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ling::bench {

namespace {

using Arguments = std::vector<std::string>;

/// What one process took: seconds, and megabytes at its largest.
struct Cost {
    double seconds = 0;
    double memory = 0;
};

/// Its output goes to `output`. Ends this process when it fails: no figure would mean anything then.
Cost run(const Arguments& command, const std::string& output = "/dev/null") {
    std::vector<char*> pointers;
    for (const std::string& argument : command)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    char* environment[] = {nullptr};
    const auto begin = std::chrono::steady_clock::now();
    pid_t child = 0;
    int status = posix_spawn(&child, pointers[0], &actions, nullptr, pointers.data(), environment);
    rusage usage{};
    if (status != 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
        std::fprintf(stderr, "%s failed\n", pointers[0]);
        std::exit(1);
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    posix_spawn_file_actions_destroy(&actions);
    return {elapsed.count(), static_cast<double>(usage.ru_maxrss) / 1024};
}

struct Places {
    std::filesystem::path bench = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::filesystem::path stage = bench.parent_path() / "stage";
    std::string bare = (bench / "bare_host").string();
    std::string shell = (stage / "lingsh").string();
    std::string extensions = (stage / "qcomponents/qextensions").string();
};

double part(const std::vector<Cost>& costs, double Cost::*which) {
    std::vector<double> values;
    for (const Cost& cost : costs)
        values.push_back(cost.*which);
    return median(values);
}

/// Medians of runs that take turns. Nanoseconds for time; for memory, bytes in their place.
Figures compareProcesses(double Cost::*which, int rounds, const Arguments& work, const Arguments& yardstick) {
    std::vector<Cost> works;
    std::vector<Cost> yardsticks;
    for (int round = 0; round < rounds; ++round) {
        yardsticks.push_back(run(yardstick));
        works.push_back(run(work));
    }
    const double left = part(works, which);
    const double right = part(yardsticks, which);
    const double unit = which == &Cost::seconds ? 1e9 : 1e6;
    return {left * unit, right * unit, left / right};
}

Figures start(double Cost::*which) {
    const Places at;
    return compareProcesses(which, 41, {at.shell, "-e", "1+1"}, {at.bare, at.extensions, "eval", "1+1"});
}

Figures importAll() {
    const Places at;
    const std::string names = (at.bench / "modules.txt").string();
    const std::string import = "ling.python.LanguagePython.importAllModules()\n";
    const std::string list =
        "for m in ling.modules():\n"
        "    if m.__name__.startswith('python.'): print(m.__name__[7:])";
    (void)run({at.shell, "-c", import + list}, names);
    return compareProcesses(&Cost::seconds, 3, {at.shell, "-c", import}, {at.bare, at.extensions, "import", names});
}

}  // namespace

std::vector<Row> processRows() {
    return {
        {"start to the value of 1+1, time", 1.4, [] { return start(&Cost::seconds); }},
        {"start to the value of 1+1, bytes", 1.5, [] { return start(&Cost::memory); }},
        {"import all modules, time", 2, importAll},
    };
}

}  // namespace ling::bench
