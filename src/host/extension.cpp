#include "ling/extension.h"
#include "host/interpreter.h"
#include "host/module_functions.h"
#include "host/search_paths.h"

/// The plug-in as the host sees it: one entry function, and what its static initialisers queue. The class units queue
/// the definition of their classes themselves, at the level before the start, and so do the functions and the
/// documentation of the language room.

namespace ling::python {

namespace {

using ling::internal::add_init_handler;

// The start is queued twice, and happens once.
const bool handlersAreQueued = [] {
    add_init_handler(ling::InitLevel::Start, startInterpreter);
    add_init_handler(ling::InitLevel::Start, startInterpreter);
    add_init_handler(ling::InitLevel::Functions, registerAddSysPath);
    add_init_handler(ling::InitLevel::Functions, registerImport);
    return true;
}();

}  // namespace

}  // namespace ling::python

/// Called by the host, once, right after it has loaded the library and before it runs the queued handlers. Queues the
/// search paths for the start. A file-system error goes on to the host.
extern "C" __attribute__((visibility("default"))) void quorvanta_extension_init() { ling::python::addOwnSearchPaths(); }
