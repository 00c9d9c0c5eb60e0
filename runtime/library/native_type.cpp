#include "ling/native_type.h"

#include "library/native_constructor.h"
#include "ling/error.h"

#include <mutex>
#include <utility>

namespace ling::internal {

/// The records of all C++ classes. The comparison of `std::type_info` knows that classes of one name but with internal
/// linkage differ.
class native_types {
public:
    static native_type& find(const std::type_info& key) {
        static native_types& types = *new native_types;
        std::lock_guard hold(types.guard_);
        for (native_type* present : types.records_)
            if (present->key_ == key)
                return *present;
        types.records_.push_back(new native_type(key));
        return *types.records_.back();
    }

private:
    std::mutex guard_;  // Nothing but the table is touched under it.
    std::vector<native_type*> records_;
};

native_type& native_type::find(const std::type_info& key) { return native_types::find(key); }

Any native_type::instance(std::shared_ptr<void> object) const {
    if (object == nullptr)
        return Any();
    object_value_class* klass = class_.load(std::memory_order_acquire);
    if (klass == nullptr)
        return failure(String(u"No class stands for the C++ class '{}'.").arg(key_.name()));
    auto* instance = new object_value_native(klass);
    Any result = Any::adopt(instance);
    (void)instance->initialise(*this, std::move(object));
    return result;
}

Any native_type::explain(const Any& value) const {
    const object_value_native* instance = native_instance(value);
    if (instance == nullptr || instance->isInitialised())
        return Any();
    return failure(String(u"The object of class '{}' is not initialised.").arg(qualname(raw_class_of(value))));
}

bool native_type::bind(const Class_Generic& cls) {
    object_value_class* none = nullptr;
    if (!class_.compare_exchange_strong(none, cls.record(), std::memory_order_acq_rel))
        return false;
    (void)Any(cls).take();  // Kept for ever.
    return true;
}

void native_type::addBase(const native_type& base, void* (*upcast)(void*)) { bases_.push_back({&base, upcast}); }

void* native_type::part(void* object, const native_type& wanted) const noexcept {
    if (this == &wanted)
        return object;
    for (const base_link& link : bases_)
        if (void* found = link.base->part(link.upcast(object), wanted))
            return found;
    return nullptr;
}

Any object_value_native::initialise(const native_type& type, std::shared_ptr<void> object) {
    void* const content = object.get();
    {
        std::lock_guard hold(guard());
        if (content != nullptr && !isInitialised()) {
            owner_.swap(object);
            type_ = &type;
            object_.store(content, std::memory_order_release);
            return Any();
        }
    }
    return failure(String(content == nullptr ? u"The constructor of '{}' made nothing."
                                             : u"An object of class '{}' cannot be initialised again.")
                       .arg(ownClass()->name()));
}

namespace {

object_value* allocate_native(object_value_class* klass) { return new object_value_native(klass); }

Any refuseConstruction(const Class_Generic& cls, std::span<const Any>) {
    return failure(String(u"The class '{}' has no constructor.").arg(cls.name()));
}

}  // namespace

class_hooks native_hooks(bool constructible) {
    return {.allocate = &allocate_native, .construct = constructible ? &construct_by_initialiser : &refuseConstruction};
}

object_value_native* native_instance(const Any& value) noexcept {
    object_value* object = value.is(Kind::Object) ? value.object() : nullptr;
    const object_value_class* klass = object != nullptr ? object->ownClass() : nullptr;
    const bool native = klass != nullptr && klass->hooks().allocate == &allocate_native;
    return native ? static_cast<object_value_native*>(object) : nullptr;
}

}  // namespace ling::internal
