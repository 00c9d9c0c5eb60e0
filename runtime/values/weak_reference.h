#pragma once

#include "ling/any.h"
#include "ling/object_value.h"

namespace ling::internal {

class weak_anchor;

/// A reference that does not keep its target alive.
class object_value_weak final : public object_value {
public:
    explicit object_value_weak(weak_anchor* anchor) noexcept;
    Any lock() override;

private:
    ~object_value_weak() override;
    weak_anchor* const anchor_;
};

/// A new weak reference (one reference for the caller) to a borrowed target.
object_value* make_weak(object_value* target);

}  // namespace ling::internal
