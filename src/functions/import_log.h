#pragma once

#include "functions/caught_output.h"
#include "ling/hash_containers.h"
#include "ling/string.h"

namespace ling::python {

/// What becomes of the modules that `importAllModules` imports: it keeps what they write from the standard output and
/// remembers, for the process, what was wrong with which. Everything here needs the interpreter lock.
class ImportLog {
public:
    ImportLog() { current_ = this; }
    ~ImportLog() { current_ = nullptr; }
    ImportLog(const ImportLog&) = delete;
    ImportLog& operator=(const ImportLog&) = delete;

    /// The log of the walk that is under way, or null.
    static ImportLog* current() noexcept { return current_; }

    /// The module is not exported, for this reason.
    void failed(const ling::String& pythonName, const ling::String& reason);
    /// The module is exported after all. What it wrote while it was imported is remembered instead of a reason.
    void exported(const ling::String& pythonName);

private:
    static inline ImportLog* current_ = nullptr;
    CaughtOutput output_;
};

/// The text of the pending Python exception with the name of its class in front, as Python ends a traceback:
/// "ImportError: no display". The exception stays pending. Empty when there is none.
ling::String pendingExceptionText();

/// What walks remembered so far: a new map from the name of the Python module to the reason, in the order in which they
/// were met. Takes the interpreter lock itself.
ling::Map_Generic importProblems();

}  // namespace ling::python
