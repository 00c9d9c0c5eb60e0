#pragma once

#include "ling/string.h"

#include <span>

namespace ling::python {

/// Source texts around code that is not a module of its own. Pure functions of text: what does not compile is for
/// Python to say.

namespace names {

/// What the text of `wrapMethod` expects in the locals it runs in.
inline constexpr const char* kStoreLocal = "ling_store_local";
inline constexpr const char* kStoreResult = "ling_store_result";
/// What the text of `wrapFunctionBody` defines.
inline constexpr const char* kBodyFunction = "func";

}  // namespace names

/// A module that runs `code` as the body of a function, hands what it returns to `ling_store_result`, and then each of
/// the `variables` to `ling_store_local`. The function assigns to these as globals. Each line of the code is
/// indented by one tab and not changed otherwise, so lines that share an indentation of their own stay a block; the
/// lines in front that declare the globals take that indentation too.
ling::String wrapMethod(const ling::String& code, std::span<const ling::String> variables);

/// A function `func` of any number of positional arguments, `args`, with `body` as its body.
ling::String wrapFunctionBody(const ling::String& body);

}  // namespace ling::python
