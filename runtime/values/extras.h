#pragma once

#include "ling/object_value.h"

#include <atomic>
#include <memory>

namespace ling::internal {

/// What outlives an object for its weak references: the way to it while it lives. Counted by the weak references and
/// by the object itself.
class weak_anchor {
public:
    /// Null for a target that is about to go.
    explicit weak_anchor(object_value* target) noexcept : target_(target) {}
    /// A new reference to the target, or null when it is gone.
    object_value* lock() noexcept;
    /// The target dies: no later `lock` reaches it.
    void detach() noexcept;
    void retain() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
    void release() noexcept {
        if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

private:
    spin_lock guard_;
    object_value* target_;
    std::atomic<unsigned> count_{1};
};

/// Members that one object carries beyond its class. What they are is the model's business.
class own_members_base {
public:
    virtual ~own_members_base() = default;
};

/// The rarely used parts of an object, made on first use and kept until the object dies.
struct object_extras {
    ~object_extras();
    std::atomic<weak_anchor*> anchor{nullptr};
    std::atomic<own_members_base*> ownMembers{nullptr};
    object_value* nextDead = nullptr;  ///< Links objects that wait to be taken apart, those without extras aside.
};

inline bool carries_members(const object_value& object) noexcept {
    const object_extras* extras = object.findExtras();
    return extras != nullptr && extras->ownMembers.load(std::memory_order_acquire) != nullptr;
}

/// Puts `fresh` where nothing is yet; answers what stands there afterwards and deletes a `fresh` that came too late.
template <class T, class Discard>
T* publish(std::atomic<T*>& place, T* fresh, Discard&& discard) noexcept {
    T* present = nullptr;
    if (place.compare_exchange_strong(present, fresh, std::memory_order_acq_rel))
        return fresh;
    discard(fresh);
    return present;
}

}  // namespace ling::internal
