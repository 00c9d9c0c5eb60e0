#include "console.h"

#include "completion.h"
#include "shell_driver.h"

#include "ling/list.h"
#include "ling/native_function.h"

namespace ling::shell {

namespace {

constexpr const char* kGreeting =
    "lingsh " LING_VERSION
    ", Python {}\nType \"help\", \"copyright\", \"credits\" or \"license\" for more information.";

Any listMemberNames(const String& path) {
    const List_Generic names;
    for (const String& name : memberNames(path))
        (void)names.append(name);
    return names;
}

String greetingOf(const PythonDriver& driver) {
    return String(kGreeting).arg(driver.callForText("driver.python_version"));
}

}  // namespace

int runConsole(const PythonDriver& driver, Greeting greeting) {
    if (!driver.load("console", kConsoleSource))
        return 1;
    const String banner = greeting == Greeting::Yes ? greetingOf(driver) : String();
    return driver.callForNumber(
        "console.run", {{"banner", banner}, {"member_names", make_function("member_names", "path", listMemberNames)}});
}

}  // namespace ling::shell
