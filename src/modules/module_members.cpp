#include "modules/module_members.h"

#include "host/platform.h"
#include "ling/members.h"
#include "ling/property.h"

namespace ling::python {

namespace {

void addOwnNames(std::vector<ling::String>& names, const ling::List_Generic& own) {
    for (const ling::Any& name : platform::itemsOf(own))
        names.push_back(ling::unchecked<ling::String>(name));
}

template <class Members>
void addNames(std::vector<ling::String>& names, const Members& members) {
    for (const auto& member : members)
        names.push_back(member.id.name());
}

void addDeclaredNames(std::vector<ling::String>& names, const ling::Class_Generic& cls) {
    addNames(names, cls.methods(ling::Inherited::No));
    addNames(names, cls.classMethods(ling::Inherited::No));
    addNames(names, cls.properties(ling::Inherited::No));
    addNames(names, cls.classProperties(ling::Inherited::No));
}

}  // namespace

std::vector<ling::String> memberNamesOf(const ling::Module& module) {
    std::vector<ling::String> names;
    addOwnNames(names, ling::own_methods_of(module));
    addOwnNames(names, ling::own_properties_of(module));
    for (const ling::Class_Generic& cls : ling::raw_class_of(module).ancestry()) {
        if (cls == ling::Module::getClass())
            break;
        addDeclaredNames(names, cls);
    }
    return names;
}

bool isChild(const ling::Module& parent, const ling::String& name, const ling::Any& member) {
    return ling::internal::is_instance<ling::Module>(member) &&
           ling::unchecked<ling::Module>(member).name() == parent.name() + u"." + name;
}

bool hasChildren(const ling::Module& module) {
    for (const ling::Any& item : platform::itemsOf(ling::own_properties_of(module))) {
        const ling::String& name = ling::unchecked<ling::String>(item);
        const ling::Property property = ling::raw_property_of(module, ling::property_ident_untyped(name));
        if (!property.isNone() && property.isValue() && isChild(module, name, property.value()))
            return true;
    }
    return false;
}

}  // namespace ling::python
