#include "ling/property.h"

#include "ling/byte_array.h"
#include "ling/class_builder.h"
#include "ling/class_record.h"
#include "ling/error.h"
#include "ling/interfaces.h"
#include "model/borrowed_frame.h"
#include "model/canonical_text.h"
#include "model/define.h"

#include <atomic>
#include <cstdio>

namespace ling {

namespace {

class object_value_property final : public internal::object_value_object {
public:
    object_value_property() : object_value_object(Property::getClass().record()) {}

    I_Invokable_Generic getter;
    I_Invokable_Generic setter;
    bool isValue = false;
    bool isIndependent = false;
    Any value;
    String doc;
    Type type;
};

const object_value_property& record(const Any& property) noexcept {
    return *static_cast<const object_value_property*>(property.object());
}

}  // namespace

struct property_access {
    static Property adopt(object_value_property* made) { return Property(Any::adopt(made)); }
};

I_Invokable_Generic Property::getter() const {
    if (!isValue())
        return record(*this).getter;
    return make_function("getter", "", [stored = value()] { return stored; });
}
I_Invokable_Generic Property::setter() const { return record(*this).setter; }
String Property::doc() const { return record(*this).doc; }
Type Property::type() const { return record(*this).type; }
bool Property::isIndependent() const noexcept { return record(*this).isIndependent; }
bool Property::isValue() const noexcept { return record(*this).isValue; }
Any Property::value() const { return record(*this).value; }

Any Property::get(const Any& self) const {
    const Any kept = self;
    return internal::get_property(*object(), kept);
}

Any Property::set(const Any& self, const Any& value) const {
    const Any kept[] = {self, value};
    return internal::set_property(*object(), kept[0], kept[1]);
}

Any internal::get_property(const object_value& property, const Any& self) {
    const auto& own = static_cast<const object_value_property&>(property);
    if (own.isValue)
        return own.value;
    return own.getter.invoke({&self, own.isIndependent ? std::size_t(0) : 1});
}

Any internal::set_property(const object_value& property, const Any& self, const Any& value) {
    const auto& own = static_cast<const object_value_property&>(property);
    if (own.setter.isNone())
        return failure(u"The property is read-only.");
    return own.isIndependent ? own.setter.invoke({&value, 1}) : own.setter.invoke(borrowed_frame(self, {&value, 1}));
}

bool internal::has_setter(const object_value& property) noexcept {
    return !static_cast<const object_value_property&>(property).setter.isNone();
}

Property Property::ofValue(const Any& value, const String& doc) {
    internal::property_builder_base builder;
    builder.assign_getter_value(value);
    builder.assign_doc(doc);
    return builder.build();
}

Result<Property> Property::cast(const Any& value) { return internal::cast_handle<Property>(value); }
const Class_Generic& Property::getClass() {
    static const Class_Generic& cls =
        *new Class_Generic(internal::runtime_made_class("Property", {I_HasDoc::getClass(), I_RuntimeOnly::getClass()}));
    return cls;
}
Type Property::getType() { return Type(getClass()); }

namespace internal {

void property_builder_base::assign_getter(const I_Invokable_Generic& getter) {
    if (!independent_ && getter.parameterCount() > (getter.isIndependent() ? 0 : 1))
        return assertion_log(u"[property_builder::getter] Too many parameters in the getter function.");
    getter_ = getter;
    hasValue_ = false;
}

void property_builder_base::assign_setter(const I_Invokable_Generic& setter) {
    if (!independent_ && setter.parameterCount() > (setter.isIndependent() ? 1 : 2))
        return assertion_log(u"[property_builder::setter] Too many parameters in the setter function.");
    setter_ = setter;
}

void property_builder_base::assign_getter_value(const Any& value) {
    value_ = value;
    hasValue_ = true;
}

void property_builder_base::assign_doc(ByteArray&& utf8) { doc_ = String::fromUTF8(utf8); }

Property property_builder_base::build() const {
    auto* made = new object_value_property;
    made->getter = getter_;
    made->setter = setter_;
    made->isValue = hasValue_;
    made->isIndependent = independent_.value_or(hasValue_ || getter_.isNone() || getter_.isIndependent());
    made->value = value_;
    made->doc = doc_;
    made->type = type_;
    return property_access::adopt(made);
}

namespace {

void writeToStandardError(const String& line) { std::fprintf(stderr, "%s\n", line.toStdString().c_str()); }

std::atomic<void (*)(const String&)> assertionSink{&writeToStandardError};

}  // namespace

void assertion_log(const String& line) { assertionSink.load()(line); }
void set_assertion_log(void (*sink)(const String&)) {
    assertionSink.store(sink == nullptr ? &writeToStandardError : sink);
}

void define_property_members() {
    extend_class(Property::getClass())
        .doc("How a named value is read and, perhaps, written.")
        .property(I_HasDoc::$$doc,
                  property_builder().getter([](const Property& self) { return self.doc(); }).doc("What the value is."))
        .property("getter", property_builder()
                                .getter([](const Property& self) -> Any { return self.getter(); })
                                .doc("The function that reads it."))
        .property("setter", property_builder()
                                .getter([](const Property& self) -> Any { return self.setter(); })
                                .doc("The function that writes it, or none."))
        .property("isIndependent", property_builder()
                                       .getter([](const Property& self) { return self.isIndependent(); })
                                       .doc("Whether reading it needs no receiver."))
        .property(
            "type",
            property_builder().getter([](const Property& self) { return self.type(); }).doc("The type of the value."))
        .build();
    extend_class(Type::getClass())
        .doc("Which values a place accepts.")
        .property(I_HasName::$$name,
                  property_builder().getter([](const Type& self) { return self.toString(); }).doc("The type as text."))
        .method(
            "isMatch", "value", [](const Type& self, const Any& value) { return self.isMatch(value); },
            "Whether the type accepts a value.")
        .method(
            "specializes", "wider", [](const Type& self, const Type& wider) { return self.specializes(wider); },
            "Whether another type accepts all that this one does.")
        .method(Any::$__display__, "", [](const Type& self) { return self.toString(); })
        .method(Any::$__compare__, "other",
                [](const Type& self, const Any& other) -> Any {
                    Result<Type> type = Type::cast(other);
                    if (!type)
                        return type.error();
                    if (self == *type)
                        return 0;
                    // Some fixed order: that of the texts. Different types may read alike; then identity decides.
                    const String a = canonical_text(self);
                    const String b = canonical_text(*type);
                    return a == b ? Any() : Any(a < b ? -1 : 1);
                })
        .method(Any::$__hash__, "",
                [](const Type& self) { return static_cast<std::int64_t>(canonical_text(self).hash()); })
        .build();
    extend_class(TypeVariable::getClass()).doc("A type to be filled in later, by name.").build();
}

}  // namespace internal

}  // namespace ling
