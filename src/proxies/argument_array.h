#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/function.h"

#include <cstddef>
#include <memory>
#include <span>

namespace ling::python {

/// The arguments of one call into Python, converted one by one: on the stack when they are few. The interpreter lock
/// must be held for as long as it lives.
class ArgumentArray {
public:
    explicit ArgumentArray(std::size_t capacity);
    ArgumentArray(const ArgumentArray&) = delete;
    ArgumentArray& operator=(const ArgumentArray&) = delete;
    ~ArgumentArray();

    /// Converts `value`. False when it has no Python form; a Python error may be pending then.
    bool add(const ling::Any& value);
    /// Calls with all that was added, by position, and with the names of a dictionary, where there is one. A new
    /// reference, or null with the Python error set, which is a `RecursionError` where mutual calls have used the stack
    /// of this thread up, and an interruption that is held.
    PyObject* call(PyObject* callable, PyObject* keywords = nullptr) const;
    /// The same for a function that takes `receiver` in front of them, borrowed.
    PyObject* callWith(PyObject* receiver, PyObject* function) const;

private:
    static bool mayCall();

    static constexpr std::size_t kSmall = 6;
    // The place in front is free for the callee to put a receiver into.
    PyObject* small_[kSmall + 1];
    std::unique_ptr<PyObject*[]> large_;
    PyObject** items_;
    std::size_t count_ = 0;
};

/// Calls `callable` with converted arguments: Python's own call, whose names are keywords and whose defaults are the
/// callee's. Answers the converted result, or an error result: an argument that is one, "Unable to convert an argument:
/// {}.", "Repeated argument '{}'.", or what the call raised. What the conversion of the result leaves pending stays
/// pending.
ling::Any callPython(PyObject* callable, std::span<const ling::Any> positional,
                     std::span<const ling::NamedArgument> named = {});
/// The same for a function that takes `receiver` in front of the arguments.
ling::Any callPythonWith(PyObject* receiver, PyObject* function, std::span<const ling::Any> positional);

/// The error result for an argument without a Python form; nothing stays pending.
ling::Any cannotConvert(const ling::Any& argument);

}  // namespace ling::python
