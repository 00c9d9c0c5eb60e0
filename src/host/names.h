#pragma once

#include <Python.h>

#include <atomic>

namespace ling::python {

/// The name of a Python attribute or key, interned the first time it is needed and kept for the process, so that no
/// look-up spells its name anew. For namespace-scope constants; needs no initialisation at run time.
class Name {
public:
    constexpr explicit Name(const char* text) noexcept : text_(text) {}
    Name(const Name&) = delete;
    Name& operator=(const Name&) = delete;

    const char* text() const noexcept { return text_; }
    /// The interned `str`, borrowed, valid for ever. Null, with the Python error set, when there is no memory for it.
    /// Needs the interpreter lock.
    PyObject* object() const noexcept {
        PyObject* known = object_.load(std::memory_order_acquire);
        return known != nullptr ? known : intern();
    }

private:
    PyObject* intern() const noexcept;

    const char* const text_;
    mutable std::atomic<PyObject*> object_{nullptr};
};

/// `object.name`: a new reference, or null with the Python error set.
inline PyObject* attribute(PyObject* object, const Name& name) noexcept {
    PyObject* key = name.object();
    return key != nullptr ? PyObject_GetAttr(object, key) : nullptr;
}

namespace names {

inline constinit const Name doc{"__doc__"};
inline constinit const Name path{"path"};
inline constinit const Name sys{"sys"};

}  // namespace names

}  // namespace ling::python
