#pragma once

#include "ling/any.h"

#include <string>

/// A value in one line, for tables of expectations: its kind, and what it holds where that is plain ("integer 3",
/// "string 'abc'", "error: text"). Objects show the name of their class, classes "class" and their name.
std::string describe(const ling::Any& value);

/// The pending Python exception as "TypeError: text", taken away, or "". Needs the interpreter lock.
std::string takePending();
