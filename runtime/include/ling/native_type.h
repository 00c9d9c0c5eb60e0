#pragma once

#include "ling/class.h"
#include "ling/class_record.h"
#include "ling/type.h"

#include <atomic>
#include <memory>
#include <typeinfo>
#include <vector>

/// C++ classes as classes of the runtime: what `native_class` fills in and the conversions use.

namespace ling::internal {

/// What the runtime knows of one C++ class. There is one for each class in the process, whichever library asks, and it
/// lives for ever. A class with internal linkage has one in each library.
class LING_EXPORT native_type {
public:
    /// Makes the record, or finds it.
    static native_type& find(const std::type_info& key);

    /// The class that stands for the C++ class, or a none handle until it is bound.
    Class_Generic boundClass() const { return Class_Generic::share(class_.load(std::memory_order_acquire)); }
    bool isBound() const noexcept { return class_.load(std::memory_order_acquire) != nullptr; }
    /// The type of its instances; until it is bound, of any object.
    Type type() const { return isBound() ? Type(boundClass()) : Any::getType(); }
    /// A new instance around a C++ object, or none for a null pointer. An error result while the class is not bound.
    Any instance(std::shared_ptr<void> object) const;
    /// Why `value` is no instance that can be used, or none where its class says it all.
    Any explain(const Any& value) const;

    /// Binds the class, for ever. False when it is bound already.
    bool bind(const Class_Generic& cls);
    /// Says that an object of this class is one of `base` as well, which `upcast` finds in it. While the class is
    /// built.
    void addBase(const native_type& base, void* (*upcast)(void*));
    /// The part of `object`, which is of this class, that is of the class `wanted`, or null.
    void* part(void* object, const native_type& wanted) const noexcept;

private:
    friend class native_types;
    explicit native_type(const std::type_info& key) noexcept : key_(key) {}

    struct base_link {
        const native_type* base;
        void* (*upcast)(void*);
    };
    const std::type_info& key_;
    std::atomic<object_value_class*> class_{nullptr};  // Owned.
    std::vector<base_link> bases_;
};

template <class T>
native_type& native_type_of() {
    static native_type& type = native_type::find(typeid(T));
    return type;
}

/// An instance of a class that stands for a C++ class: the object is put into it once, by the constructor or when the
/// instance is made around it, and stays for the life of the instance.
class LING_EXPORT object_value_native final : public object_value_object {
public:
    explicit object_value_native(object_value_class* klass) : object_value_object(klass) {}
    /// Puts the object in. None, or an error result when one is there already.
    Any initialise(const native_type& type, std::shared_ptr<void> object);

    void* find(const native_type& wanted) const noexcept {
        void* object = object_.load(std::memory_order_acquire);
        return object == nullptr || type_ == &wanted ? object : type_->part(object, wanted);
    }
    bool isInitialised() const noexcept { return object_.load(std::memory_order_acquire) != nullptr; }
    /// What keeps the object alive.
    const std::shared_ptr<void>& owner() const noexcept { return owner_; }

private:
    std::atomic<void*> object_{nullptr};  // Set last; what follows is never changed afterwards.
    const native_type* type_ = nullptr;
    std::shared_ptr<void> owner_;
};

/// The instance behind `value`, borrowed, or null when its class stands for no C++ class.
LING_EXPORT object_value_native* native_instance(const Any& value) noexcept;

/// What `native_class` gives its classes: instances that have room for a C++ object, made by `$__init__` where the
/// class has a constructor, and by nobody but C++ code otherwise.
LING_EXPORT class_hooks native_hooks(bool constructible);

/// The C++ object in `value`, which keeps it alive, or null.
template <class T>
T* native_object(const Any& value) noexcept {
    const object_value_native* instance = native_instance(value);
    return instance == nullptr ? nullptr : static_cast<T*>(instance->find(native_type_of<T>()));
}
template <class T>
std::shared_ptr<T> native_share(const Any& value) {
    T* object = native_object<T>(value);
    return object == nullptr ? nullptr : std::shared_ptr<T>(native_instance(value)->owner(), object);
}

}  // namespace ling::internal
