// An extension that does nothing but start.

#include "services/extensions/call_log.h"

extern "C" __attribute__((visibility("default"))) void quorvanta_extension_init() { logCall("plain: entry"); }
