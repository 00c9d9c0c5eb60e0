#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/date_time.h"
#include "ling/decimal.h"

#include <optional>

namespace ling::python {

/// Dates, times and decimals, field by field. Everything here needs the interpreter lock.

/// Python's own types for these values, borrowed for the life of the process; each is imported when it is first asked
/// for. Null, for good and with no error pending, when the import fails: then no object is of that type.
PyTypeObject* decimalType();
PyTypeObject* dateType();
PyTypeObject* timeType();
PyTypeObject* dateTimeType();

/// The fields of a Python date or date-time. No value when one is missing or not an `int`; the error of a failed read
/// stays pending.
std::optional<ling::Date> readDate(PyObject* object);
/// The same for a time or date-time. The offset from UTC, with zone name and fold, comes along only if
/// `utcoffset().total_seconds()` is an `int`; with Python's own `timedelta` it is a float, so that aware times arrive
/// as naive ones.
std::optional<ling::Time> readTime(PyObject* object);
/// Both together.
std::optional<ling::DateTime> readDateTime(PyObject* object);
/// The number in the text of a `decimal.Decimal`, or an error result, or what the text was converted to if that is not
/// a string.
ling::Any readDecimal(PyObject* object);

/// New references, or null with Python's exception set: an `ImportError` where the type cannot be had. No zone goes
/// along; nanoseconds are cut to microseconds.
PyObject* makeDate(const ling::Date& date);
PyObject* makeTime(const ling::Time& time);
PyObject* makeDateTime(const ling::DateTime& dateTime);
PyObject* makeDecimal(const ling::Decimal& decimal);

}  // namespace ling::python
