#include "completion.h"

#include "ling/class.h"
#include "ling/list.h"
#include "ling/members.h"
#include "ling/module.h"

#include <set>

namespace ling::shell {

namespace {

using Names = std::set<String>;

template <class Member>
void add(Names& names, const std::vector<Declared<method_ident_untyped, Member>>& members) {
    for (const auto& declared : members)
        names.insert(declared.id.name());
}

void add(Names& names, const std::vector<Declared<property_ident_untyped, Property>>& members) {
    for (const auto& declared : members)
        names.insert(declared.id.name());
}

void add(Names& names, const List_Generic& list) {
    for (const Any& item : list.copyItems()) {
        if (const Result<String> name = String::cast(item))
            names.insert(*name);
    }
}

Names membersOf(const Module& module) {
    Names names;
    for (const Class_Generic& cls : module.classes())
        names.insert(cls.name());
    add(names, module.functions());
    add(names, own_properties_of(module));
    add(names, own_methods_of(module));
    const Class_Generic cls = raw_class_of(module);
    add(names, cls.methods(Inherited::Yes));
    add(names, cls.properties(Inherited::Yes));
    return names;
}

Names membersOf(const Class_Generic& cls) {
    Names names;
    add(names, cls.classMethods(Inherited::Yes));
    add(names, cls.classProperties(Inherited::Yes));
    add(names, cls.methods(Inherited::Yes));
    add(names, cls.properties(Inherited::Yes));
    return names;
}

/// A class of a module, found without a look-up that might run somebody's code.
Class_Generic registeredClass(const String& path) {
    const std::int64_t dot = path.lastIndexOf(u".");
    const Module module = dot < 0 ? Module() : find_module(path.sliced(0, dot));
    if (module.isNone())
        return {};
    for (const Class_Generic& cls : module.classes()) {
        if (cls.name() == path.sliced(dot + 1))
            return cls;
    }
    return {};
}

}  // namespace

std::vector<String> memberNames(const String& path) {
    Names names;
    if (const Module module = find_module(path); !module.isNone())
        names = membersOf(module);
    else if (const Class_Generic cls = registeredClass(path); !cls.isNone())
        names = membersOf(cls);
    return {names.begin(), names.end()};
}

}  // namespace ling::shell
