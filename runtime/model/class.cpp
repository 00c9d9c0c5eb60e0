#include "ling/class.h"

#include "ling/basic_values.h"
#include "ling/byte_array.h"
#include "ling/class_builder.h"
#include "ling/error.h"
#include "ling/hash_containers.h"
#include "ling/indirect_values.h"
#include "ling/interfaces.h"
#include "ling/list.h"
#include "ling/module.h"
#include "model/class_tables.h"
#include "model/define.h"

#include <array>
#include <unordered_set>

namespace ling {

using internal::class_declarations;
using internal::object_value_class;
using internal::read_declarations;

internal::object_value_class* Class_Generic::record() const noexcept {
    return static_cast<object_value_class*>(object());
}

Class_Generic Class_Generic::share(object_value_class* record) { return Class_Generic(Any::share(record)); }
Class_Generic Class_Generic::adopt(object_value_class* record) { return Class_Generic(Any::adopt(record)); }

String Class_Generic::name() const { return record()->name(); }
String Class_Generic::doc() const {
    (void)record()->ensureMembers();
    return read_declarations(*record(), [](const class_declarations& own) { return own.doc; });
}
String Class_Generic::example(Language language) const {
    const auto position = static_cast<std::size_t>(language);
    return read_declarations(*record(), [position](const class_declarations& own) { return own.examples[position]; });
}
std::vector<Class_Generic> Class_Generic::parents() const {
    return read_declarations(*record(), [](const class_declarations& own) { return own.parents; });
}

std::vector<Class_Generic> Class_Generic::ancestry() const {
    std::vector<Class_Generic> all;
    for (object_value_class* ancestor : record()->ancestry())
        all.push_back(share(ancestor));
    return all;
}

bool Class_Generic::isAncestor(const Class_Generic& ancestor) const noexcept {
    return record()->isAncestor(ancestor.record());
}

Class_Generic Class_Generic::parentGeneric() const { return record()->generic(); }
std::vector<Type> Class_Generic::parameters() const { return record()->parameters(); }
Module Class_Generic::parentModule() const {
    return read_declarations(*record(), [](const class_declarations& own) { return own.module; });
}

namespace {

Any allocate(object_value_class* record) {
    if (record->isInterface())
        return internal::failure(
            String(u"The interface '{}' has no instances of its own.").arg(qualname(Class_Generic::share(record))));
    return Any::adopt(record->hooks().allocate(record));
}

Any makeInstance(const Class_Generic& cls, std::span<const Any> arguments) {
    object_value_class* const record = cls.record();
    if (auto construct = record->hooks().construct)
        return construct(cls, arguments);
    Any instance = allocate(record);
    if (internal::is_error_result(instance))
        return instance;
    if (const internal::found_member& initialiser = record->findMethod(Any::$__init__)) {
        Any outcome = internal::initialise(instance, initialiser, arguments);
        return internal::is_error_result(outcome) ? outcome : instance;
    }
    if (!arguments.empty())
        return internal::failure(String(u"The class '{}' takes no arguments.").arg(qualname(cls)));
    return instance;
}

}  // namespace

Any Class_Generic::allocateInstance() const {
    return internal::contain([&] { return allocate(record()); });
}

Any Class_Generic::construct(std::span<const Any> arguments) const {
    return internal::contain([&] { return makeInstance(*this, arguments); });
}

namespace {

template <class Identifier, class Member>
std::vector<Declared<Identifier, Member>> listMembers(
    const object_value_class* record, Inherited inherited,
    internal::declared_members<Identifier> class_declarations::*list) {
    std::vector<Declared<Identifier, Member>> all;
    std::unordered_set<const internal::identifier_data*> listed;
    for (const object_value_class* declarer : record->ancestry()) {
        (void)declarer->ensureMembers();
        for (const auto& declared :
             read_declarations(*declarer, [list](const class_declarations& own) { return (own.*list).all(); }))
            if (listed.insert(declared.id.data()).second)
                all.push_back({declared.id, unchecked<Member>(declared.member)});
        if (inherited == Inherited::No)
            break;
    }
    return all;
}

}  // namespace

std::vector<Declared<method_ident_untyped, I_Invokable_Generic>> Class_Generic::methods(Inherited inherited) const {
    return listMembers<method_ident_untyped, I_Invokable_Generic>(record(), inherited, &class_declarations::methods);
}
std::vector<Declared<property_ident_untyped, Property>> Class_Generic::properties(Inherited inherited) const {
    return listMembers<property_ident_untyped, Property>(record(), inherited, &class_declarations::properties);
}
std::vector<Declared<method_ident_untyped, I_Invokable_Generic>> Class_Generic::classMethods(
    Inherited inherited) const {
    return listMembers<method_ident_untyped, I_Invokable_Generic>(record(), inherited,
                                                                  &class_declarations::classMethods);
}
std::vector<Declared<property_ident_untyped, Property>> Class_Generic::classProperties(Inherited inherited) const {
    return listMembers<property_ident_untyped, Property>(record(), inherited, &class_declarations::classProperties);
}

std::vector<Declared<field_ident_untyped, Field>> Class_Generic::fields(Inherited inherited) const {
    std::vector<Declared<field_ident_untyped, Field>> all;
    if (inherited == Inherited::No) {
        for (const internal::declared_field& field :
             read_declarations(*record(), [](const class_declarations& own) { return own.fields; }))
            all.push_back({field.id, field.field});
        return all;
    }
    // Places are never taken back, so what the count says is there whatever changes meanwhile.
    for (std::size_t i = 0, count = record()->fieldCount(); i < count; ++i)
        all.push_back({record()->fieldIdentifier(i), *record()->fieldAt(i)});
    return all;
}

Property Class_Generic::definedProperty(const property_ident_untyped& id) const {
    return unchecked<Property>(Any::share(record()->findProperty(id).member));
}

const Field* Class_Generic::definedField(const field_ident_untyped& id) const {
    const std::int64_t position = record()->findField(id);
    return position < 0 ? nullptr : record()->fieldAt(static_cast<std::size_t>(position));
}

Result<Class_Generic> Class_Generic::cast(const Any& value) {
    // A class is the one object without a class of its own.
    if (value.is(Kind::Object) && value.object()->ownClass() == nullptr)
        return unchecked<Class_Generic>(value);
    return Result<Class_Generic>::failure(internal::cast_error(value, getClass()));
}

const Class_Generic& Class_Generic::getClass() {
    static const Class_Generic& cls =
        *new Class_Generic(internal::runtime_made_class("Class", {I_Invokable_Generic::getClass()}));
    return cls;
}

Type Class_Generic::getType() { return Type(getClass()); }

const Class_Generic& Any::getClass() { return internal::rootClass(); }

namespace {

/// The native class of each kind, by the kind's number.
const std::array<object_value_class*, 16>& nativeClasses() {
    static const std::array<object_value_class*, 16> classes{Boolean::getClass().record(),
                                                             ByteArray::getClass().record(),
                                                             Float::getClass().record(),
                                                             FunctionCL_Generic::getClass().record(),
                                                             Map_Generic::getClass().record(),
                                                             Set_Generic::getClass().record(),
                                                             Integer::getClass().record(),
                                                             List_Generic::getClass().record(),
                                                             Class_Generic::getClass().record(),
                                                             String::getClass().record(),
                                                             Tuple_Generic::getClass().record(),
                                                             Boxed_Generic::getClass().record(),
                                                             External_Generic::getClass().record(),
                                                             Lazy_Generic::getClass().record(),
                                                             Weak_Generic::getClass().record(),
                                                             Undefined::getClass().record()};
    return classes;
}

}  // namespace

object_value_class* internal::native_class_record(const Any& value) noexcept {
    if (value.isNone())
        return None::getClass().record();
    return nativeClasses()[static_cast<std::size_t>(value.kind())];
}

Class_Generic raw_class_of(const Any& value) { return Class_Generic::share(raw_class_record(value)); }

Class_Generic class_of(const Any& value) { return raw_class_of(internal::unwrap(value)); }

String qualname(const Any& value) {
    // Not by casts: the error of a failed cast has qualified names in it.
    if (internal::cast_object(value, Module::getClass()) != nullptr)
        return unchecked<Module>(value).name();
    const bool isClass = value.is(Kind::Object) && value.object()->ownClass() == nullptr;
    const Class_Generic named = isClass ? unchecked<Class_Generic>(value) : raw_class_of(value);
    const Module module = named.parentModule();
    return module.isNone() ? named.name() : module.name() + String(u".") + named.name();
}

namespace internal {

object_value* cast_object(const Any& value, const Class_Generic& cls) noexcept {
    object_value* object = value.object();
    return object != nullptr && raw_class_record(value)->isAncestor(cls.record()) ? object : nullptr;
}

bool is_instance_of(const Any& value, const Class_Generic& cls) noexcept {
    return raw_class_record(value)->isAncestor(cls.record());
}

Any cast_error(const Any& value, const Class_Generic& expected) {
    return failure(String(u"Unable to cast a value of class '{}' to '{}'.")
                       .arg(qualname(raw_class_of(value)), qualname(expected)));
}

namespace {

/// The signature of the method that initialises an instance, without the receiver; none when there is no such method.
Any constructorSignature(const Class_Generic& cls) {
    const found_member initialiser = cls.record()->findMethod(Any::$__init__);
    if (!initialiser)
        return Any();
    Result<Signature> whole = unchecked<I_Invokable_Generic>(Any::share(initialiser.member)).signature();
    if (!whole || whole->parameters().empty())
        return whole.toAny();
    const std::vector<Parameter>& all = whole->parameters();
    return Signature({all.begin() + 1, all.end()}, Type(cls));
}

}  // namespace

void define_class_members() {
    auto listOf = [](const auto& items) { return List_Generic(std::vector<Any>(items.begin(), items.end())); };
    extend_class(Class_Generic::getClass())
        .doc("A class: what values are made of. Called, it makes an instance.")
        .property(I_HasName::$$name, property_builder()
                                         .getter([](const Class_Generic& self) { return self.name(); })
                                         .doc("The name, without the module."))
        .property(
            I_HasDoc::$$doc,
            property_builder().getter([](const Class_Generic& self) { return self.doc(); }).doc("What it is for."))
        .property("parents", property_builder()
                                 .getter([listOf](const Class_Generic& self) { return listOf(self.parents()); })
                                 .doc("The classes that it derives from directly."))
        .property("ancestry", property_builder()
                                  .getter([listOf](const Class_Generic& self) { return listOf(self.ancestry()); })
                                  .doc("The class itself and all that it derives from, in the order of look-up."))
        .property("module", property_builder()
                                .getter([](const Class_Generic& self) -> Any { return self.parentModule(); })
                                .doc("The module that holds it, or none."))
        .property("parameters", property_builder()
                                    .getter([listOf](const Class_Generic& self) { return listOf(self.parameters()); })
                                    .doc("The types that an instance of a generic class was made for."))
        .property(I_Invokable_Generic::$$signature,
                  property_builder()
                      .getter([](const Class_Generic& self) { return constructorSignature(self); })
                      .doc("The parameters that making an instance takes, where they are known."))
        .method(
            "isAncestor", "ancestor",
            [](const Class_Generic& self, const Class_Generic& ancestor) { return self.isAncestor(ancestor); },
            "Whether the given class is this one or one of its ancestors.")
        .build();
    extend_class(rootClass()).doc("The root of all classes.").build();
}

}  // namespace internal

}  // namespace ling
