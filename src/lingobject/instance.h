#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/error.h"
#include "lingobject/class_facts.h"

namespace ling::python {

/// The layout of every wrapper: Python's header and the cell with the value. The value in the cell is never replaced.
struct Instance {
    PyObject ob_base;
    ling::Any* value;
};

/// What lies behind it in the same block of memory, where Python does not look: the cell itself, and what is known of
/// the value's class.
///
/// A bound method becomes a function of `ling` when somebody asks for the value. Until then there is no cell, and in
/// its place are the wrapper that the method was looked up in, and the method, which the class keeps.
struct WrapperBlock {
    struct BoundMethod {
        PyObject* receiver;  // Owned.
        ling::internal::object_value* method;
    };

    Instance instance;
    const ClassFacts* facts;  // Of the class that the wrapper was made for.
    union {
        ling::Any cell;
        BoundMethod bound;
    };
};

inline WrapperBlock& blockOf(PyObject* self) noexcept { return *reinterpret_cast<WrapperBlock*>(self); }

/// A bound method that is no value yet, or null.
inline const WrapperBlock::BoundMethod* boundMethodOf(PyObject* self) noexcept {
    const WrapperBlock& block = blockOf(self);
    return block.instance.value == nullptr ? &block.bound : nullptr;
}
/// A new wrapper that is a bound method. `receiver` is a wrapper whose class has the method and is plain. Null with the
/// Python error set when there is no memory.
PyObject* bindLocked(PyObject* receiver, ling::internal::object_value* method);
/// Makes the value of a wrapper that is a bound method.
const ling::Any& makeBoundValue(PyObject* self);

/// The value that `self`, a wrapper, holds. Slots and look-ups work on what it stands for (`Receiver`); only conversion
/// and what tells about the value itself, its identity and kind, look at this.
inline const ling::Any& valueOf(PyObject* self) {
    const ling::Any* value = blockOf(self).instance.value;
    return value != nullptr ? *value : makeBoundValue(self);
}

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
