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
///          with lone surrogates: empty). Whoever was called by Python has to look for it, since Python must never see
///          a result together with an error; at the outermost entry it is forgotten.
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

/// The pending Python exception as an error result. No exception is pending afterwards.
///
/// Returns  no value when nothing is pending, and when what is pending is no `Exception` (`KeyboardInterrupt`,
///          `SystemExit`) or stands for a `ling` value that is no error.
/// Lock     must be held.
std::optional<ling::Error> fetchPythonError();

/// `fetchPythonError` for functions that answer a value: the error result, or none.
ling::Any takePythonError();

}  // namespace ling::python
