#pragma once

#include "ling/class.h"
#include "ling/class_record.h"
#include "ling/function.h"

#include <span>

namespace ling::internal {

/// What calling a class answers whose instances are made first and initialised then: the instance, or the error of
/// either step.
Any construct_by_initialiser(const Class_Generic& called, std::span<const Any> arguments);

/// How the values of a native class are made when the class is called. They never change, so they are made whole and
/// there is nothing for `$__init__` to do.
struct native_constructor {
    const Class_Generic& cls;
    /// Makes a value of the native class. Its parameters are those that calling the class takes.
    FunctionCL_Generic make;
    /// What an instance made without arguments holds.
    Any initial;
    /// The same value as an instance of a class derived from the native one, one reference. Null where instances of
    /// derived classes cannot be: for numbers, which have no object to carry the class.
    object_value* (*copy)(const Any& value, object_value_class* derived);

    /// What calling `called`, the native class or one derived from it, answers.
    Any construct(const Class_Generic& called, std::span<const Any> arguments) const;
    /// An instance without arguments.
    object_value* allocate(object_value_class* called) const;
    /// The method that shows the parameters and refuses to be called.
    FunctionCL_Generic initialiser() const;
};

/// The two hooks of a class for the constructor that `Get` answers.
template <const native_constructor& (*Get)()>
constexpr class_hooks constructor_hooks() {
    class_hooks hooks;
    hooks.allocate = [](object_value_class* cls) { return Get().allocate(cls); };
    hooks.construct = [](const Class_Generic& cls, std::span<const Any> arguments) {
        return Get().construct(cls, arguments);
    };
    return hooks;
}

}  // namespace ling::internal
