// An extension two of whose handlers throw; the others must run.

#include "ling/extension.h"
#include "services/extensions/call_log.h"

#include <stdexcept>

using ling::InitLevel;
using ling::internal::add_init_handler;

static const bool isQueued = [] {
    add_init_handler(InitLevel::Classes, [] { throw std::runtime_error("No classes."); });
    add_init_handler(InitLevel::Classes, [] { logCall("throwing_handler: 1"); });
    add_init_handler(InitLevel::Start, [] { throw 5; });
    add_init_handler(InitLevel::Functions, [] { logCall("throwing_handler: 4"); });
    return true;
}();

extern "C" __attribute__((visibility("default"))) void quorvanta_extension_init() {
    logCall("throwing_handler: entry");
}
