#include "library/define.h"
#include "ling/class_builder.h"
#include "ling/indirect_values.h"

#include <map>
#include <mutex>
#include <string>
#include <typeinfo>

namespace ling {

namespace {

/// What a class of boxes is found by: a name, and the type where the program has said it.
struct box_key {
    std::string_view name;
    const std::type_info* type = nullptr;
};

/// The classes of boxes by what is in them. Kept as long as the process.
class box_registry {
public:
    static box_registry& instance() {
        static box_registry& registry = *new box_registry;
        return registry;
    }

    /// The class that is registered for the key: `made`, unless somebody was faster.
    Class_Generic findOrAdd(const box_key& key, const Class_Generic& made) {
        std::lock_guard hold(guard_);
        if (const entry* present = findLocked(key))
            return present->cls;
        classes_.emplace(std::string(key.name), entry{key.type, made});
        return made;
    }

    Class_Generic find(const box_key& key) const {
        std::lock_guard hold(guard_);
        const entry* present = findLocked(key);
        return present == nullptr ? Class_Generic() : present->cls;
    }

private:
    struct entry {
        const std::type_info* type;
        Class_Generic cls;
    };

    /// A key without a type finds the first class of its name, and the other way round.
    const entry* findLocked(const box_key& key) const {
        for (auto [found, end] = classes_.equal_range(key.name); found != end; ++found) {
            const std::type_info* known = found->second.type;
            if (key.type == nullptr || known == nullptr || *key.type == *known)
                return &found->second;
        }
        return nullptr;
    }

    mutable std::mutex guard_;  // Nothing but the map is touched under it.
    std::multimap<std::string, entry, std::less<>> classes_;
};

Class_Generic classFor(const box_key& key, internal::object_value* (*makeDefault)(internal::object_value_class*)) {
    const Class_Generic present = box_registry::instance().find(key);
    if (!present.isNone())
        return present;
    const std::string name = "Boxed<" + std::string(key.name) + ">";
    const Class_Generic made = internal::native_class(name.c_str(), {Boxed_Generic::getClass()});
    made.record()->set_hooks_unsafe({.allocate = makeDefault, .nativeValues = true});
    made.record()->set_doc_unsafe(u"A native value of a type that the runtime does not know.");
    return box_registry::instance().findOrAdd(key, made);
}

Class_Generic makeBoxClass() {
    Class_Generic cls = internal::native_class("Boxed", {});
    cls.record()->set_interface_unsafe();  // What is to be in the box only a class for some type knows.
    return cls;
}

}  // namespace

Class_Generic Boxed_Generic::getClassInstance(std::string_view key,
                                              internal::object_value* (*makeDefault)(internal::object_value_class*)) {
    return classFor({key}, makeDefault);
}

Class_Generic Boxed_Generic::getClassInstance(const std::type_info& type,
                                              internal::object_value* (*makeDefault)(internal::object_value_class*)) {
    return classFor({type.name(), &type}, makeDefault);
}

const Class_Generic& Boxed_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(makeBoxClass());
    return cls;
}

namespace internal {

void define_boxed_members() {
    extend_class(Boxed_Generic::getClass())
        .doc("A native value of a type that the runtime does not know, carried through it.")
        .build();
}

}  // namespace internal

}  // namespace ling
