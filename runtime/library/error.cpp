#include "ling/error.h"

#include "interfaces/optional_method.h"
#include "library/define.h"
#include "ling/class_builder.h"
#include "ling/indirect_values.h"

#include <cxxabi.h>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <typeinfo>

namespace ling {

using internal::object_value_error;

namespace {

object_value_error& record(const Any& error) noexcept { return *static_cast<object_value_error*>(error.object()); }

/// Made once: iterations end often.
const String& endMessage() {
    static const String& message = *new String(u"The iteration has ended.");
    return message;
}

constexpr const char* kOutOfMemory = "Out of memory.";

/// The error for when there is no memory for one. Many may have it at once, so it stays as it was made.
const Error& preparedError() {
    static const Error& error = *new Error(kOutOfMemory, true);
    return error;
}

bool isError(const Any& value, const Class_Generic& cls) noexcept {
    // By what it is made of as well: a class may derive from an error and from a class that makes other objects.
    return value.is(Kind::Object) && internal::cast_object(value, cls) != nullptr &&
           dynamic_cast<object_value_error*>(value.object()) != nullptr;
}

}  // namespace

Error::Error(const String& message, bool asResult)
    : Any(Any::adopt(new object_value_error(getClass().record(), message, asResult))) {}

Error::Error(const Class_Generic& cls, const String& message, bool asResult)
    : Any(Any::adopt(new object_value_error(cls.record(), message, asResult))) {}

String Error::message() const { return unchecked<String>(record(*this).message()); }
Any Error::cause() const { return record(*this).cause(); }
Any Error::exception() const { return record(*this).exception(); }
void Error::setException(const Any& exception) const { record(*this).setException(exception); }
Any Error::origin() const { return record(*this).origin(); }
void Error::setOrigin(const Any& origin) const { record(*this).setOrigin(origin); }

void Error::setCause(const Any& cause) const {
    if (!cause.isSameAs(*this))  // Nothing is its own cause, and an error that held itself would never be released.
        record(*this).setCause(cause);
}

Result<Error> Error::cast(const Any& value) {
    if (isError(value, getClass()))
        return unchecked<Error>(value);
    return Result<Error>::failure(internal::cast_error(value, getClass()));
}

const Class_Generic& Error::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::native_class("Error", {}));
    return cls;
}

Type Error::getType() { return Type(getClass()); }

StopIteration::StopIteration() : Error(getClass(), endMessage(), true) {}

Result<StopIteration> StopIteration::cast(const Any& value) {
    if (isError(value, getClass()))
        return unchecked<StopIteration>(value);
    return Result<StopIteration>::failure(internal::cast_error(value, getClass()));
}

const Class_Generic& StopIteration::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::native_class("StopIteration", {Error::getClass()}));
    return cls;
}

Type StopIteration::getType() { return Type(getClass()); }

ErrorException::ErrorException(const Any& error) : error_(error) {
    const Result<Error> known = Error::cast(error);
    text_ = known ? known->message().toStdString() : std::string();
}

namespace internal {

object_value_error::object_value_error(object_value_class* klass, const String& message, bool asResult)
    : object_value_object(klass), message_(message) {
    markErrorResult(asResult);
}

Any object_value_error::locked(const Any& part) const {
    std::lock_guard hold(guard());
    return part;
}

void object_value_error::store(Any& part, Any value) {
    if (preparedError().object() == this)
        return;
    std::lock_guard hold(guard());
    part.swap(value);
    // What was there before goes with the parameter, after the guard.
}

namespace {

/// What is thrown without a word is told by its type.
std::string textOf(const std::exception& exception) {
    const char* text = exception.what();
    if (text != nullptr && *text != '\0')
        return text;
    const char* mangled = typeid(exception).name();
    const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(mangled, nullptr, nullptr, nullptr),
                                                      &std::free);
    return std::string("An exception of type '") + (name ? name.get() : mangled) + "'.";
}

/// An error of its own wherever that can be had: the prepared one belongs to everybody.
Any makeError(const char* text) {
    try {
        return failure(text);
    } catch (const std::bad_alloc&) {
        return preparedError();
    }
}

}  // namespace

Any error_of_exception() {
    try {
        throw;
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (const std::bad_alloc&) {
        note_passing_failure();
        return makeError(kOutOfMemory);
    } catch (const ErrorException& exception) {
        return exception.error();
    } catch (const std::exception& exception) {
        return contain([&exception] { return failure(String(textOf(exception))); });
    } catch (...) {
        return makeError("An exception of an unknown kind.");
    }
}

namespace {

object_value* allocateError(object_value_class* klass) { return new object_value_error(klass, String(), false); }

/// Calling an error class makes an error result. Its initialiser cannot tell so by what it answers, which is looked at
/// only to report that the arguments do not fit.
Any constructError(const Class_Generic& cls, std::span<const Any> arguments) {
    const Error error(cls, String());
    const Any outcome = error.callMethod(Any::$__init__, arguments);
    return is_error_result(outcome) && !outcome.isSameAs(error) ? outcome : error;
}

}  // namespace

void define_error_members() {
    extend_class(Error::getClass())
        .doc(
            "What went wrong. Called with a message, the class makes an error result, which an operation answers in "
            "the place of a value.")
        .hooks({.allocate = &allocateError, .construct = &constructError})
        .method(Any::$__init__, optional_method(
                                    Any::$__init__, "message", {String()},
                                    [](const Error& self, const String& message) { record(self).setMessage(message); },
                                    "Sets the message."))
        .method(
            Any::$__display__, "", [](const Error& self) { return self.message(); }, "The message.")
        .property("message",
                  property_builder().getter([](const Error& self) { return self.message(); }).doc("What went wrong."))
        .property("cause", property_builder()
                               .getter([](const Error& self) { return self.cause(); })
                               .setter([](const Error& self, const Any& cause) { self.setCause(cause); })
                               .doc("The error that led to this one, or none."))
        .property("exception",
                  property_builder()
                      .getter([](const Error& self) { return self.exception(); })
                      .setter([](const Error& self, const Any& exception) { self.setException(exception); })
                      .doc("The exception of another language that this error stands for, or none."))
        .property("origin", property_builder()
                                .getter([](const Error& self) { return self.origin(); })
                                .doc("What the language that the error came from raised, or none."))
        .build();
    extend_class(StopIteration::getClass()).doc("The end of an iteration.").build();
    (void)endMessage();
    (void)preparedError();
}

}  // namespace internal

}  // namespace ling
