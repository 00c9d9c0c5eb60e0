#pragma once

#include "ling/extension.h"

namespace ling::internal {

using queued_handler = std::pair<InitLevel, init_handler>;

/// The text of the exception that is being handled. For use inside a `catch` alone.
String describe_exception();

}  // namespace ling::internal
