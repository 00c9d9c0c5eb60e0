#include "support/host_environment.h"

#include "ling/extension.h"

#include <Python.h>

#include <cstdio>
#include <cstdlib>

extern "C" void quorvanta_extension_init();

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(LING_FUZZING)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

/// Python's own allocator hands out pieces of large blocks: the leak checker finds no lost piece and no pointer kept
/// in one. The isolated interpreter ignores PYTHONMALLOC, so the plain allocator is chosen here, before it starts.
void choosePlainAllocator() {
    PyPreConfig config;
    PyPreConfig_InitIsolatedConfig(&config);
    config.allocator = PYMEM_ALLOCATOR_MALLOC;
    const PyStatus status = Py_PreInitialize(&config);
    if (PyStatus_Exception(status) != 0)
        std::abort();
}

bool bringUp() {
    if (kSanitized)
        choosePlainAllocator();
    quorvanta_extension_init();
    const std::vector<ling::String> problems = ling::run_init_handlers();
    for (const ling::String& problem : problems)
        std::fprintf(stderr, "%s\n", problem.toStdString().c_str());
    if (!problems.empty() || Py_IsInitialized() == 0)
        std::abort();
    return true;
}

}  // namespace

void startHost() {
    // The first caller is the process's main thread, before any test: nobody waits here with the interpreter lock.
    [[maybe_unused]] static const bool up = bringUp();
}
