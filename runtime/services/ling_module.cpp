#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "ling/list.h"
#include "ling/members.h"
#include "ling/module.h"
#include "ling/native_function.h"
#include "services/define.h"
#include "services/native_classes.h"

namespace ling::internal {

namespace {

constexpr std::string_view kModule = "ling";

constexpr const char* kDoc =
    "The object runtime as its languages see it: the classes of all values, by name, and functions that look into "
    "values, "
    "classes and modules.";

/// A programming error of the runtime's own: two things with one name.
void expectDone(const Any& outcome) {
    if (is_error_result(outcome))
        assertion_log(String(u"[ling] ") + unchecked<Error>(outcome).message());
}

template <class F>
void add(std::string_view name, std::string_view parameters, F&& code, std::string_view doc) {
    expectDone(register_function(kModule, make_function(name, parameters, std::forward<F>(code), doc)));
}

void addValueFunctions() {
    add("class_of", "value", &class_of, "The class of a value. Lazy values and weak references are resolved first.");
    add("qualname", "value", &qualname, "The dotted name of a class or module; for any other value that of its class.");
    add("kind_of", "value", &kind_of,
        "What a value is made of: \"integer\", \"byte_array\", \"object\", ...; \"none\" for none.");
    add("display", "value", &try_display, "The text that shows a value to a person.");
    add("compare_objects", "a, b", &try_compare,
        "The order of two values: negative, zero for equal ones, or positive.");
    add("is_same", "a, b", &is_same, "Whether two values are one and the same object, or equal simple values.");
    add("hash_of", "value", &try_hash, "The hash of a value. Equal values have equal hashes.");
    add("object_id", "value", &object_id, "A number that no other living object has.");
}

void addMemberFunctions() {
    add(
        "bound_method", "value, name",
        [](const Any& value, const String& name) { return value.boundMethod(lookup_name(name).method()); },
        "The method of a value by its name, with the value bound as its first argument.");
    add(
        "property_value", "value, name",
        [](const Any& value, const String& name) { return value.propertyValue(lookup_name(name).property()); },
        "The value of a property by its name.");
    add(
        "set_property_value", "value, name, new",
        [](const Any& value, const String& name, const Any& changed) {
            return value.setPropertyValue(lookup_name(name).property(), changed);
        },
        "Sets a property by its name.");
    add("own_methods_of", "value", &own_methods_of,
        "The names of the methods that a single object carries beyond its class.");
    add("own_properties_of", "value", &own_properties_of,
        "The names of the properties that a single object carries beyond its class.");
}

void addModuleFunctions() {
    add(
        "find_class", "name", [](const String& name) -> Any { return find_class(name); },
        "A class by its dotted name, or none when there is no such class.");
    add(
        "find_module", "name", [](const String& name) -> Any { return find_module(name); },
        "A module by its dotted name, or none when there is no such module.");
    add("modules", "", &modules, "All modules, those above before those below.");
    add("load_resource", "uri", &load_resource, "The bytes behind a URI, fetched by whoever provides for its scheme.");
}

}  // namespace

void name_native_classes() {
    const Module module = unchecked<Module>(find_or_create_module(String(kModule)));
    for (const Class_Generic& cls : native_classes())
        cls.record()->set_module_unsafe(module);
}

void define_ling_module() {
    find_module(String(kModule)).setDoc(kDoc);
    for (const Class_Generic& cls : native_classes())
        expectDone(register_class(kModule, cls));
    addValueFunctions();
    addMemberFunctions();
    addModuleFunctions();
}

}  // namespace ling::internal
