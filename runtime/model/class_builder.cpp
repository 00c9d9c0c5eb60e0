#include "ling/class_builder.h"

#include "ling/error.h"
#include "ling/module.h"
#include "model/accessor_names.h"

namespace ling::internal {

namespace {

void claim(const I_Invokable_Generic& method, object_value_class* klass) {
    if (method.is(Kind::Function))
        static_cast<object_value_function*>(method.object())->setDefiningClass(klass);
}

void nameAccessor(const I_Invokable_Generic& accessor, const property_ident_untyped& id) {
    auto* function = dynamic_cast<object_value_native_function*>(accessor.object());
    if (function != nullptr && (function->name() == kGetterName || function->name() == kSetterName))
        function->nameAfter(id.name());
}

}  // namespace

const Property& name_accessors(const Property& property, const property_ident_untyped& id) {
    if (!property.isValue())
        nameAccessor(property.getter(), id);
    nameAccessor(property.setter(), id);
    return property;
}

class_builder::class_builder(std::string_view name, std::string_view module)
    : class_(Class_Generic::adopt(new object_value_class(String(name)))), module_(module) {}

/// A step of a builder that fails is a programming error: it is told and left out.
void class_builder::note(const Any& outcome) {
    if (!is_error_result(outcome))
        return;
    assertion_log(String(u"[class_builder] ") + unchecked<Error>(outcome).message());
    if (error_.isNone())
        error_ = outcome;
}

class_builder& class_builder::parent(const Class_Generic& parent) {
    note(class_.record()->add_parent_unsafe(parent));
    return *this;
}

class_builder& class_builder::doc(std::string_view utf8) {
    class_.record()->set_doc_unsafe(String(utf8));
    return *this;
}

class_builder& class_builder::example(Language language, std::string_view utf8) {
    class_.record()->set_example_unsafe(language, String(utf8));
    return *this;
}

class_builder& class_builder::hooks(const class_hooks& hooks) {
    note(class_.record()->set_hooks_unsafe(hooks));
    return *this;
}

class_builder& class_builder::field(const field_ident_untyped& id, const Type& type, std::string_view doc) {
    note(class_.record()->add_field_unsafe(id, type, String(doc)));
    return *this;
}

class_builder& class_builder::method(const method_ident_untyped& id, const I_Invokable_Generic& method) {
    claim(method, class_.record());
    class_.record()->add_method_unsafe(id, class_.record(), method);
    return *this;
}

class_builder& class_builder::property(const property_ident_untyped& id, const property_builder_base& property) {
    class_.record()->add_property_unsafe(id, class_.record(), name_accessors(property.build(), id));
    return *this;
}

class_builder& class_builder::classMethod(const method_ident_untyped& id, const I_Invokable_Generic& method) {
    claim(method, class_.record());
    class_.record()->add_class_method_unsafe(id, class_.record(), method);
    return *this;
}

class_builder& class_builder::classProperty(const property_ident_untyped& id, const property_builder_base& property) {
    class_.record()->add_class_property_unsafe(id, class_.record(), name_accessors(property.build(), id));
    return *this;
}

Class_Generic class_builder::build() {
    if (class_.parents().empty() && !(class_ == Any::getClass()))
        class_.record()->add_parent_unsafe(Any::getClass());
    if (!module_.isEmpty())
        note(register_class(module_.toStdString(), class_));
    return class_;
}

class_builder extend_class(const Class_Generic& cls) { return class_builder(cls); }

}  // namespace ling::internal
