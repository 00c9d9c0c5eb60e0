#pragma once

#include <Python.h>

#include "bridge/convert.h"
#include "bridge/small_integer.h"
#include "host/interruption.h"
#include "ling/error.h"
#include "lingobject/instance.h"

#include <utility>

/// The adapters between what `ling` operations answer and what a slot must give to Python.
///
/// A conversion may leave an error pending beside a value that says nothing (an integer beyond 64 bits). Python must
/// never see a result together with an error, so an argument that did that is raised before anything is called, and a
/// result that did it is raised in the place of the value. So is an interruption that was held on the way, whatever the
/// operation answered.
namespace ling::python {

/// Converts an argument. False with the Python error set when the conversion left one pending.
inline bool takeArgument(PyObject* object, ling::Any& converted) {
    if (readSmallInteger(object, converted))
        return true;
    converted = toLingLocked(object);
    return !mustRaise();
}

/// A converted result: a new reference, or null with the Python error set. An error result raises the exception that
/// stands for it.
inline PyObject* giveResult(ling::Any&& result) {
    if (mustRaise())
        return nullptr;
    if (result.is(ling::Kind::Integer))
        return PyLong_FromLongLong(result.asInteger());  // As all of them are converted, without a look at the rules.
    if (!result.isHeap())
        return toPythonLocked(result);
    if (result.is(ling::Kind::Lazy))
        result = ling::internal::result_unwrap_lazy(std::move(result));
    PyObject* converted = toPythonLocked(std::move(result));
    // What lies behind an object can leave an error beside its value.
    if (converted != nullptr && mustRaise()) {
        Py_DECREF(converted);
        return nullptr;
    }
    return converted;
}
inline PyObject* giveResult(const ling::Any& result) { return giveResult(ling::Any(result)); }

/// Raises `type` with a text of ours, unless an interruption goes before it. Always null, for slots that end with it.
PyObject* raise(PyObject* type, const ling::String& text);
/// Raises `RuntimeError` with the message of an error result, and nothing else; the very exception that the error
/// stands for, if it stands for one.
PyObject* raiseMessage(const ling::Any& error);
/// The message of an error result, or an empty text.
ling::String messageOf(const ling::Any& error);

/// A converted result of an operation whose failure is told by a `RuntimeError` with the plain message.
inline PyObject* giveResultOrMessage(ling::Any result) {
    if (result.is(ling::Kind::Lazy))
        result = ling::internal::result_unwrap_lazy(std::move(result));
    return ling::internal::is_error_result(result) ? raiseMessage(result) : giveResult(std::move(result));
}

/// The outcome of an operation without a result: 0, or -1 with a `RuntimeError` with the plain message.
inline int giveOutcome(const ling::Any& outcome) {
    if (outcome.isHeap()) {
        const ling::Any value = ling::internal::result_unwrap_lazy(outcome);
        if (ling::internal::is_error_result(value))
            (void)raiseMessage(value);
    }
    return mustRaise() ? -1 : 0;
}

/// When the value is an error, raises the exception that stands for it and answers true.
inline bool raisesItself(const ling::Any& value) {
    if (!value.is(ling::Kind::Object) || !ling::internal::is_instance<ling::Error>(value))
        return false;
    Py_XDECREF(toPythonLocked(value));
    return true;
}

/// When what a lazy value came to is an error, raises its exception and answers true.
inline bool failsLate(const Receiver& receiver) { return receiver.isResolved() && raisesItself(*receiver); }

}  // namespace ling::python
