#pragma once

/// Marks what the runtime's shared library offers. Everything else is hidden.
#define LING_EXPORT __attribute__((visibility("default")))

/// For a variable of each thread: it lies where it is found without a call. There is little room of that kind for
/// libraries that a process loads late, so it is for a few bytes that are asked for all the time.
#define LING_STATIC_TLS __attribute__((tls_model("initial-exec")))
