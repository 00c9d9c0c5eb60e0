#include "programs.h"

#include "console.h"
#include "messages.h"

#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/interfaces.h"
#include "ling/module.h"

namespace ling::shell {

namespace {

constexpr const char* kLanguageClass = "ling.python.LanguagePython";
constexpr int kNotEnded = -2;  // The driver's number for an expression that did not end the program.

Any evaluateExpression(const String& code) {
    const Class_Generic language = find_class(kLanguageClass);
    if (language.isNone())
        return internal::failure(String(u"There is no class '{}'.").arg(String(kLanguageClass)));
    return internal::result_unwrap_lazy(language.callMethod(I_Language::$evaluateExpression, {code}));
}

/// An exception that ends programs is not among the errors that cross into the runtime: the driver watches for it.
int runExpression(const String& code, const PythonDriver& driver) {
    const int watching = driver.callForNumber("driver.watch_expression");
    if (watching != 0)
        return watching;
    const Any value = evaluateExpression(code);
    const int ended = driver.callForNumber("driver.expression_ended");
    if (ended != kNotEnded)
        return ended;
    if (!internal::is_error_result(value))
        return driver.callForNumber("driver.show", {{"text", display(value)}});
    (void)driver.callForNumber("driver.flush");
    tellError(value);
    return 1;
}

int runProgram(const char* function, const char* name, const Options& options, const PythonDriver& driver) {
    const Any arguments = bytesForPython(options.arguments);
    if (name == nullptr)
        return driver.callForNumber(function, {{"arguments", arguments}});
    return driver.callForNumber(function, {{name, bytesForPython(options.subject)}, {"arguments", arguments}});
}

}  // namespace

int run(const Options& options, const PythonDriver& driver) {
    switch (options.mode) {
        case Mode::Console:
            return runConsole(driver);
        case Mode::File:
            return runProgram("driver.run_file", "name", options, driver);
        case Mode::StandardInput:
            return runProgram("driver.run_stdin", nullptr, options, driver);
        case Mode::Module:
            return runProgram("driver.run_module", "name", options, driver);
        case Mode::Code:
            return runProgram("driver.run_code", "code", options, driver);
        case Mode::Expression:
            return runExpression(String(options.subject), driver);
    }
    return 1;
}

}  // namespace ling::shell
