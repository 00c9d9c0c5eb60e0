#include "library/define.h"
#include "ling/class_builder.h"
#include "ling/indirect_values.h"

#include <map>
#include <mutex>
#include <string>

namespace ling {

namespace {

/// The classes of boxes by the names of what is in them. Kept as long as the process.
class box_registry {
public:
    static box_registry& instance() {
        static box_registry& registry = *new box_registry;
        return registry;
    }

    /// The class that is registered for the key: `made`, unless somebody was faster.
    Class_Generic findOrAdd(std::string_view key, const Class_Generic& made) {
        std::lock_guard hold(guard_);
        return classes_.try_emplace(std::string(key), made).first->second;
    }

    Class_Generic find(std::string_view key) const {
        std::lock_guard hold(guard_);
        const auto found = classes_.find(key);
        return found == classes_.end() ? Class_Generic() : found->second;
    }

private:
    mutable std::mutex guard_;  // Nothing but the map is touched under it.
    std::map<std::string, Class_Generic, std::less<>> classes_;
};

Class_Generic makeBoxClass() {
    Class_Generic cls = internal::native_class("Boxed", {});
    cls.record()->set_interface_unsafe();  // What is to be in the box only a class for some type knows.
    return cls;
}

}  // namespace

Class_Generic Boxed_Generic::getClassInstance(std::string_view key,
                                              internal::object_value* (*makeDefault)(internal::object_value_class*)) {
    const Class_Generic present = box_registry::instance().find(key);
    if (!present.isNone())
        return present;
    const std::string name = "Boxed<" + std::string(key) + ">";
    const Class_Generic made = internal::native_class(name.c_str(), {getClass()});
    made.record()->set_hooks_unsafe({.allocate = makeDefault});
    made.record()->set_doc_unsafe(u"A native value of a type that the runtime does not know.");
    return box_registry::instance().findOrAdd(key, made);
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
