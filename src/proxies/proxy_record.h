#pragma once

#include <Python.h>

#include "ling/class.h"
#include "ling/stand_in.h"

#include <atomic>

namespace ling::python {

/// Drops a reference, or none, on whichever thread the last user of it went; keeps the object when no interpreter is
/// left to drop it in. Takes the interpreter lock. An error that is pending stays: it is not the business of the code
/// that the object's end may run.
void dropOnAnyThread(PyObject* owned);

/// What stands behind every proxy: an object of the runtime with one strong reference to a Python object.
///
/// The pointer lives here rather than in the runtime's field storage, so that reading it costs one load. The field
/// `$_pyobj` is answered from it.
class ProxyRecord : public ling::internal::object_value_stand_in {
public:
    explicit ProxyRecord(ling::internal::object_value_class* klass) : object_value_stand_in(klass) {}

    const void* original() const noexcept override {
        PyObject* held = pythonObject();
        return held != nullptr ? static_cast<const void*>(held) : this;
    }
    PyObject* pythonObject() const noexcept { return object_.load(std::memory_order_acquire); }
    /// Adds a reference to `object` and drops the one before. The interpreter lock must be held.
    void hold(PyObject* object);

    ling::Any field(std::size_t position) const override;
    void setField(std::size_t position, ling::Any value) override;

protected:
    ~ProxyRecord() override { dropOnAnyThread(object_.exchange(nullptr)); }

private:
    bool isObjectField(std::size_t position) const;

    std::atomic<PyObject*> object_{nullptr};
};

/// What a proxy of exactly the class `cls` holds, borrowed. Null for any other value: of classes that derive from those
/// of the proxies, and override what they like, nothing is known.
inline PyObject* exactlyHeld(const ling::Any& value, const ling::internal::object_value_class* cls) noexcept {
    const ling::internal::object_value* proxy = value.object();
    return proxy != nullptr && proxy->ownClass() == cls ? static_cast<const ProxyRecord*>(proxy)->pythonObject()
                                                        : nullptr;
}

}  // namespace ling::python
