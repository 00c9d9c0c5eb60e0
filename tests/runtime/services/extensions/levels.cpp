// An extension with handlers of every level, queued in no order; one of them queues two more.

#include "ling/extension.h"
#include "services/extensions/call_log.h"

using ling::InitLevel;
using ling::internal::add_init_handler;

namespace {

const bool isQueued = [] {
    add_init_handler(InitLevel::Functions, [] { logCall("levels: 4"); });
    add_init_handler(InitLevel::Classes, [] { logCall("levels: 1 first"); });
    add_init_handler(InitLevel::Documentation, [] {
        logCall("levels: 3");
        add_init_handler(InitLevel::Functions, [] { logCall("levels: 4 queued late"); });
        add_init_handler(InitLevel::Classes, [] { logCall("levels: 1 queued late"); });
    });
    add_init_handler(InitLevel::Start, [] { logCall("levels: 2"); });
    add_init_handler(InitLevel::Classes, [] { logCall("levels: 1 second"); });
    return true;
}();

}  // namespace

extern "C" __attribute__((visibility("default"))) void quorvanta_extension_init() {
    logCall("levels: entry");
    add_init_handler(InitLevel::Classes, [] { logCall("levels: 1 queued by the entry"); });
}
