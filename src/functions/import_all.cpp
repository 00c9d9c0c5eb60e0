#include "functions/import_all.h"

#include "functions/import_log.h"
#include "functions/module_tree.h"
#include "host/entry.h"
#include "host/platform.h"
#include "language/evaluate.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace ling::python {

namespace {

constexpr const char* kAllModules = "import pkgutil\nreturn list(pkgutil.iter_modules())";
/// The same without what an import would take from one of the paths in `program`.
constexpr const char* kModulesOfOthers =
    "import pkgutil\nown = [pkgutil.get_importer(path) for path in program]\n"
    "return [each for each in pkgutil.iter_modules() if each.module_finder not in own]";

/// What is not imported for its own sake. Every other module of CPython 3.13 was looked at: importing it starts no
/// thread or process, opens nothing, and changes no signal handler, stream, path or hook. The one exception is
/// `rlcompleter`, which loads `readline` and completes its lines from then on; `pdb` imports it in any case.
constexpr std::u16string_view kNeverImported[] = {
    u"builtins",     // There already, with all that is in it.
    u"sys",          // The same.
    u"this",         // Prints a poem.
    u"antigravity",  // Opens a browser.
    u"idlelib",      // An editor with windows; `idlelib.idle` opens them on import.
    u"turtledemo",   // Demonstrations that draw in a window: programs to look at, no library.
    u"test",         // The interpreter's own test suite. It takes minutes and acts on import.
    u"tests",        // The test suite of a package that installs it as a module of its own by mistake.
    // Set-up of one machine or user, run by a start that is not isolated.
    u"sitecustomize",
    u"usercustomize",
};

bool isLibrary(const ling::String& name) {
    return std::find(std::begin(kNeverImported), std::end(kNeverImported), name.view()) == std::end(kNeverImported);
}

ling::Any listModules() {
    if (programPath().size() == 0)
        return evaluateMethod(ling::Any(), kAllModules, platform::makeMap(), platform::makeMap(), platform::makeMap());
    const ling::Map_Generic globals = platform::makeMap({{ling::String("program"), programPath()}});
    return evaluateMethod(ling::Any(), kModulesOfOthers, platform::makeMap(), globals, platform::makeMap());
}

/// Under the lock that its caller took.
ling::Any walk() {
    const ling::Any root = ling::find_or_create_module("python");
    if (ling::internal::is_error_result(root))
        return root;
    const ling::Any listing = listModules();
    if (ling::internal::is_error_result(listing))
        return listing;
    const ImportLog log;
    for (const ling::String& name : publicNamesIn(listing)) {
        if (isLibrary(name))
            (void)exportModule(joinedName("python", name), name, kOneOfAllModules);
    }
    return {};
}

}  // namespace

const ling::List_Generic& programPath() {
    static const ling::List_Generic& path = *new ling::List_Generic(ling::List_Generic::empty());
    return path;
}

ling::Any importAllModules() {
    static constinit bool isUnderWay = false;  // Under the interpreter lock.
    PythonEntry entry;
    if (isUnderWay)
        return {};
    isUnderWay = true;
    ling::Any outcome = platform::contain(walk);
    isUnderWay = false;
    return outcome;
}

}  // namespace ling::python
