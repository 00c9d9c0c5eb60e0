#pragma once

#include "ling/any.h"
#include "ling/string.h"

#include <string_view>

namespace ling::shell {

/// Writes a line of the shell's own to standard error: "lingsh: {text}".
void tell(std::string_view text);

/// Writes what an error result says to standard error, as it is; its class where it says nothing.
void tellError(const Any& error);

}  // namespace ling::shell
