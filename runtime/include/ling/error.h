#pragma once

#include "ling/any.h"
#include "ling/class_record.h"
#include "ling/result.h"
#include "ling/string.h"

#include <exception>
#include <string>
#include <utility>

namespace ling {

/// What went wrong, as a value.
///
/// An error built with the flag set is an error result: it travels in the place of the value that an operation could
/// not give, and `is_error_result` finds it. Without the flag it is a plain value that can be stored and passed. Any
/// class derived from `Error` makes errors; calling such a class with a message makes an error result.
class LING_EXPORT Error : public Any {
public:
    explicit Error(const String& message, bool asResult = false);
    /// An error of the class `cls`, which is `Error` or derived from it.
    Error(const Class_Generic& cls, const String& message, bool asResult = true);

    String message() const;
    /// The error that led to this one, or none.
    Any cause() const;
    void setCause(const Any& cause) const;
    /// The foreign exception that this error stands for, as its language gave it, or none.
    Any exception() const;
    void setException(const Any& exception) const;
    /// What the language that the error came from raised, or none: it can be asked for more than the message says. The
    /// error keeps it alive. Unlike `exception`, it changes nothing in how the error is raised again.
    Any origin() const;
    void setOrigin(const Any& origin) const;

    /// Any error, flagged or not. Never fails on an error result for being one.
    static Result<Error> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

/// The end of an iteration: always an error result.
class LING_EXPORT StopIteration : public Error {
public:
    StopIteration();
    static Result<StopIteration> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

namespace internal {

/// Resolves lazy values until something else is there: a value or an error result. External values are loaded.
LING_EXPORT Any result_unwrap_lazy(Any value);

/// The value itself, or what a lazy value, an external value or a weak reference stands for.
LING_EXPORT Any unwrap(const Any& value);

class LING_EXPORT object_value_error : public object_value_object {
public:
    object_value_error(object_value_class* klass, const String& message, bool asResult);

    Any message() const { return locked(message_); }
    Any cause() const { return locked(cause_); }
    Any exception() const { return locked(exception_); }
    Any origin() const { return locked(origin_); }
    void setMessage(Any message) { store(message_, std::move(message)); }
    void setCause(Any cause) { store(cause_, std::move(cause)); }
    void setException(Any exception) { store(exception_, std::move(exception)); }
    void setOrigin(Any origin) { store(origin_, std::move(origin)); }

private:
    Any locked(const Any& part) const;
    void store(Any& part, Any value);

    Any message_;
    Any cause_;
    Any exception_;
    Any origin_;
};

/// An error result of the class `Error`.
inline Any failure(const String& message) { return Error(message, true); }

/// The exception that is being handled, as an error result with its `what()`; memory that has ended is "Out of
/// memory.", an error that is there without getting any. The one place where exceptions become errors, for `catch
/// (...)` alone: what unwinds a thread that ends goes on.
LING_EXPORT Any error_of_exception();

/// What `operation` answers, or the error that stands for the exception that it threw. Foreign code, and all that may
/// get memory on the way to it, runs inside one of these, so that no exception leaves a call.
template <class Operation>
Any contain(Operation&& operation) {
    try {
        return operation();
    } catch (...) {
        return error_of_exception();
    }
}

}  // namespace internal

/// An error result on its way through C++ code that has no other way to pass it on: what a callback throws when it
/// fails, and what a native function may throw. The function's caller gets the error, the same object.
class LING_EXPORT ErrorException : public std::exception {
public:
    explicit ErrorException(const Any& error);
    const Any& error() const noexcept { return error_; }
    const char* what() const noexcept override { return text_.c_str(); }

private:
    Any error_;
    std::string text_;
};

using internal::is_error_result;
using internal::unwrap;

/// Makes an error result: what an operation answers that cannot give its value. Each place "{}" of the text takes one
/// of `values`, as `String::arg` has it; a text without values stays as it is.
template <class... Values>
Failure failure(const String& message, const Values&... values) {
    if constexpr (sizeof...(Values) == 0)
        return Failure(Error(message, true));
    else
        return Failure(Error(message.arg(values...), true));
}
/// The same of the class `cls`, which is `Error` or derived from it.
template <class... Values>
Failure failure(const Class_Generic& cls, const String& message, const Values&... values) {
    if constexpr (sizeof...(Values) == 0)
        return Failure(Error(cls, message, true));
    else
        return Failure(Error(cls, message.arg(values...), true));
}

}  // namespace ling
