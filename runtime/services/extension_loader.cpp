#include "ling/extension.h"

#include "services/init_queue.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <system_error>

namespace ling {

namespace {

namespace fs = std::filesystem;

using internal::queued_handler;

constexpr const char* kEntry = "quorvanta_extension_init";

/// Sets aside what was queued before, so that in its scope the queue holds only what an extension queues.
class own_queue {
public:
    own_queue() { before_.swap(internal::init_handlers_unsafe()); }
    own_queue(const own_queue&) = delete;
    own_queue& operator=(const own_queue&) = delete;
    ~own_queue() { internal::init_handlers_unsafe().swap(before_); }

private:
    std::vector<queued_handler> before_;
};

/// What came of each library that was started: one that is loaded a second time, perhaps under another name, does not
/// start again, and one that failed half-way is no better then.
class started_libraries {
public:
    /// Enters a library before it starts. Nothing for a new one, else what came of its start, which is no problem as
    /// long as that is still going on.
    std::optional<String> enter(void* library) {
        std::lock_guard hold(guard_);
        const auto [known, isNew] = problems_.try_emplace(library);
        return isNew ? std::nullopt : std::optional(known->second);
    }
    void setProblem(void* library, const String& problem) {
        String kept = problem;
        std::lock_guard hold(guard_);
        std::swap(problems_[library], kept);
    }

private:
    std::mutex guard_;
    std::map<void*, String> problems_;
};

started_libraries& startedLibraries() {
    static started_libraries& libraries = *new started_libraries;
    return libraries;
}

String loaderProblem() {
    const char* text = dlerror();
    return text != nullptr ? String(text) : String(u"The library cannot be loaded.");
}

using entry_function = void (*)();

/// The entry function of the library itself. The search goes through the libraries that it needs, too, where another
/// extension's entry may be found: that one does not count.
entry_function findEntry(void* library) {
    void* symbol = dlsym(library, kEntry);
    Dl_info where;
    link_map* map = nullptr;
    if (symbol == nullptr || dladdr(symbol, &where) == 0 || dlinfo(library, RTLD_DI_LINKMAP, &map) != 0)
        return nullptr;
    const bool isOwn = reinterpret_cast<std::uintptr_t>(where.dli_fbase) == map->l_addr;
    return isOwn ? reinterpret_cast<entry_function>(symbol) : nullptr;
}

/// Runs the queued handlers. Empty, or what went wrong, one line for each.
String runHandlers() {
    string_builder text;
    for (const String& problem : run_init_handlers())
        text.append(text.length() == 0 ? "" : "\n").append("An initialisation handler failed: ").append(problem);
    return text.build();
}

/// Runs the entry function and then what the library queued. Empty, or what went wrong.
String start(void* library) {
    const entry_function entry = findEntry(library);
    if (entry == nullptr)
        return String(u"The library has no function '{}'.").arg(String(kEntry));
    try {
        entry();
    } catch (...) {
        return String(u"The function '{}' failed: {}").arg(String(kEntry), internal::describe_exception());
    }
    return runHandlers();
}

/// What stands in a path and means something else to the loader, which would look for the file in another place.
std::string_view replacedByLoader(std::string_view path) {
    for (const std::string_view name : {"$ORIGIN", "${ORIGIN}", "$LIB", "${LIB}", "$PLATFORM", "${PLATFORM}"})
        if (path.find(name) != path.npos)
            return name;
    return {};
}

/// A library that is skipped stays loaded: what its initialisers left behind may point into it.
String load(const fs::path& file) {
    if (const std::string_view replaced = replacedByLoader(file.native()); !replaced.empty())
        return String(u"The system's loader replaces '{}' in a path, so that it cannot load this one.")
            .arg(String(replaced));
    const own_queue queue;
    void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        return loaderProblem();
    if (const std::optional<String> before = startedLibraries().enter(library))
        return *before;
    const String problem = start(library);
    startedLibraries().setProblem(library, problem);
    return problem;
}

struct found_files {
    std::vector<fs::path> libraries;
    std::error_code problem;
};

found_files findLibraries(const fs::path& directory) {
    found_files found;
    fs::directory_iterator walk(directory, found.problem);
    for (; !found.problem && walk != fs::directory_iterator(); walk.increment(found.problem)) {
        std::error_code broken;  // A broken link is no library, and no reason to stop.
        if (walk->path().extension() == ".so" && walk->is_regular_file(broken))
            found.libraries.push_back(walk->path());
    }
    std::sort(found.libraries.begin(), found.libraries.end());
    return found;
}

}  // namespace

std::vector<ExtensionReport> load_extensions(const std::filesystem::path& directory) {
    std::vector<ExtensionReport> reports;
    const found_files found = findLibraries(directory);
    for (const fs::path& file : found.libraries)
        reports.push_back({file, load(file)});
    if (found.problem)
        reports.push_back(
            {directory, String(u"Unable to read the directory: {}.").arg(String(found.problem.message()))});
    return reports;
}

}  // namespace ling
