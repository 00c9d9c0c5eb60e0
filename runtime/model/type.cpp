#include "ling/type.h"

#include "ling/basic_values.h"
#include "ling/class.h"
#include "ling/class_record.h"
#include "ling/error.h"
#include "ling/interfaces.h"
#include "model/canonical_text.h"
#include "values/content_hash.h"

#include <algorithm>

namespace ling {

namespace {

enum class Form : std::uint8_t { Untyped, Any, Class, Union, Variable };

/// A type. Immutable once it is shared.
class object_value_type final : public internal::object_value_object {
public:
    explicit object_value_type(Form which, const Class_Generic& klass = Type::getClass())
        : object_value_object(klass.record()), form(which) {}

    const Form form;
    Class_Generic cls;        // Of a class type.
    std::vector<Type> parts;  // Of a union, none last; of a variable its bound alone.
    String name;              // Of a variable.
};

const object_value_type& record(const Any& type) noexcept {
    return *static_cast<const object_value_type*>(type.object());
}

bool isNoneType(const Type& type) { return record(type).form == Form::Class && record(type).cls == None::getClass(); }

}  // namespace

struct type_access {
    static Type adopt(object_value_type* made) { return Type(Any::adopt(made)); }
};

namespace {

const Type& immortalType(Form form) { return *new Type(type_access::adopt(new object_value_type(form))); }

const Type& untypedType() {
    static const Type& type = immortalType(Form::Untyped);
    return type;
}

const Type& anyType() {
    static const Type& type = immortalType(Form::Any);
    return type;
}

bool allSpecialize(std::span<const Type> narrow, std::span<const Type> wide) {
    return std::equal(narrow.begin(), narrow.end(), wide.begin(), wide.end(),
                      [](const Type& a, const Type& b) { return a.specializes(b); });
}

/// A class specialises an instance of a generic through an ancestor that is an instance for narrower types.
bool classSpecializes(const Class_Generic& narrow, const Class_Generic& wide) {
    if (narrow.isAncestor(wide))
        return true;
    const Class_Generic generic = wide.parentGeneric();
    if (generic.isNone())
        return false;
    const std::vector<Class_Generic> ancestry = narrow.ancestry();
    return std::any_of(ancestry.begin(), ancestry.end(), [&](const Class_Generic& ancestor) {
        return ancestor.parentGeneric().isSameAs(generic) && allSpecialize(ancestor.parameters(), wide.parameters());
    });
}

/// A native container does not say what its items are: it matches every instance of its generic.
bool classMatches(const Class_Generic& found, const Class_Generic& wanted) {
    if (classSpecializes(found, wanted))
        return true;
    const Class_Generic generic = wanted.parentGeneric();
    if (generic.isNone() || !found.isAncestor(generic))
        return false;
    const std::vector<Class_Generic> ancestry = found.ancestry();
    return std::none_of(ancestry.begin(), ancestry.end(), [&](const Class_Generic& ancestor) {
        const std::vector<Type> parameters = ancestor.parameters();
        return ancestor.parentGeneric().isSameAs(generic) &&
               !std::all_of(parameters.begin(), parameters.end(), [](const Type& t) { return t.isUntyped(); });
    });
}

}  // namespace

Type::Type() : Type(untypedType()) {}

Type::Type(const Class_Generic& cls) {
    auto* made = new object_value_type(cls == Any::getClass() ? Form::Any : Form::Class);
    made->cls = cls;
    static_cast<Any&>(*this) = Any::adopt(made);
}

bool Type::isAny() const noexcept { return record(*this).form == Form::Any; }
bool Type::isUntyped() const noexcept { return record(*this).form == Form::Untyped; }
bool Type::isUnion() const noexcept { return record(*this).form == Form::Union; }
bool Type::isVariable() const noexcept { return record(*this).form == Form::Variable; }

bool Type::isOption() const noexcept {
    return isUnion() && record(*this).parts.size() == 2 && isNoneType(record(*this).parts.back());
}

std::vector<Type> Type::parts() const { return isUnion() ? record(*this).parts : std::vector<Type>{*this}; }

Class_Generic Type::toClass() const {
    if (isOption())
        return record(*this).parts.front().toClass();
    return record(*this).cls;
}

bool Type::specializes(const Type& wider) const {
    if (wider.isAny() || wider.isUntyped())
        return true;
    const object_value_type& own = record(*this);
    const object_value_type& other = record(wider);
    if (own.form == Form::Union)
        return std::all_of(own.parts.begin(), own.parts.end(), [&](const Type& t) { return t.specializes(wider); });
    if (other.form == Form::Union)
        return std::any_of(other.parts.begin(), other.parts.end(), [&](const Type& t) { return specializes(t); });
    if (own.form == Form::Variable)
        return *this == wider || own.parts.front().specializes(wider);
    if (other.form == Form::Variable)
        return specializes(other.parts.front());
    return own.form == Form::Class && classSpecializes(own.cls, other.cls);
}

bool Type::isMatch(const Any& value) const {
    const object_value_type& own = record(*this);
    switch (own.form) {
        case Form::Untyped:
        case Form::Any:
            return true;
        case Form::Class:
            return raw_class_record(value) == own.cls.record() || classMatches(raw_class_of(value), own.cls);
        case Form::Union:
        case Form::Variable:
            break;
    }
    return std::any_of(own.parts.begin(), own.parts.end(), [&](const Type& t) { return t.isMatch(value); });
}

String Type::toString() const {
    const object_value_type& own = record(*this);
    switch (own.form) {
        case Form::Untyped:
            return u"Untyped";
        case Form::Any:
            return u"Any";
        case Form::Class:
            return own.cls.name();
        case Form::Variable:
            return own.name;
        case Form::Union:
            break;
    }
    if (isOption())
        return String(u"Option<{}>").arg(own.parts.front().toString());
    string_builder text;
    for (const Type& part : own.parts)
        text.append(text.length() == 0 ? "" : "|").append(part.toString());
    return text.build();
}

bool operator==(const Type& a, const Type& b) noexcept {
    if (a.isSameAs(b))
        return true;
    const object_value_type& left = record(a);
    const object_value_type& right = record(b);
    if (left.form != right.form || left.parts.size() != right.parts.size())
        return false;
    // The parts of a union are without repetitions, so each of one side must merely be found on the other.
    return left.cls.isSameAs(right.cls) && left.name == right.name &&
           std::all_of(left.parts.begin(), left.parts.end(), [&](const Type& part) {
               return std::find(right.parts.begin(), right.parts.end(), part) != right.parts.end();
           });
}

std::size_t Type::hash() const noexcept {
    const object_value_type& own = record(*this);
    // The parts are added up, since those of a union come in any order.
    std::uint64_t parts = 0;
    for (const Type& part : own.parts)
        parts += part.hash();
    const auto content = own.cls.rawBits() ^ own.name.hash() ^ internal::content_hash::kSecond;
    return internal::content_hash::mix(content + static_cast<std::uint64_t>(own.form),
                                       parts ^ internal::content_hash::kFirst);
}

Result<Type> Type::cast(const Any& value) { return internal::cast_handle<Type>(value); }

const Class_Generic& Type::getClass() {
    static const Class_Generic& cls =
        *new Class_Generic(internal::runtime_made_class("Type", {I_Immutable::getClass(), I_RuntimeOnly::getClass()}));
    return cls;
}

Type Type::getType() { return Type(getClass()); }
Type Any::getType() { return anyType(); }
Type Untyped::getType() { return untypedType(); }

namespace {

Type makeVariable(const String& name, const Type& bound) {
    auto* made = new object_value_type(Form::Variable, TypeVariable::getClass());
    made->name = name;
    made->parts.push_back(bound);
    return type_access::adopt(made);
}

void addPart(std::vector<Type>& parts, const Type& part) {
    if (std::find(parts.begin(), parts.end(), part) == parts.end())
        parts.push_back(part);
}

}  // namespace

TypeVariable::TypeVariable(const String& name, const Type& bound) : Type(makeVariable(name, bound)) {}
String TypeVariable::name() const { return record(*this).name; }
Type TypeVariable::bound() const { return record(*this).parts.front(); }
Result<TypeVariable> TypeVariable::cast(const Any& value) { return internal::cast_handle<TypeVariable>(value); }

const Class_Generic& TypeVariable::getClass() {
    static const Class_Generic& cls =
        *new Class_Generic(internal::runtime_made_class("TypeVariable", {Type::getClass()}));
    return cls;
}

namespace internal {

String canonical_text(const Type& type) {
    if (!type.isUnion())
        return type.toString();
    std::vector<String> texts;
    for (const Type& part : type.parts())
        texts.push_back(canonical_text(part));
    std::sort(texts.begin(), texts.end());
    string_builder text;
    for (const String& part : texts)
        text.append(text.length() == 0 ? "" : "|").append(part);
    return text.build();
}

Any type_error(const Any& value, const Type& expected) {
    return failure(String(u"Unable to cast a value of class '{}' to '{}'.")
                       .arg(qualname(raw_class_of(value)), expected.toString()));
}

Type type_unite(const Type& a, const Type& b) {
    if (a.isUntyped() || b.isUntyped())
        return untypedType();
    if (a.isAny() || b.isAny())
        return anyType();
    std::vector<Type> parts;
    for (const Type& side : {a, b})
        for (const Type& part : side.parts())
            addPart(parts, part);
    std::stable_partition(parts.begin(), parts.end(), [](const Type& part) { return !isNoneType(part); });
    if (parts.size() == 1)
        return parts.front();
    auto* made = new object_value_type(Form::Union);
    made->parts = std::move(parts);
    return type_access::adopt(made);
}

}  // namespace internal

}  // namespace ling
