#pragma once

#include "ling/class_record.h"

namespace ling::internal {

/// An object that stands for one outside the runtime, of a guest's. There may be several for the same original, made
/// whenever it is met: where objects are told apart by what they are, and not by what they hold, they are one.
class LING_EXPORT object_value_stand_in : public object_value_object {
public:
    using object_value_object::object_value_object;
    /// What it stands for; the object itself when that is nothing.
    virtual const void* original() const noexcept = 0;
};

}  // namespace ling::internal
