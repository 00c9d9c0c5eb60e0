/// A host that starts Python in one of several ways and then prints the values of expressions, or what functions of
/// Python answer:
///
///     start_host MODE EXTENSIONS (EXPRESSION | "call MODULE.FUNCTION")...
///
/// MODE is how the plug-in meets Python; see the table at the end.

#include "host_program.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <thread>

namespace {

using namespace host_program;

std::filesystem::path extensions;

void loadPlainly() { loadExtensions(extensions); }

template <class Function>
Function* symbol(void* library, const char* name) {
    void* found = dlsym(library, name);
    if (found == nullptr)
        fail(dlerror());
    return reinterpret_cast<Function*>(found);
}

void* open(const std::filesystem::path& file, int flags) {
    void* library = dlopen(file.c_str(), RTLD_NOW | flags);
    if (library == nullptr)
        fail(dlerror());
    return library;
}

/// An interpreter of the host's own, with a search path of its own. The host is left with the interpreter lock.
void* startOwnPython(int flags) {
    const std::string library = (extensions / "python3/lib/libpython3.13.so.1.0").string();
    const std::string archive = (extensions / "python3/lib/python313.zip").string();
    setenv("PYTHONPATH", archive.c_str(), 1);
    setenv("PYTHONHOME", "/", 1);  // Nothing is there; all comes from the archive.
    void* python = open(library, flags);
    symbol<void(int)>(python, "Py_InitializeEx")(0);
    symbol<int(const char*)>(python, "PyRun_SimpleString")("import sys; sys.path[:] = ['first', sys.path[0]]");
    return python;
}

void loadBesideRunningPython() {
    startOwnPython(RTLD_GLOBAL);
    loadPlainly();
}

/// The lock is free, and the plug-in is loaded by a thread that Python has never seen.
void loadBesideFreePython() {
    void* python = startOwnPython(RTLD_LOCAL);
    symbol<void*()>(python, "PyEval_SaveThread")();
    std::thread(loadPlainly).join();
}

/// The steps of a loader by hand. Level-2 handlers run a second time at the end.
void loadWithHandlersTwice() {
    void* plugin = open(extensions / "libling_python.so", RTLD_LOCAL);
    const auto& queued = ling::internal::init_handlers_unsafe();
    const std::vector<std::pair<ling::InitLevel, ling::internal::init_handler>> handlers(queued.begin(), queued.end());
    symbol<void()>(plugin, "quorvanta_extension_init")();
    (void)ling::run_init_handlers();
    std::map<int, int> levels;
    for (const auto& [level, handler] : handlers) {
        ++levels[static_cast<int>(level)];
        if (level == ling::InitLevel::Start)
            handler();
    }
    std::printf("start handlers: %d, function handlers: %d\n", levels[2], levels[4]);
}

/// A host that forgets the entry function: the start has no search path.
void loadWithoutEntry() {
    open(extensions / "libling_python.so", RTLD_LOCAL);
    (void)ling::run_init_handlers();
}

/// All work on a thread that Python does not know, while the first thread waits.
void loadOnAnotherThread() { std::thread(loadPlainly).join(); }

/// Calls a function of a Python module as native code does, without arguments.
ling::Any callImported(std::string_view path) {
    const ling::Any found = call("python_import", ling::String(path));
    const auto function = ling::I_Invokable_Generic::cast(found);
    return function ? (*function)() : found;
}

ling::Any answerTo(std::string_view question) {
    constexpr std::string_view kCall = "call ";
    return question.starts_with(kCall) ? callImported(question.substr(kCall.size())) : evaluate(question);
}

struct Mode {
    const char* name;
    void (*load)();
};
constexpr Mode kModes[] = {
    {"plain", loadPlainly},           {"running", loadBesideRunningPython}, {"running-free", loadBesideFreePython},
    {"twice", loadWithHandlersTwice}, {"no-entry", loadWithoutEntry},       {"thread", loadOnAnotherThread},
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3)
        fail("usage: start_host MODE EXTENSIONS EXPRESSION...");
    extensions = argv[2];
    const Mode* mode = std::find_if(std::begin(kModes), std::end(kModes),
                                    [&](const Mode& row) { return std::string_view(argv[1]) == row.name; });
    if (mode == std::end(kModes))
        fail("no such mode");
    mode->load();
    std::printf("module python: %s\n", ling::find_module("python").isNone() ? "no" : "yes");
    for (int index = 3; index < argc; ++index)
        showValue(answerTo(argv[index]));
    return 0;
}
