#include "language/registration.h"

#include "language/call_forms.h"
#include "ling/extension.h"
#include "ling/module.h"

namespace ling::python {

namespace {

constexpr const char* kModule = "ling.python";
constexpr const char* kDoc =
    "The Python language: evaluates Python code, imports Python modules, and holds the classes by which Python objects "
    "appear among the values of the runtime.";

using ling::internal::add_init_handler;

const bool handlersAreQueued = [] {
    add_init_handler(ling::InitLevel::Documentation, documentModule);
    add_init_handler(ling::InitLevel::Functions, registerEvaluate);
    add_init_handler(ling::InitLevel::Functions, registerEvaluateExpression);
    add_init_handler(ling::InitLevel::Functions, registerEvaluateMethod);
    return true;
}();

}  // namespace

void documentModule() {
    if (const ling::Result<ling::Module> module = ling::Module::cast(ling::find_or_create_module(kModule)))
        module->setDoc(kDoc);
}

void registerEvaluate() { (void)ling::internal::register_function(kModule, makeEvaluate("evaluate")); }

void registerEvaluateExpression() {
    (void)ling::internal::register_function(kModule, makeEvaluateExpression("evaluate_expr"));
}

void registerEvaluateMethod() {
    (void)ling::internal::register_function(kModule, makeEvaluateMethod("evaluate_method"));
}

}  // namespace ling::python
