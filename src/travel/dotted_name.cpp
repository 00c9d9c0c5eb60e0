#include "travel/dotted_name.h"

#include "functions/module_python.h"
#include "host/platform.h"
#include "ling/class.h"
#include "ling/comparison.h"
#include "ling/members.h"

namespace ling::python {

namespace {

/// The value of a property that carries one; a getter is not run.
ling::Any storedIn(const ling::Module& module, const ling::String& name) {
    const ling::Property property = ling::raw_property_of(module, platform::LookupName(name).property());
    return property.isNone() || !property.isValue() ? ling::Any() : property.value();
}

ling::Any memberNamed(const ling::String& owner, const ling::String& name) {
    if (const ling::Module module = ling::find_module(owner); !module.isNone())
        return storedIn(module, name);
    const ling::Class_Generic cls = ling::find_class(owner);
    return cls.isNone() ? ling::Any() : ling::Any(ling::raw_method_of(cls, platform::LookupName(name).method()));
}

/// The module that lists a function. Python's modules have Python's functions, which name themselves, and looking into
/// one may import it.
ling::String moduleOf(const ling::Any& function, const ling::String& name) {
    for (const ling::Any& item : platform::itemsOf(ling::modules())) {
        const auto& module = ling::unchecked<ling::Module>(item);
        if (!ModulePython::isInstance(module) && ling::is_same(storedIn(module, name), function))
            return module.name();
    }
    return {};
}

ling::String nameOfFunction(const ling::Any& value) {
    const auto& function = *static_cast<ling::internal::object_value_function*>(value.object());
    const ling::String name = function.name();
    const ling::Class_Generic definer = function.definingClass();
    const ling::String owner = definer.isNone() ? moduleOf(value, name) : ling::qualname(definer);
    return owner.isEmpty() ? owner : owner + u"." + name;
}

ling::String claimedName(const ling::Any& value) {
    return value.is(ling::Kind::Function) ? nameOfFunction(value) : ling::qualname(value);
}

}  // namespace

ling::Any findByDottedName(const ling::String& name) {
    if (const ling::Module module = ling::find_module(name); !module.isNone())
        return module;
    if (const ling::Class_Generic cls = ling::find_class(name); !cls.isNone())
        return cls;
    const std::int64_t dot = platform::lastIndexOf(name, u'.');
    return dot <= 0 ? ling::Any() : memberNamed(name.sliced(0, dot), name.sliced(dot + 1));
}

ling::String dottedNameOf(const ling::Any& value) {
    const ling::String name = claimedName(value);
    return !name.isEmpty() && ling::is_same(findByDottedName(name), value) ? name : ling::String();
}

}  // namespace ling::python
