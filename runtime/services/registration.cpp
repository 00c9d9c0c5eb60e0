#include "ling/error.h"
#include "ling/members.h"
#include "ling/module.h"
#include "model/accessor_names.h"
#include "services/module_tree.h"

namespace ling {

namespace internal {

namespace {

String memberName(const Module& module, const String& name) { return module.name() + String(u".") + name; }

object_value_module& record(const Module& module) { return static_cast<object_value_module&>(*module.object()); }

/// Where a member is to be put.
struct member_place {
    Module module;
    Any problem;           ///< An error result, or none.
    bool isThere = false;  ///< The member stands there already.
};

member_place findPlace(std::string_view moduleName, const String& name, const Any& member) {
    const Any module = module_tree::instance().ensure(String(moduleName));
    if (is_error_result(module))
        return {{}, module};
    member_place place{unchecked<Module>(module), {}};
    if (name.isEmpty())
        place.problem = failure(String(u"A member of the module '{}' needs a name.").arg(place.module.name()));
    else if (std::optional<Any> occupant = occupant_of(place.module, property_ident_untyped(name))) {
        place.isThere = occupant->isSameAs(member);
        if (!place.isThere)
            place.problem = name_is_taken(memberName(place.module, name));
    }
    return place;
}

/// How a name was taken: an error result when something else has it, none otherwise.
struct claim {
    Any problem;
    bool isNew = false;
};

/// `member` is what the property stands for.
claim takeName(const Module& module, const String& name, const Property& property, const Any& member) {
    const std::optional<Any> occupant = claim_name(module, property_ident_untyped(name), property);
    if (!occupant)
        return {Any(), true};
    return {occupant->isSameAs(member) ? Any() : name_is_taken(memberName(module, name))};
}

/// Lists what has just taken its name. Where there is no memory for that, the name is given back.
template <class Add>
void list(const Module& module, const String& name, Add&& add) {
    const property_ident_untyped id(name);
    try {
        add();
    } catch (...) {
        (void)remove_property(module, id);
        throw;
    }
}

Any registerFunction(std::string_view moduleName, const FunctionCL_Generic& function) {
    const String name = function.name();
    const member_place place = findPlace(moduleName, name, function);
    if (place.isThere || is_error_result(place.problem))
        return place.problem;
    const Property property = Property::ofValue(function, function.record()->doc());
    const claim taken = takeName(place.module, name, property, function);
    if (taken.isNew)
        list(place.module, name, [&] { record(place.module).addFunction(function); });
    return taken.problem;
}

Any registerProperty(std::string_view moduleName, std::string_view name, const Property& property) {
    const member_place place = findPlace(moduleName, String(name), property);
    if (place.isThere || is_error_result(place.problem))
        return place.problem;
    const Any member = property.isValue() ? property.value() : Any(property);
    return takeName(place.module, String(name), name_accessors(property, property_ident_untyped(String(name))), member)
        .problem;
}

Any registerClass(std::string_view moduleName, const Class_Generic& cls) {
    const String name = cls.name();
    const member_place place = findPlace(moduleName, name, cls);
    if (place.isThere || is_error_result(place.problem))
        return place.problem;
    const Property property = Property::ofValue(cls, cls.doc());
    // Whoever finds the class by its name finds it with its module. Where the name goes to another, nobody does.
    const Module before = cls.parentModule();
    cls.record()->set_module_unsafe(place.module);
    const claim taken = takeName(place.module, name, property, cls);
    if (taken.isNew)
        list(place.module, name, [&] { record(place.module).addClass(cls); });
    else if (is_error_result(taken.problem))
        cls.record()->set_module_unsafe(before);
    return taken.problem;
}

}  // namespace

Any register_module(const Module& module) {
    return contain([&] { return module_tree::instance().add(module); });
}

Any register_function(std::string_view moduleName, const FunctionCL_Generic& function) {
    return contain([&] { return registerFunction(moduleName, function); });
}

Any register_property(std::string_view moduleName, std::string_view name, const Property& property) {
    return contain([&] { return registerProperty(moduleName, name, property); });
}

Any register_class(std::string_view moduleName, const Class_Generic& cls) {
    return contain([&] { return registerClass(moduleName, cls); });
}

}  // namespace internal

namespace {

/// The longest leading part of `path` that names a module, and what follows it.
struct located_module {
    Module module;
    std::u16string_view rest;
};

located_module locateModule(std::u16string_view path) {
    std::u16string_view head = path;
    for (std::size_t dot = head.rfind(u'.'); dot != head.npos; dot = head.rfind(u'.')) {
        head = head.substr(0, dot);
        if (Module module = find_module(String(head)); !module.isNone())
            return {module, path.substr(dot + 1)};
    }
    return {};
}

bool holdsClasses(const Any& value) {
    const bool isClass = value.is(Kind::Object) && value.object()->ownClass() == nullptr;
    return isClass || internal::cast_object(value, Module::getClass()) != nullptr;
}

/// The member of a module or class, as every language would see it: its own look-up is asked.
Any memberOf(const Any& holder, std::u16string_view name) {
    if (name.empty() || !holdsClasses(holder))
        return Any();
    const Property property = property_of(holder, internal::lookup_name(String(name)).property());
    return property.isNone() ? Any() : internal::result_unwrap_lazy(property.get(holder));
}

/// What stands under a dotted name below some module, or none.
Any findMember(const String& qualifiedName) {
    const auto [module, path] = locateModule(qualifiedName.view());
    Any current = module;
    std::u16string_view rest = path;
    while (!current.isNone()) {
        const std::size_t dot = rest.find(u'.');
        current = memberOf(current, rest.substr(0, dot));
        if (dot == rest.npos)
            break;
        rest = rest.substr(dot + 1);
    }
    return current;
}

}  // namespace

Class_Generic find_class(const String& qualifiedName) {
    return Class_Generic::cast(findMember(qualifiedName)).valueOr(Class_Generic());
}

I_Invokable_Generic find_function(const String& qualifiedName) {
    return I_Invokable_Generic::cast(findMember(qualifiedName)).valueOr(I_Invokable_Generic());
}

}  // namespace ling
