#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/error.h"

namespace ling::python {

/// The layout of every wrapper: Python's header and one cell on the heap, which the wrapper owns. The value in the cell
/// is never replaced.
struct Instance {
    PyObject ob_base;
    ling::Any* value;
};

/// The value that `self`, a wrapper, holds. Slots and look-ups work on what it stands for (`Receiver`); only conversion
/// and what tells about the value itself, its identity and kind, look at this.
inline const ling::Any& valueOf(PyObject* self) noexcept { return *reinterpret_cast<Instance*>(self)->value; }

/// Whether a value stands for another: a lazy value or a weak reference.
inline bool isIndirect(const ling::Any& value) noexcept {
    return value.is(ling::Kind::Lazy) || value.is(ling::Kind::Weak);
}

/// The value that an operation on a wrapper works on, in every slot and look-up: the one that it holds, or the one that
/// this stands for, which may be an error, or none where the target of a weak reference is gone. The wrapper has to
/// live as long.
class Receiver {
public:
    explicit Receiver(PyObject* self) : value_(&valueOf(self)) {
        if (isIndirect(*value_)) {
            resolved_ = ling::internal::unwrap(*value_);
            value_ = &resolved_;
        }
    }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    const ling::Any& operator*() const noexcept { return *value_; }
    const ling::Any* operator->() const noexcept { return value_; }
    bool isResolved() const noexcept { return value_ == &resolved_; }

private:
    const ling::Any* value_;
    ling::Any resolved_;
};

}  // namespace ling::python
