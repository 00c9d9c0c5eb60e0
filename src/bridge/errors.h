#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/class.h"
#include "ling/error.h"

namespace ling::python {

/// Errors crossing the border. `fetchPythonError` (`bridge/convert.h`) takes the pending exception over; what is here
/// serves it and the converters. An error that crosses and comes back is the same error: an exception that was raised
/// for one carries it in its attribute "ling". Everything here needs the interpreter lock.

/// An instance of `Exception` as a `ling` value: what its attribute "ling" holds, else an error result with the text of
/// `str(exception)`; for a syntax error the whole text of `traceback.format_exception`. Such an error remembers the
/// exception as its origin (`PythonException`). Whatever goes wrong in asking the exception is forgotten: nothing is
/// pending afterwards that was not before.
ling::Any errorFromException(PyObject* exception);

/// The whole text that Python shows for an exception: `traceback.format_exception`, joined. Empty where that cannot be
/// had, with nothing pending. Runs Python code.
ling::String formattedException(PyObject* exception);

/// The `ling` class of the error for exceptions of this Python type: `StopIteration` for exactly that, else the class
/// for the type if its instances are errors, else `Error`. Null gives `Error`.
ling::Class_Generic errorClassOf(PyObject* exceptionType);

/// The Python exception class that stands for a `ling` error class, borrowed for the life of the process: named like
/// it, derived from `RuntimeError`, with a class attribute "ling" that is None. Null, with nothing pending, when Python
/// cannot make it.
PyObject* exceptionClassFor(const ling::Class_Generic& cls);

/// The Python class of the exceptions that errors of this class are raised as: Python's own `StopIteration` and
/// `RuntimeError` for those that mean the same, else the one that was made for the class. Borrowed, or null.
PyObject* exceptionClassRaisedFor(const ling::Class_Generic& cls);

/// Raises the very exception that an error stands for (`takeConversionError`), or an interruption that goes before any
/// error. False, with the pending error as it was, when the error stands for none: then it is for the caller to raise.
bool raiseCarried(const ling::Any& error);

/// Makes `error` the pending Python exception, in place of one that is pending already. Always answers null, for
/// callers that pass it on. An error that stands for a very exception is raised as that. A plain `Error` becomes a
/// `RuntimeError` with its message; any other an instance, made without arguments, of the class that stands for its
/// own, with the error in the attribute "ling" and its message as a note. Where the error came from an exception, that
/// one is the cause (`__cause__`).
PyObject* raiseError(const ling::Error& error);

}  // namespace ling::python
