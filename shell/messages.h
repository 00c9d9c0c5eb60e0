#pragma once

#include "ling/any.h"
#include "ling/string.h"

#include <string_view>

namespace ling::shell {

/// Writes a line of the shell's own to standard error: "lingsh: {text}".
void tell(std::string_view text);

/// Writes to standard error what there is to say of an error result: the traceback of the exception that it came from,
/// else its message, with its class in front where it has one of its own.
void tellError(const Any& error);

}  // namespace ling::shell
