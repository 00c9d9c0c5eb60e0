#pragma once

#include <Python.h>

#include <utility>

namespace ling::python {

/// One owned reference to a Python object, or null.
///
/// `steal` takes over a new reference, `borrow` adds one to a borrowed pointer: which of the two it is stands where
/// the pointer enters. Made, copied, assigned and destroyed only with the interpreter lock held, so it must go before
/// the guard does. Dropping the last reference can run any code.
class PyRef {
public:
    PyRef() noexcept = default;  ///< Null.
    PyRef(const PyRef& other) noexcept : object_(Py_XNewRef(other.object_)) {}
    PyRef(PyRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    /// The old reference goes last, when this one is whole again.
    PyRef& operator=(PyRef other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~PyRef() { Py_XDECREF(object_); }

    /// Takes over a new reference. Null, the failure of many calls, gives null.
    [[nodiscard]] static PyRef steal(PyObject* object) noexcept { return PyRef(object); }
    /// Adds a reference of its own.
    [[nodiscard]] static PyRef borrow(PyObject* object) noexcept { return PyRef(Py_XNewRef(object)); }

    /// The object, borrowed: valid as long as this reference lives.
    PyObject* get() const& noexcept { return object_; }
    PyObject* get() && = delete;  // The object would be gone before the pointer is used.
    /// Gives the reference away: the caller owns it.
    [[nodiscard]] PyObject* release() noexcept { return std::exchange(object_, nullptr); }
    explicit operator bool() const noexcept { return object_ != nullptr; }

private:
    explicit PyRef(PyObject* owned) noexcept : object_(owned) {}

    PyObject* object_ = nullptr;
};

}  // namespace ling::python
