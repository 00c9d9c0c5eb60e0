#pragma once

#include "ling/function.h"
#include "stubs/annotations.h"

#include <string>
#include <string_view>

namespace ling::python {

/// Whether Python code can spell the name: an identifier, and no keyword. Needs the interpreter lock, as all here.
bool isSpellable(const ling::String& name);

/// The parameters and the result of a function as a stub has them: "(self, count: int = 1) -> str".
///
/// `receiver` stands first when it is not empty. The first parameter of the signature is left out where `isBound`: the
/// receiver fills it. Nothing that works is refused: a function that does not know its signature takes anything, and a
/// parameter whose name cannot be spelt goes by position.
std::string parametersAndResult(const ling::I_Invokable_Generic& function, std::string_view receiver, bool isBound,
                                Annotations& annotations);

/// The parameters alone, in parentheses.
std::string parametersOf(const ling::I_Invokable_Generic& function, std::string_view receiver, bool isBound,
                         Annotations& annotations);

}  // namespace ling::python
