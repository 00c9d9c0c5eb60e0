#include "ling/module.h"

#include "ling/class_builder.h"
#include "ling/error.h"
#include "ling/interfaces.h"
#include "ling/list.h"
#include "services/define.h"
#include "services/module_tree.h"

namespace ling {

using internal::object_value_module;

namespace {

object_value_module& record(const Any& module) noexcept { return static_cast<object_value_module&>(*module.object()); }

}  // namespace

const property_ident_untyped Module::$$bindMembers("bindMembers");

String Module::name() const { return record(*this).name(); }
String Module::doc() const { return record(*this).doc(); }
void Module::setDoc(const String& doc) const { record(*this).setDoc(doc); }
std::vector<Class_Generic> Module::classes() const { return record(*this).classes(); }
std::vector<object_value_module::function_entry> Module::functions() const { return record(*this).functions(); }

Result<Module> Module::cast(const Any& value) { return internal::cast_handle<Module>(value); }
const Class_Generic& Module::getClass() {
    static const Class_Generic& cls = *new Class_Generic(
        internal::native_class("Module", {I_HasName::getClass(), I_HasDoc::getClass(), I_RuntimeOnly::getClass()}));
    return cls;
}
Type Module::getType() { return Type(getClass()); }

namespace internal {

object_value_module::object_value_module(object_value_class* klass, const String& name)
    : object_value_object(klass), name_(name) {}

String object_value_module::doc() const {
    std::lock_guard hold(members_);
    return doc_;
}

void object_value_module::setDoc(const String& doc) {
    String text = doc;
    std::lock_guard hold(members_);
    doc_.swap(text);
    // The old text dies after the guard: it is declared before it.
}

std::vector<Class_Generic> object_value_module::classes() const {
    std::lock_guard hold(members_);
    return classes_;
}

std::vector<object_value_module::function_entry> object_value_module::functions() const {
    std::lock_guard hold(members_);
    return functions_;
}

void object_value_module::addClass(const Class_Generic& cls) {
    std::lock_guard hold(members_);
    classes_.push_back(cls);
    cls.record()->pin();  // What is listed once stays listed, as long as the module does.
}

void object_value_module::addFunction(const FunctionCL_Generic& function) {
    const method_ident_untyped id(function.name());
    std::lock_guard hold(members_);
    functions_.push_back({id, function});
    function.record()->pin();
}

namespace {

object_value* allocateModule(object_value_class* klass) { return new object_value_module(klass, String()); }

/// A module that is called into being is not in the tree: whoever made it registers it.
Any constructModule(const Class_Generic& cls, std::span<const Any> arguments) {
    if (arguments.size() != 1)
        return failure(String(u"The class '{}' takes the name of the module.").arg(qualname(cls)));
    Result<String> name = String::cast(arguments[0]);
    return name ? Any::adopt(new object_value_module(cls.record(), *name)) : name.error();
}

List_Generic functionsOf(const Module& module) {
    List_Generic functions;
    for (const object_value_module::function_entry& entry : module.functions())
        functions.append(entry.member);
    return functions;
}

List_Generic classesOf(const Module& module) {
    const std::vector<Class_Generic> classes = module.classes();
    return List_Generic(std::vector<Any>(classes.begin(), classes.end()));
}

}  // namespace

void define_module_members() {
    extend_class(Module::getClass())
        .doc("A named collection of classes, functions, properties and other modules.")
        .hooks({.allocate = &allocateModule, .construct = &constructModule})
        .property(
            I_HasName::$$name,
            property_builder().getter([](const Module& self) { return self.name(); }).doc("The whole dotted name."))
        .property(I_HasDoc::$$doc, property_builder()
                                       .getter([](const Module& self) { return self.doc(); })
                                       .setter([](const Module& self, const String& doc) { self.setDoc(doc); })
                                       .doc("What the module is for."))
        .property("classes",
                  property_builder().getter(&classesOf).doc("The classes registered in it, in order of registration."))
        .property(
            "functions",
            property_builder().getter(&functionsOf).doc("The functions registered in it, in order of registration."))
        .property(Module::$$bindMembers,
                  property_builder()
                      .getter([](const Module& self) { return record(self).bindsMembers(); })
                      .setter([](const Module& self, bool binds) {
                          record(self).setBindsMembers(binds);
                          note_binding(self);
                      })
                      .doc("Whether a language also binds the module's classes and functions by bare name where it "
                           "evaluates code."))
        .build();
}

}  // namespace internal

}  // namespace ling
