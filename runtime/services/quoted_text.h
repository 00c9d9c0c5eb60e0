#pragma once

#include "ling/string.h"

#include <string_view>

namespace ling::internal {

/// Appends `text` in single quotes, as it shows inside a container. Quotes, backslashes, control characters and lone
/// surrogates come out as escapes ("\'", "\\", "\n", "\x00", "\ud800"), so that two different texts never look alike.
void append_quoted(string_builder& out, std::u16string_view text);

}  // namespace ling::internal
