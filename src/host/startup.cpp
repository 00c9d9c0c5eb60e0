#include "host/startup.h"

#include "bridge/loss.h"
#include "functions/module_class.h"
#include "functions/module_tree.h"
#include "host/blocking.h"
#include "host/entry.h"
#include "host/gil_guard.h"
#include "host/interpreter.h"
#include "host/once.h"
#include "host/platform.h"
#include "host/scheme_loader.h"
#include "language/language_python.h"
#include "modules/module_finder.h"
#include "stubs/write_stubs.h"
#include "travel/plain_containers.h"

namespace ling::python {

namespace {

constexpr const char* kDoc =
    "Python is an easy to learn, powerful programming language. It has efficient high-level data structures and a "
    "simple but effective approach to object-oriented programming. Python’s elegant syntax and dynamic typing, "
    "together with its interpreted nature, make it an ideal language for scripting and rapid application development "
    "in many areas on most platforms.";
constexpr const char* kIcon = ":/ling/icons/py.svg";

struct StandardExport {
    const char* lingName;
    const char* pythonName;
};
/// All that is in them, submodules included. None of them is imported before somebody looks into it: that would take
/// the greater part of the start.
constexpr StandardExport kStandardExports[] = {
    {"python.builtins", "builtins"},
    {"python.collections", "collections"},
    {"python.collections.abc", "collections.abc"},
    {"python.datetime", "datetime"},
    {"python.decimal", "decimal"},
    {"python.sys", "sys"},
    {"python.types", "types"},
    {"python.typing", "typing"},
};

const ling::property_ident_untyped $$icon("icon");

constinit Once languageClassBuilt;

/// A module that cannot be exported is missing from the tree, and the start goes on without it.
void exportStandardModule(const StandardExport& row) {
    const ling::Any module = exportModuleLater(row.lingName, row.pythonName);
    if (ling::internal::is_error_result(module))
        reportNotExported(row.pythonName, module);
}

const bool stepsAreSet = (setStartSteps({setUpPythonModule, setUpLanguage}), true);

}  // namespace

bool setUpPythonModule() {
    const GilGuard gil = GilGuard::ifAlive();
    const ling::Result<ling::Module> module = ling::Module::cast(ling::find_or_create_module("python"));
    if (!module)
        return false;
    module->setDoc(kDoc);
    (void)ling::insert_property_value(*module, $$icon, ling::String(kIcon));
    if (gil) {
        for (const StandardExport& row : kStandardExports)
            exportStandardModule(row);
    }
    return true;
}

void setUpLanguage() {
    leaveLockToBlockingCode();
    languageClassBuilt.run(buildLanguageClass);
    registerSchemeProviders();
    registerContainerFunctions();
    registerLossWarning();
    registerStubFunctions();
    watchForInterruptions();
    installModuleFinder();
}

}  // namespace ling::python
