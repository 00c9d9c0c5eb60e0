#pragma once

#include "lingobject/instance.h"

namespace ling::python {

/// Memory for a wrapper around an instance of a class, with Python's header and the facts in it. Null with the Python
/// error set when there is none. Needs the interpreter lock, as does all here.
///
/// Wrappers come and go with nearly every operation, so a few blocks that were given back are kept for the next ones.
/// Checkers of memory and of threads see each block given back.
WrapperBlock* newWrapper(const ClassFacts& facts);
/// Gives it back. Nothing else is left in it.
void freeWrapper(WrapperBlock* block) noexcept;

}  // namespace ling::python
