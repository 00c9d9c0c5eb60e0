#include "programs.h"

#include "console.h"
#include "messages.h"

#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/interfaces.h"
#include "ling/module.h"

#include <unistd.h>

namespace ling::shell {

namespace {

constexpr const char* kLanguageClass = "ling.python.LanguagePython";
constexpr const char* kStubFunction = "ling.python.write_stubs";
constexpr int kNotEnded = -2;  // The driver's number for an expression that did not end the program.

Any evaluateExpression(const String& code) {
    const Class_Generic language = find_class(kLanguageClass);
    if (language.isNone())
        return internal::failure(String(u"There is no class '{}'.").arg(String(kLanguageClass)));
    return internal::result_unwrap_lazy(language.callMethod(I_Language::$evaluateExpression, {code}));
}

/// An exception that ends programs crosses into the runtime without what it carries: the driver watches for it.
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
    return driver.callForNumber(function, {{name, bytesForPython(options.subject)}, {"arguments", arguments}});
}

int writeStubs(const String& folder) {
    const Any written = find_function(kStubFunction)(folder);
    if (!internal::is_error_result(written))
        return 0;
    tellError(written);
    return 1;
}

int configure(const InterpreterOptions& options, const PythonDriver& driver) {
    return driver.callForNumber("driver.configure", {{"warning_filters", bytesForPython(options.warnings)},
                                                     {"extras", bytesForPython(options.extras)},
                                                     {"unbuffered", options.unbuffered}});
}

/// Standard input that is no terminal is a program, unless a console is asked for.
int runInput(const Options& options, const PythonDriver& driver) {
    if (options.interactive || isatty(STDIN_FILENO) != 0)
        return runConsole(driver, options.quiet ? Greeting::No : Greeting::Yes);
    return runProgram("driver.run_stdin", "name", options, driver);
}

int runMode(const Options& options, const PythonDriver& driver) {
    switch (options.mode) {
        case Mode::Console:
            return runInput(options, driver);
        case Mode::PythonVersion:
            return driver.callForNumber("driver.show",
                                        {{"text", "Python " + driver.callForText("driver.python_version")}});
        case Mode::File:
            return runProgram("driver.run_file", "name", options, driver);
        case Mode::StandardInput:
            return runProgram("driver.run_stdin", "name", options, driver);
        case Mode::Module:
            return runProgram("driver.run_module", "name", options, driver);
        case Mode::Code:
            return runProgram("driver.run_code", "code", options, driver);
        case Mode::Expression:
            return runExpression(String(options.subject), driver);
        case Mode::Stubs:
            return writeStubs(String(options.subject));
    }
    return 1;
}

}  // namespace

int run(const Options& options, const PythonDriver& driver) {
    if (options.interpreter.areGiven()) {
        if (const int status = configure(options.interpreter, driver); status != 0)
            return status;
    }
    if (!options.interactive || options.mode == Mode::Console)
        return runMode(options, driver);
    (void)driver.callForNumber("driver.expect_console");
    (void)runMode(options, driver);
    return runConsole(driver, Greeting::No);
}

}  // namespace ling::shell
