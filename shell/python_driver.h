#pragma once

#include "ling/any.h"
#include "ling/function.h"
#include "ling/string.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ling::shell {

/// Bytes of the command line, for Python, which decodes them without loss.
Any bytesForPython(std::string_view bytes);
Any bytesForPython(const std::vector<std::string>& list);

/// The Python side of the shell, reached as any host reaches Python: by evaluating code through the module
/// "ling.python".
///
/// A request is an evaluation of its own, which calls one function. The functions answer numbers and texts. A request
/// that was cut short by Ctrl-C before its function could take note answers nothing; each method says what it makes
/// of that.
class PythonDriver {
public:
    using Arguments = std::initializer_list<std::pair<const char*, Any>>;

    /// Finds the language and installs the Python side. Nothing, with the reason on standard error, when there is no
    /// Python.
    static std::optional<PythonDriver> start(const std::vector<std::string>& commandLine);

    /// Makes another of the shell's sources a part of the Python side, under a name.
    bool load(std::string_view name, std::string_view source) const;

    /// Calls `function`, "part.name", with arguments by name. A number; `kInterrupted` for a request that was cut
    /// short; 1, with a message on standard error, for one that failed.
    int callForNumber(std::string_view function, Arguments arguments = {}) const;
    /// The same for a text, which is empty for a request that was cut short or failed.
    String callForText(std::string_view function, Arguments arguments = {}) const;

    /// Ends what runs in Python, with the status that the process is to end with. Answers the final one.
    int finish(int status) const { return callForNumber("driver.finish", {{"status", status}}); }

    static constexpr int kInterrupted = -1;

private:
    explicit PythonDriver(I_Invokable_Generic evaluate) : evaluate_(std::move(evaluate)) {}

    Any evaluate(const String& code, Arguments variables) const;
    Any call(std::string_view function, Arguments arguments) const;

    I_Invokable_Generic evaluate_;  ///< The function "evaluate" of the language's module.
};

}  // namespace ling::shell
