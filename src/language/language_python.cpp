#include "language/language_python.h"

#include "bridge/render.h"
#include "bridge/type_names.h"
#include "functions/import_all.h"
#include "functions/import_log.h"
#include "host/interpreter.h"
#include "host/platform.h"
#include "language/call_forms.h"
#include "language/control.h"
#include "ling/class_builder.h"
#include "ling/interfaces.h"
#include "proxies/python_type.h"

namespace ling::python {

namespace {

constexpr const char* kScriptExample = "ling.python.LanguagePython.evaluateExpression( '[1, 2, 3]' )";

const ling::property_ident_untyped $$importProblems("importProblems");
const ling::property_ident_untyped $$programPath("programPath");

/// The one object of the class; none until the class is there.
ling::Any& languageInstance() {
    static ling::Any& instance = *new ling::Any;
    return instance;
}

ling::Any typeName(const ling::Any& type) {
    if (const ling::Result<ling::Type> asType = ling::Type::cast(type))
        return annotationText(*asType);
    const ling::Result<ling::Class_Generic> cls = ling::Class_Generic::cast(type);
    return cls ? ling::Any(annotationText(ling::Type(*cls))) : cls.error();
}

/// A class of Python arrives as the class that stands for it. Where the runtime has a class of its own for the same
/// thing, that is the answer.
ling::Any fromNativeClass(const ling::Class_Generic& pythonClass) {
    const ling::Class_Generic native = nativeClassOf(pythonClass);
    return native.isNone() ? pythonClass : native;
}

/// The class that stands for the Python class, or none where Python has none. Python's classes know nothing of the
/// types of their items: a `Mapping[str, int]` is a `Mapping`.
ling::Any toNativeClass(const ling::Class_Generic& cls) {
    if (pythonTypeOf(cls) != nullptr)
        return cls;
    const ling::Class_Generic found = pythonClassOf(cls);
    return found.isNone() && !cls.isNone() ? pythonClassOf(cls.parentGeneric()) : found;
}

ling::Any importModules() {
    ling::Any problem = ensureStarted();
    return problem.isNone() ? importAllModules() : problem;
}

void addEvaluation(ling::internal::class_builder& builder) {
    builder.classMethod(ling::I_Language::$evaluate, makeEvaluate("evaluate"))
        .classMethod(ling::I_Language::$evaluateExpression, makeEvaluateExpression("evaluateExpression"))
        .classMethod(ling::I_Language::$evaluateMethod, makeEvaluateMethod("evaluateMethod"))
        .classProperty(ling::I_Language::$$canEvaluate,
                       ling::internal::property_builder().value(true).doc("Python evaluates code."));
}

void addNames(ling::internal::class_builder& builder) {
    builder.classMethod("toCode", "value", &renderPython, "Renders a value as Python source.")
        .classMethod("typeName", "type", &typeName, "Returns the Python name of a type.")
        .classMethod("fromNativeClass", "cls", &fromNativeClass, "Returns the class for a Python class.")
        .classMethod("toNativeClass", "cls", &toNativeClass, "Returns the Python class for a class.")
        .classProperty(ling::I_HasName::$$name,
                       ling::internal::property_builder().value(ling::String("Python")).doc("Name of the language."));
}

void addImporting(ling::internal::class_builder& builder) {
    builder.classMethod("importAllModules", "", &importModules, "Imports all standard python modules.")
        .classProperty($$programPath, ling::internal::property_builder()
                                          .value(programPath())
                                          .doc("A list for hosts: the entries of 'sys.path' that are there for the "
                                               "program they run. 'importAllModules' leaves alone what they lead to."))
        .classProperty($$importProblems, ling::internal::property_builder()
                                             .getter([] { return importProblems(); })
                                             .doc("What 'importAllModules' met so far: for each module that it could "
                                                  "not export the error, and for each that wrote something what it "
                                                  "wrote, by the module's name."));
}

/// There is one: calling the class answers it.
ling::Any theInstance(const ling::Class_Generic& cls, std::span<const ling::Any> arguments) {
    if (arguments.empty())
        return languageInstance();
    return platform::failure(ling::String(u"The class '{}' takes no arguments.").arg(ling::qualname(cls)));
}

void addInstance(ling::internal::class_builder& builder) {
    const auto instance = [] { return languageInstance(); };
    builder.classProperty(ling::I_Language::$$instance,
                          ling::internal::property_builder().getter(instance).doc("The one object of the class."));
}

}  // namespace

void buildLanguageClass() {
    ling::internal::class_builder builder = ling::internal::defclass_impl("LanguagePython", "ling.python");
    builder.parent(ling::I_Language::getClass())
        .doc("Implementation of 'I_Language' interface for Python language.")
        .hooks({.construct = &theInstance})
        .example(ling::lang_name_cpp, "LanguagePython::evaluateExpression( u\"[1, 2, 3]\"_bytea );")
        .example(ling::lang_name_js, kScriptExample)
        .example(ling::lang_name_python, kScriptExample);
    addEvaluation(builder);
    addNames(builder);
    addInstance(builder);
    addImporting(builder);
    addControl(builder);
    languageInstance() = builder.build().allocateInstance();
}

}  // namespace ling::python
