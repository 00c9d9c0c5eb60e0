#include "ling/members.h"

#include "ling/basic_values.h"
#include "ling/class_record.h"
#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/list.h"
#include "ling/module.h"
#include "model/argument_frame.h"
#include "model/borrowed_frame.h"
#include "model/own_members.h"
#include "values/extras.h"

#include <optional>

namespace ling {

namespace internal {

namespace {

object_value_class* asClassRecord(const Any& value) noexcept {
    const bool isClass = value.is(Kind::Object) && value.object()->ownClass() == nullptr;
    return isClass ? static_cast<object_value_class*>(value.object()) : nullptr;
}

found_method ofFunction(Any method) {
    // A function that stands on its own says itself whether it wants the receiver.
    const bool takesReceiver = !unchecked<I_Invokable_Generic>(method).isIndependent();
    return {std::move(method), takesReceiver};
}

found_method ofClassMember(const found_member& found) { return {Any::share(found.member), !found.classLevel}; }

/// Asks a class's own look-up for a member by name. None when it has none.
Any askProtocol(const found_member& protocol, const Any& self, const identifier& id) {
    const Any arguments[] = {self, id.name()};
    Any answer = result_unwrap_lazy(protocol.member->invoke(arguments));
    return is_error_result(answer) ? Any() : answer;
}

/// A name that was no identifier when the look-up began may be one that the class has declared for its sake: classes
/// declare members late.
template <class Identifier>
std::optional<Identifier> declaredMeanwhile(const Identifier& id) {
    const identifier_data* now = id.data()->hash == 0 ? find_interned(id.utf8()) : nullptr;
    return now == nullptr || now == id.data() ? std::nullopt : std::optional(Identifier(*now));
}

}  // namespace

found_method find_raw_method(const Any& value, const method_ident_untyped& id) {
    if (own_members* own = find_own_members(value))
        if (Any method = own->methods.find(id.data()); !method.isNone())
            return ofFunction(std::move(method));
    if (object_value_class* record = asClassRecord(value))
        if (found_member found = record->findClassMethod(id))
            return ofClassMember(found);
    if (found_member found = raw_class_record(value)->findMethod(id))
        return ofClassMember(found);
    const auto now = declaredMeanwhile(id);
    return now ? find_raw_method(value, *now) : found_method{};
}

found_method find_method(const Any& value, const method_ident_untyped& id) {
    const found_member& protocol = raw_class_record(value)->methodProtocol();
    if (!protocol)
        return find_raw_method(value, id);
    if (raw_class_record(value)->offered().methods != nullptr)
        if (found_method found = find_raw_method(value, id); !found.method.isNone())
            return ofFunction(std::move(found.method));
    Any method = askProtocol(protocol, value, id);
    return method.isNone() ? found_method{} : ofFunction(std::move(method));
}

namespace {

/// What was asked for a member, as its message shows it. A value that stands for another has members of its own, so it
/// shows as what it is.
Any asked(const Any& value) {
    const bool standsForAnother = value.is(Kind::Weak) || value.is(Kind::Lazy) || value.is(Kind::External);
    return standsForAnother ? Any(String(u"<{}>").arg(qualname(raw_class_of(value)))) : value;
}

}  // namespace

namespace helpers {

Any error_method_not_found(const String& name, const Any& value) {
    return failure(String(u"Method '{}' not found in: {}.").arg(brief(name), asked(value)));
}

Any error_property_not_found(const String& name, const Any& value) {
    return failure(String(u"Property '{}' not found in: {}.").arg(brief(name), asked(value)));
}

}  // namespace helpers

namespace {

Any cannotCarryMembers(const Any& value) {
    return failure(String(u"A value of class '{}' cannot carry members.").arg(qualname(raw_class_of(value))));
}

Any insertOwn(const Any& value, own_member_list own_members::*members, const identifier& id, const Any& member) {
    return contain([&]() -> Any {
        object_value* object = value.object();
        if (object == nullptr)
            return cannotCarryMembers(value);
        (ensure_own_members(*object).*members).put(id.data(), member);
        return Any();
    });
}

/// The override of a member-changing protocol method in the class of `value`, or none.
Any changeProtocol(const Any& value, const method_ident_untyped& id) {
    return Any::share(raw_class_record(value)->findMethod(id).member);
}

List_Generic namesOf(const own_member_list& members) {
    List_Generic names;
    for (const auto& [name, member] : members.copy())
        names.append(*name->name);
    return names;
}

/// The names that a class's own listing gives, or those that the object itself carries.
List_Generic listNames(const Any& value, const method_ident_untyped& protocolId,
                       own_member_list own_members::*members) {
    if (Any protocol = changeProtocol(value, protocolId); !protocol.isNone()) {
        const Any answer = unchecked<I_Invokable_Generic>(protocol)(value);
        Result<I_Iterable_Generic> listed = I_Iterable_Generic::cast(answer);
        Result<List_Generic> names = listed ? listed->collectImpl() : List_Generic::empty();
        return names ? *names : List_Generic::empty();
    }
    own_members* own = find_own_members(value);
    return own == nullptr ? List_Generic::empty() : namesOf(own->*members);
}

bool removeMember(const Any& value, const method_ident_untyped& protocolId, const identifier& id,
                  own_member_list own_members::*members) {
    if (Any protocol = changeProtocol(value, protocolId); !protocol.isNone()) {
        const Any answer = result_unwrap_lazy(unchecked<I_Invokable_Generic>(protocol)(value, id.name()));
        return answer.is(Kind::Boolean) && answer.asBoolean();
    }
    own_members* own = find_own_members(value);
    return own != nullptr && !(own->*members).remove(id.data()).isNone();
}

}  // namespace

}  // namespace internal

using internal::found_member;
using internal::found_method;

I_Invokable_Generic raw_method_of(const Any& value, const method_ident_untyped& id) {
    return unchecked<I_Invokable_Generic>(internal::find_raw_method(value, id).method);
}

I_Invokable_Generic method_of(const Any& value, const method_ident_untyped& id) {
    return unchecked<I_Invokable_Generic>(internal::find_method(value, id).method);
}

Property raw_property_of(const Any& value, const property_ident_untyped& id) {
    if (internal::own_members* own = internal::find_own_members(value))
        if (Any property = own->properties.find(id.data()); !property.isNone())
            return unchecked<Property>(property);
    if (internal::object_value_class* record = internal::asClassRecord(value))
        if (found_member found = record->findClassProperty(id))
            return unchecked<Property>(Any::share(found.member));
    if (found_member found = raw_class_record(value)->findProperty(id))
        return unchecked<Property>(Any::share(found.member));
    const auto now = internal::declaredMeanwhile(id);
    return now ? raw_property_of(value, *now) : Property();
}

Property property_of(const Any& value, const property_ident_untyped& id) {
    const found_member& protocol = raw_class_record(value)->propertyProtocol();
    if (!protocol)
        return raw_property_of(value, id);
    if (raw_class_record(value)->offered().properties != nullptr)
        if (Property found = raw_property_of(value, id); !found.isNone())
            return found;
    const Any answer = internal::askProtocol(protocol, value, id);
    return Property::cast(answer).valueOr(Property());
}

List_Generic own_methods_of(const Any& value) {
    return internal::listNames(value, Any::$__ownMethods__, &internal::own_members::methods);
}

List_Generic own_properties_of(const Any& value) {
    return internal::listNames(value, Any::$__ownProperties__, &internal::own_members::properties);
}

Any raw_insert_property(const Any& value, const property_ident_untyped& id, const Property& property) {
    Any problem = internal::insertOwn(value, &internal::own_members::properties, id, property);
    if (problem.isNone() && id == Module::$$bindMembers)
        internal::note_binding(value);
    return problem;
}

Any raw_insert_method(const Any& value, const method_ident_untyped& id, const I_Invokable_Generic& method) {
    return internal::insertOwn(value, &internal::own_members::methods, id, method);
}

Any insert_property(const Any& value, const property_ident_untyped& id, const Property& property) {
    return internal::contain([&] {
        const Any protocol = internal::changeProtocol(value, Any::$__insertProperty__);
        return protocol.isNone() ? raw_insert_property(value, id, property)
                                 : unchecked<I_Invokable_Generic>(protocol)(value, id.name(), property);
    });
}

Any insert_property_value(const Any& value, const property_ident_untyped& id, const Any& propertyValue) {
    return internal::contain([&] { return insert_property(value, id, Property::ofValue(propertyValue)); });
}

Any insert_method(const Any& value, const method_ident_untyped& id, const I_Invokable_Generic& method) {
    return internal::contain([&] {
        const Any protocol = internal::changeProtocol(value, Any::$__insertMethod__);
        return protocol.isNone() ? raw_insert_method(value, id, method)
                                 : unchecked<I_Invokable_Generic>(protocol)(value, id.name(), method);
    });
}

bool remove_property(const Any& value, const property_ident_untyped& id) {
    return internal::removeMember(value, Any::$__removeProperty__, id, &internal::own_members::properties);
}

bool remove_method(const Any& value, const method_ident_untyped& id) {
    return internal::removeMember(value, Any::$__removeMethod__, id, &internal::own_members::methods);
}

Any Any::boundMethod(const method_ident_untyped& id) const {
    return internal::contain([&]() -> Any {
        found_method found = internal::find_method(*this, id);
        if (found.method.isNone())
            return internal::helpers::error_method_not_found(id.name(), *this);
        if (!found.takesReceiver)
            return std::move(found.method);
        return unchecked<I_Invokable_Generic>(found.method).bindArgs(*this);
    });
}

namespace {

/// The tables that decide alone which methods a value has: it is no class, carries no members, and nobody but the
/// runtime has to be asked before. Null for any other value.
const internal::member_tables* decidingTables(const Any& value) noexcept {
    const internal::object_value* object = value.object();
    if (object != nullptr && (internal::carries_members(*object) || internal::asClassRecord(value) != nullptr))
        return nullptr;
    const internal::member_tables* tables = raw_class_record(value)->presentTables();
    const bool decide = tables != nullptr && (!tables->methodProtocol || tables->offered.methods != nullptr);
    return decide ? tables : nullptr;
}

/// Whether a method goes without the receiver in front: one that is found past a class's own look-up is what that would
/// have answered, a function that says so itself.
bool isIndependent(const found_member& method, const internal::member_tables& tables) noexcept {
    return tables.offered.methods == nullptr
               ? method.classLevel
               : static_cast<const internal::object_value_function*>(method.member)->isIndependent();
}

/// Calls a method without counting what the class keeps and the caller holds. False where there is more to it.
bool callDirectly(const Any& self, const method_ident_untyped& id, std::span<const Any> arguments, Any& result) {
    const internal::member_tables* tables = decidingTables(self);
    if (tables == nullptr)
        return false;
    const found_member& method = tables->methods.find(id);
    if (!method)
        return tables->offered.methods != nullptr && tables->offered.methods->callMethod(self, id, arguments, result);
    if (method.member->kind() != Kind::Function)
        return false;
    // The callee may overwrite the very value that it is called through. The receiver keeps its class, and that its
    // methods.
    const Any held = self;
    const internal::borrowed_frame frame(held, arguments);
    const std::span<const Any> all = frame;
    result = method.member->invoke(isIndependent(method, *tables) ? arguments : all);
    return true;
}

}  // namespace

Any Any::callMethod(const method_ident_untyped& id, std::span<const Any> arguments) const {
    return internal::contain([&] {
        Any result;
        if (callDirectly(*this, id, arguments, result))
            return result;
        found_method found = internal::find_method(*this, id);
        if (found.method.isNone())
            return internal::helpers::error_method_not_found(id.name(), *this);
        if (!found.takesReceiver)
            return found.method.object()->invoke(arguments);
        internal::argument_frame frame(arguments.size() + 1);
        frame.add(*this);
        frame.addAll(arguments);
        return found.method.object()->invoke(frame);
    });
}

Any Any::propertyValue(const property_ident_untyped& id) const {
    return internal::contain([&] {
        const Property property = property_of(*this, id);
        return property.isNone() ? internal::helpers::error_property_not_found(id.name(), *this) : property.get(*this);
    });
}

Any Any::setPropertyValue(const property_ident_untyped& id, const Any& value) const {
    return internal::contain([&] {
        const Property property = property_of(*this, id);
        return property.isNone() ? internal::helpers::error_property_not_found(id.name(), *this)
                                 : property.set(*this, value);
    });
}

namespace {

/// The object and the position of one of its declared fields; no object when the class declares none of that name.
struct field_place {
    internal::object_value_object* object = nullptr;
    std::size_t position = 0;
    const Field* field = nullptr;
};

field_place findField(const Any& value, const field_ident_untyped& id) {
    if (!value.is(Kind::Object) || value.object()->ownClass() == nullptr)
        return {};
    const internal::object_value_class* record = value.object()->ownClass();
    const std::int64_t position = record->findField(id);
    if (position < 0)
        return {};
    const auto index = static_cast<std::size_t>(position);
    return {static_cast<internal::object_value_object*>(value.object()), index, record->fieldAt(index)};
}

Any fieldNotFound(const field_ident_untyped& id, const Any& value) {
    return internal::failure(String(u"Field '{}' not found in: {}.").arg(internal::brief(id.name()), value));
}

}  // namespace

Any Any::fieldValue(const field_ident_untyped& id) const {
    const field_place place = findField(*this, id);
    return place.object == nullptr ? fieldNotFound(id, *this) : place.object->field(place.position);
}

Any Any::setFieldValue(const field_ident_untyped& id, const Any& value) const {
    const field_place place = findField(*this, id);
    if (place.object == nullptr)
        return fieldNotFound(id, *this);
    if (!place.field->type.isMatch(value))
        return internal::failure(String(u"Field '{}' takes a value of type '{}', not '{}'.")
                                     .arg(id.name(), place.field->type.toString(), qualname(raw_class_of(value))));
    place.object->setField(place.position, value);
    return Any();
}

}  // namespace ling
