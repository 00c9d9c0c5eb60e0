#include "python_driver.h"

#include "host.h"
#include "messages.h"
#include "shell_driver.h"

#include "ling/byte_array.h"
#include "ling/error.h"
#include "ling/hash_containers.h"
#include "ling/list.h"
#include "ling/module.h"

namespace ling::shell {

namespace {

constexpr const char* kLanguageModule = "ling.python";

/// Makes the driver a module and gives it the names that the host put into this evaluation: all but our own. Where the
/// interpreter is the one that the driver was compiled for, that need not be done again.
constexpr const char* kInstallation = R"python(
import sys
driver = sys.modules["_lingsh_driver"] = type(sys)("_lingsh_driver")
from _frozen_importlib_external import MAGIC_NUMBER
if shell_code.startswith(MAGIC_NUMBER):
    import marshal
    code = marshal.loads(shell_code[len(MAGIC_NUMBER):])
else:
    code = compile(shell_source, "<lingsh driver>", "exec")
exec(code, vars(driver))
names = {name: value for name, value in globals().items() if not name.startswith(("shell_", "__")) and name != "self"}
driver.install(names, shell_executable, shell_arguments)
return 0
)python";

I_Invokable_Generic findFunction(const Module& module, std::string_view name) {
    for (const auto& declared : module.functions()) {
        if (declared.id.utf8() == name)
            return declared.member;
    }
    return {};
}

/// By its text: to the host an interruption is an error like any other.
bool wasInterrupted(const Any& answer) {
    const Result<Error> error = Error::cast(answer);
    return error && error->message() == u"The call was interrupted.";
}

String requestFor(std::string_view function, PythonDriver::Arguments arguments) {
    const std::size_t dot = function.find('.');
    const std::string part = "_lingsh_" + std::string(function.substr(0, dot));
    std::string code = "import " + part + "\nreturn " + part + std::string(function.substr(dot)) + "(";
    for (const auto& [name, value] : arguments)
        code += std::string(name) + "=" + name + ",";
    return String(code + ")");
}

}  // namespace

Any bytesForPython(std::string_view bytes) { return ByteArray(bytes); }

Any bytesForPython(const std::vector<std::string>& list) {
    std::vector<Any> items;
    for (const std::string& bytes : list)
        items.push_back(bytesForPython(bytes));
    return Tuple_Generic(std::move(items));
}

std::optional<PythonDriver> PythonDriver::start(const std::vector<std::string>& commandLine) {
    const Module module = find_module(kLanguageModule);
    I_Invokable_Generic evaluate = module.isNone() ? I_Invokable_Generic() : findFunction(module, "evaluate");
    if (evaluate.isNone()) {
        tell("no extension offers Python: there is no module 'ling.python' with a function 'evaluate'");
        return std::nullopt;
    }
    PythonDriver driver(std::move(evaluate));
    const Any installed =
        driver.evaluate(kInstallation, {{"shell_source", String(kDriverSource)},
                                        {"shell_code", bytesForPython(kDriverCodeSource)},
                                        {"shell_executable", bytesForPython(ownExecutable().string())},
                                        {"shell_arguments", bytesForPython(commandLine)}});
    if (installed.is(Kind::Integer))
        return driver;
    if (internal::is_error_result(installed)) {
        tell("Python cannot be used:");
        tellError(installed);
    }
    return std::nullopt;
}

bool PythonDriver::load(std::string_view name, std::string_view source) const {
    return callForNumber("driver.load", {{"name", String(name)}, {"source", String(source)}}) == 0;
}

int PythonDriver::callForNumber(std::string_view function, Arguments arguments) const {
    const Any answer = call(function, arguments);
    if (answer.is(Kind::Integer))
        return static_cast<int>(answer.asInteger());
    if (!internal::is_error_result(answer) || wasInterrupted(answer))
        return kInterrupted;
    tellError(answer);
    return 1;
}

String PythonDriver::callForText(std::string_view function, Arguments arguments) const {
    return String::cast(call(function, arguments)).valueOr(String());
}

Any PythonDriver::evaluate(const String& code, Arguments variables) const {
    const Map_Generic globals;
    for (const auto& [name, value] : variables)
        (void)globals.set(String(name), value);
    return internal::result_unwrap_lazy(evaluate_(code, Map_Generic(), globals));
}

Any PythonDriver::call(std::string_view function, Arguments arguments) const {
    return evaluate(requestFor(function, arguments), arguments);
}

}  // namespace ling::shell
