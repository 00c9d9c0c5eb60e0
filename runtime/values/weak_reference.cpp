#include "values/weak_reference.h"

#include "values/extras.h"

#include <mutex>

namespace ling::internal {

object_value* weak_anchor::lock() noexcept {
    std::lock_guard hold(guard_);
    return target_ != nullptr && target_->retainIfAlive() ? target_ : nullptr;
}

void weak_anchor::detach() noexcept {
    std::lock_guard hold(guard_);
    target_ = nullptr;
}

object_value_weak::object_value_weak(weak_anchor* anchor) noexcept : object_value(Kind::Weak), anchor_(anchor) {
    anchor_->retain();
}

object_value_weak::~object_value_weak() { anchor_->release(); }

Any object_value_weak::lock() { return Any::adopt(anchor_->lock()); }

object_value* make_weak(object_value* target) {
    object_extras& extras = target->ensureExtras();
    weak_anchor* anchor = extras.anchor.load(std::memory_order_acquire);
    if (anchor == nullptr)
        anchor = publish(extras.anchor, new weak_anchor(target->isDying() ? nullptr : target),
                         [](weak_anchor* late) { late->release(); });
    return new object_value_weak(anchor);
}

}  // namespace ling::internal
