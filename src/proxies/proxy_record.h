#pragma once

#include <Python.h>

#include "ling/class_record.h"

#include <atomic>

namespace ling::python {

/// What stands behind every proxy: an object of the runtime with one strong reference to a Python object.
///
/// The pointer lives here rather than in the runtime's field storage, so that reading it costs one load. The field
/// `$_pyobj` is answered from it.
class ProxyRecord : public ling::internal::object_value_object {
public:
    explicit ProxyRecord(ling::internal::object_value_class* klass) : object_value_object(klass) {}

    PyObject* pythonObject() const noexcept { return object_.load(std::memory_order_acquire); }
    /// Adds a reference to `object` and drops the one before. The interpreter lock must be held.
    void hold(PyObject* object);

    ling::Any field(std::size_t position) const override;
    void setField(std::size_t position, ling::Any value) override;

protected:
    /// Takes the interpreter lock, on whichever thread the last reference went; keeps the object when no interpreter is
    /// left to drop it in.
    ~ProxyRecord() override;

private:
    bool isObjectField(std::size_t position) const;

    std::atomic<PyObject*> object_{nullptr};
};

}  // namespace ling::python
