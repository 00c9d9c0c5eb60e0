// A library with a handler but without an entry function: it must be skipped, the handler included.

#include "ling/extension.h"
#include "services/extensions/call_log.h"

static const bool isQueued = [] {
    ling::internal::add_init_handler(ling::InitLevel::Classes, [] { logCall("no_entry: handler"); });
    return true;
}();
