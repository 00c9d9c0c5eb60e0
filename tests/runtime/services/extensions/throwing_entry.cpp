// An extension whose entry function throws: it must be skipped, its handler included.

#include "ling/extension.h"
#include "services/extensions/call_log.h"

#include <stdexcept>

static const bool isQueued = [] {
    ling::internal::add_init_handler(ling::InitLevel::Classes, [] { logCall("throwing_entry: handler"); });
    return true;
}();

extern "C" __attribute__((visibility("default"))) void quorvanta_extension_init() {
    logCall("throwing_entry: entry");
    throw std::runtime_error("No site packages.");
}
