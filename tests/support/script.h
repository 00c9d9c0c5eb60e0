#pragma once

#include <ostream>
#include <string>

/// Runs Python code as `ling` code does, with the host's modules by name, and answers what it returns as text; an
/// exception that it raises as "TypeName: text". `probe`, a helper of the scripts, shows the outcome of one call:
///
///     probe(function, *arguments)   -> repr of the result, or "TypeName: text" of what it raised
///
/// and `call(value, method, *arguments)` calls a method of `value` as `ling` code calls it.
std::string script(const std::string& code);

/// One row of a table of outcomes.
struct ScriptRow {
    const char* name;
    const char* code;  ///< An expression, shown as `probe` shows it, or statements that return.
    const char* expected;

    friend void PrintTo(const ScriptRow& row, std::ostream* out) { *out << row.name; }
};

/// What comes of the row's code after the statements of `before`.
std::string outcome(const std::string& before, const ScriptRow& row);
