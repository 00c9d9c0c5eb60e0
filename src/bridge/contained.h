#pragma once

#include <Python.h>

#include <type_traits>

/// Where Python calls into the plug-in. Python is C: an exception that reaches it ends the process. What is thrown on
/// the way, memory that has ended above all, therefore becomes a Python error here.
namespace ling::python {

/// Makes the exception that is being handled the pending Python error.
void raiseCaughtException();

template <auto Function>
struct ContainedFunction;
template <class Result, class... Arguments, Result (*Function)(Arguments...)>
struct ContainedFunction<Function> {
    static Result call(Arguments... arguments) {
        try {
            return Function(arguments...);
        } catch (...) {
            raiseCaughtException();
        }
        if constexpr (std::is_pointer_v<Result>)
            return nullptr;
        else
            return static_cast<Result>(-1);
    }
};

/// `Function` as Python may call it: null or -1 with the error set for an exception.
template <auto Function>
inline constexpr auto contained = &ContainedFunction<Function>::call;

}  // namespace ling::python
