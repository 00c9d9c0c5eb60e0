#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/error.h"

#include <optional>

namespace ling::python {

/// Values and errors across the border, as everybody below the converters sees them. Proxies, wrappers and functions
/// convert what they hold through this face; the converters themselves, which make the proxies and wrappers, stand
/// above them.
///
/// All but `takePythonError` and `fetchPythonError` take the interpreter lock themselves.

/// A Python object as a `ling` value: a native value where there is one (none, booleans, integers, floats, text, bytes,
/// dates, decimals, errors), the very value that a wrapper holds, else a proxy, a class or a function around the
/// object.
///
/// Returns  always a value. An exception object gives an error result, as do some others whose conversion fails.
/// Owns     `object` is borrowed and may be null, which gives none. The result keeps what it needs alive.
/// Fails    by leaving a Python error pending beside a value that says nothing (an integer beyond 64 bits: -1; text
///          with lone surrogates: empty), towards its direct caller alone. A slot raises it (`mustRaise`). An operation
///          on many values ends with it (`takeConversionError`). Who wants the value all the same forgets it
///          (`forgetError`), or answers the value with the error still pending and nothing done in between that can run
///          Python code (`ErrorSteps` keeps it where something is).
/// Expects  that no Python error is pending. Look at one first: `takePythonError`.
ling::Any toLing(PyObject* object);

/// A `ling` value as a Python object: a native object for scalars, text, bytes, tuples, dates and decimals, the very
/// object that a proxy holds, else a wrapper around the value.
///
/// Returns  a new reference, or null: for an error, which is then the pending Python exception; when Python refuses the
///          value (a year out of range), with its exception pending; for a proxy that holds nothing, with nothing
///          pending.
PyObject* toPython(const ling::Any& value);

/// The same two for callers that hold the interpreter lock, as every slot and every loop over items does: taking it
/// again costs more than converting a number.
ling::Any toLingLocked(PyObject* object);
PyObject* toPythonLocked(const ling::Any& value);
/// A value that nobody else needs: where a wrapper is made, it takes the reference over.
PyObject* toPythonLocked(ling::Any&& value);

/// The value of an object whose conversion runs no code and leaves no error: one of exactly the types `int`, `str`,
/// `float`, `bool`, `None`, `list`, `tuple` and `dict`, unless something would be lost. False, with nothing done that
/// anybody could see, for any other. Needs the interpreter lock, with no error pending.
bool toLingPlainly(PyObject* object, ling::Any& value);

/// The pending Python exception as an error result. No exception is pending afterwards.
///
/// Returns  no value when nothing is pending, and when what is pending stands for a `ling` value that is no error.
///          An interruption is none either:
///          it is held (`host/interruption.h`).
/// Lock     must be held.
std::optional<ling::Error> fetchPythonError();

/// `fetchPythonError` for functions that answer a value: an error result for whatever is pending, or none when nothing
/// is. For an interruption the error "The call was interrupted.".
ling::Any takePythonError();

/// What a conversion left pending, as an error result, or none when nothing is pending. The error stands for that very
/// exception: given to Python, whatever it went through before, it is raised as it was. Needs the interpreter lock.
ling::Any takeConversionError();

/// The converted result of a call, or the pending exception as an error result. Takes `result` over; null is a failure.
/// What a conversion leaves pending stays pending, unless it is an interruption. Needs the interpreter lock.
ling::Any takeResult(PyObject* result);

}  // namespace ling::python
