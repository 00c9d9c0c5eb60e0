#include "host/interpreter.h"

#include "host/broken_pipe.h"
#include "host/once.h"
#include "host/platform.h"
#include "host/process_end.h"
#include "host/py_ref.h"
#include "host/search_paths.h"
#include "host/utf8_locale.h"

#include <Python.h>

#include <dlfcn.h>

namespace ling::python {

namespace {

constinit Once interpreterStarted;
constinit StartSteps startSteps;

/// Makes the symbols of libpython visible to all libraries that are loaded later.
///
/// Native modules of the standard library are not linked to libpython: they find its symbols among the global ones.
/// A host that loads its extensions with local symbols loads libpython the same way, as our dependency, and each such
/// import would fail with undefined symbols.
void promoteLibpython() {
    // The address of a function of libpython may be that of a jump in the executable; this text is in the library.
    Dl_info info;
    if (dladdr(Py_GetVersion(), &info) != 0)
        (void)dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL);  // Never closed: Python is never unloaded.
}

void configure(PyConfig& config) {
    PyConfig_InitIsolatedConfig(&config);
    config.use_environment = 0;
    (void)PyConfig_SetString(&config, &config.filesystem_encoding, L"utf-8");
    config.site_import = 0;
    config.write_bytecode = 0;
    config.quiet = 1;
    config.user_site_directory = 0;
    config.safe_path = 1;
    config.pathconfig_warnings = 0;
    config._init_main = 0;
}

void setSearchPaths(PyConfig& config, const std::vector<ling::Any>& paths) {
    config.module_search_paths_set = 1;
    for (const ling::Any& path : paths)
        (void)PyWideStringList_Append(&config.module_search_paths,
                                      platform::wideText(ling::unchecked<ling::String>(path)).c_str());
    // Modules that are frozen into the interpreter say by it where their source is.
    (void)PyConfig_SetBytesString(&config, &config.stdlib_dir, standardLibrary().c_str());
}

/// Python has looked for a `python3` on PATH and taken these from it, which is none of ours. What we brought is beside
/// the plug-in; there is no program that runs Python alone.
void describeInstallation() {
    PyRef home = PyRef::steal(PyUnicode_DecodeFSDefault((ownDirectory() + "/python3").c_str()));
    PyRef nothing = PyRef::steal(PyUnicode_FromString(""));
    for (const char* name : {"prefix", "exec_prefix", "base_prefix", "base_exec_prefix"})
        (void)PySys_SetObject(name, home.get());
    for (const char* name : {"executable", "_base_executable"})
        (void)PySys_SetObject(name, nothing.get());
    PyErr_Clear();
}

/// The core first, then, with search paths, the rest: Python imports nothing before it knows where to look. Without
/// any path it stays at the core. What the two calls answer is not looked at; those who need an interpreter ask
/// whether there is one.
void initialise() {
    const Utf8Locale locale;
    PyConfig config;
    configure(config);
    (void)Py_InitializeFromConfig(&config);
    const std::vector<ling::Any> paths = platform::itemsOf(pendingSysPaths());
    if (!paths.empty()) {
        config._init_main = 1;
        setSearchPaths(config, paths);
        if (PyStatus_Exception(Py_InitializeFromConfig(&config)) == 0)
            describeInstallation();
    }
    PyConfig_Clear(&config);
}

/// The state of this thread stays with it, and is found again by its guards; the lock is free from here on.
void releaseLock() {
    if (PyThreadState_GetUnchecked() != nullptr)  // Nothing was made by a start that failed early.
        (void)PyEval_SaveThread();
}

void start() {
    promoteLibpython();
    surviveBrokenPipes();
    bool goOn = true;
    if (Py_IsInitialized() == 0) {
        initialise();
        releaseLock();
        flushAtProcessEnd();
        goOn = startSteps.afterOwnStart == nullptr || startSteps.afterOwnStart();
    }
    if (goOn && startSteps.afterAnyStart != nullptr)
        startSteps.afterAnyStart();
}

}  // namespace

void startInterpreter() { interpreterStarted.run(start); }

ling::Any ensureStarted() {
    startInterpreter();
    return Py_IsInitialized() != 0 ? ling::Any() : platform::failure(u"The Python interpreter is not running.");
}

void setStartSteps(const StartSteps& steps) noexcept { startSteps = steps; }

}  // namespace ling::python
