#pragma once

#include <Python.h>

#include "host/platform.h"
#include "ling/class.h"
#include "ling/class_record.h"

namespace ling::python {

/// What the slots ask of a class each time, looked up once. A class that is changed is looked at again: that shows in
/// its shape.
///
/// One for each class that a wrapper was ever made for, kept with the class for ever. Everything here needs the
/// interpreter lock.
class ClassFacts {
public:
    ClassFacts(ling::internal::object_value_class* record, PyTypeObject* type) noexcept
        : record_(record), type_(type) {}

    /// The Python type of the wrappers around its instances, which stays the same.
    PyTypeObject* type() const noexcept { return type_; }
    ling::internal::object_value_class* record() const noexcept { return record_; }

    bool isError() const { return current().isError_; }
    bool isIterator() const { return current().isIterator_; }
    /// Whether instances can be called, and are no errors, which are raised instead.
    bool isPlainlyInvokable() const { return current().isPlainlyInvokable_; }
    /// Whether instances have the members that the tables of the class show, but for those that one of them carries
    /// itself: no look-up of the class's own is asked, and they are neither classes nor do they stand for other values.
    bool isPlain() const { return current().isPlain_; }

private:
    const ClassFacts& current() const {
        if (shape_ != record_->shape())
            look();
        return *this;
    }
    void look() const;

    ling::internal::object_value_class* const record_;
    PyTypeObject* const type_;
    mutable const void* shape_ = nullptr;
    mutable bool isError_ = false;
    mutable bool isIterator_ = false;
    mutable bool isPlainlyInvokable_ = false;
    mutable bool isPlain_ = false;
};

/// The facts about a class, made on first need together with its Python type. They live for ever.
///
/// Returns  null with the Python error set when there is no memory.
/// Lock     must be held; it may be given up while another thread makes the type.
const ClassFacts* factsOf(ling::internal::object_value_class* record);

}  // namespace ling::python
