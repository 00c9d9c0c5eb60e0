#pragma once

#include <Python.h>

#include <atomic>

namespace ling::python {

/// An attribute of a Python module, imported when it is first asked for and kept for the process, the failure to import
/// it included, unless an interruption ended the import. For namespace-scope constants; needs no initialisation at run
/// time.
///
/// Nobody waits for anybody: two threads may import at the same time, and the first one to finish decides for all.
class CachedImport {
public:
    constexpr CachedImport(const char* module, const char* attribute) noexcept
        : module_(module), attribute_(attribute) {}
    CachedImport(const CachedImport&) = delete;
    CachedImport& operator=(const CachedImport&) = delete;

    /// The attribute, borrowed, or null when it cannot be had. A pending error stays as it is, and none is added. May
    /// run any Python code the first time. Needs the interpreter lock.
    PyObject* get() noexcept { return settled_.load(std::memory_order_acquire) ? object_ : find(); }

    /// The same for those who cannot go on without it: null comes with an `ImportError` that names module and
    /// attribute, and has what the import ended with as its cause.
    PyObject* require() noexcept;

private:
    PyObject* find() noexcept;

    const char* const module_;
    const char* const attribute_;
    PyObject* object_ = nullptr;  // Owned. Written once, by the thread that settles it.
    PyObject* reason_ = nullptr;  // Owned. Without traceback and context, which would keep frames alive.
    std::atomic<bool> settled_{false};
};

}  // namespace ling::python
