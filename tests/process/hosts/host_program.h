#pragma once

#include "ling/class.h"
#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "ling/function.h"
#include "ling/hash_containers.h"
#include "ling/list.h"
#include "ling/members.h"
#include "ling/module.h"
#include "ling/string.h"

#include <dlfcn.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

/// What the small host programs share. They know the runtime alone, load the plug-in as any host does, and print what
/// they see, one line each, for the test that runs them.
namespace host_program {

inline void show(const ling::String& text) { std::printf("%s\n", text.toStdString().c_str()); }

[[noreturn]] inline void fail(const std::string& text) {
    std::fprintf(stderr, "%s\n", text.c_str());
    std::exit(1);
}

/// Loads the extensions of a directory as a host does. Ends the process when one cannot be used.
inline void loadExtensions(const std::filesystem::path& directory) {
    bool loaded = false;
    for (const ling::ExtensionReport& report : ling::load_extensions(directory)) {
        if (!report.problem.isEmpty())
            fail(report.file.string() + ": " + report.problem.toStdString());
        loaded = true;
    }
    for (const ling::String& problem : ling::run_init_handlers())
        fail(problem.toStdString());
    if (!loaded)
        fail("nothing to load in " + directory.string());
}

/// Calls a function of the module "ling.python".
template <class... Arguments>
ling::Any call(std::string_view name, const Arguments&... arguments) {
    const ling::Any function = ling::find_module("ling.python").propertyValue(ling::property_ident_untyped(name));
    const auto callable = ling::I_Invokable_Generic::cast(function);
    if (!callable)
        fail("ling.python has no function " + std::string(name));
    return (*callable)(arguments...);
}

inline ling::Any evaluate(std::string_view expression) {
    return call("evaluate_expr", ling::String(expression), ling::Map_Generic(), ling::Map_Generic());
}

/// Evaluates and prints: the display text, or "error: " and the message.
inline void showValue(const ling::Any& value) {
    if (!ling::internal::is_error_result(value))
        return show(ling::display(value));
    const auto error = ling::Error::cast(value);
    show(ling::String("error: ") + (error ? error->message() : ling::String()));
}

}  // namespace host_program
