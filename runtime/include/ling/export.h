#pragma once

/// Marks what the runtime's shared library offers. Everything else is hidden.
#define LING_EXPORT __attribute__((visibility("default")))
