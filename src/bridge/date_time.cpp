#include "bridge/date_time.h"

#include "bridge/convert.h"
#include "bridge/loss.h"
#include "bridge/text.h"
#include "host/cached_import.h"
#include "host/error_scope.h"
#include "host/names.h"
#include "host/py_ref.h"

#include <array>

namespace ling::python {

namespace {

constinit CachedImport decimalImport{"decimal", "Decimal"};
constinit CachedImport dateImport{"datetime", "date"};
constinit CachedImport timeImport{"datetime", "time"};
constinit CachedImport dateTimeImport{"datetime", "datetime"};

constinit const Name kYear{"year"};
constinit const Name kMonth{"month"};
constinit const Name kDay{"day"};
constinit const Name kHour{"hour"};
constinit const Name kMinute{"minute"};
constinit const Name kSecond{"second"};
constinit const Name kMicrosecond{"microsecond"};
constinit const Name kFold{"fold"};
constinit const Name kUtcOffset{"utcoffset"};
constinit const Name kTotalSeconds{"total_seconds"};
constinit const Name kTzName{"tzname"};

constexpr unsigned kNanosecondsPerMicrosecond = 1000;

/// What stands in a module's dictionary may be anything; only a type can be the type of an object.
PyTypeObject* asType(PyObject* object) {
    return object != nullptr && PyType_Check(object) ? reinterpret_cast<PyTypeObject*>(object) : nullptr;
}

/// Reads the `int` attributes `names` of `object`, in order. No value when one is missing or something else.
template <std::size_t Count>
std::optional<std::array<long, Count>> readFields(PyObject* object, const Name* const (&names)[Count]) {
    std::array<long, Count> fields{};
    for (std::size_t i = 0; i < Count; ++i) {
        PyRef field = PyRef::steal(attribute(object, *names[i]));
        if (!field || !PyLong_Check(field.get()))
            return std::nullopt;
        fields[i] = PyLong_AsLong(field.get());
    }
    return fields;
}

PyRef callMethod(PyObject* object, const Name& name) {
    PyObject* key = name.object();
    return PyRef::steal(key != nullptr ? PyObject_CallMethodNoArgs(object, key) : nullptr);
}

/// The offset from UTC in whole seconds, where Python gives it as an `int`.
std::optional<std::int64_t> readOffset(PyObject* object) {
    PyRef offset = callMethod(object, kUtcOffset);
    if (!offset || offset.get() == Py_None)
        return std::nullopt;
    PyRef seconds = callMethod(offset.get(), kTotalSeconds);
    if (!seconds)
        return std::nullopt;
    if (!PyLong_Check(seconds.get())) {
        tellLoss(Loss::Zone);
        return std::nullopt;
    }
    return PyLong_AsLong(seconds.get());
}

unsigned char readFold(PyObject* object) {
    PyRef fold = PyRef::steal(attribute(object, kFold));
    return fold ? static_cast<unsigned char>(PyLong_AsLong(fold.get())) : static_cast<unsigned char>(0);
}

ling::String readZoneName(PyObject* object) {
    PyRef name = callMethod(object, kTzName);
    return ling::String::cast(toLing(name.get())).valueOr(ling::String());
}

unsigned char narrow(long field) { return static_cast<unsigned char>(field); }
unsigned microseconds(const ling::Time& time) { return time.nanoSeconds() / kNanosecondsPerMicrosecond; }

}  // namespace

PyTypeObject* decimalType() { return asType(decimalImport.get()); }
PyTypeObject* dateType() { return asType(dateImport.get()); }
PyTypeObject* timeType() { return asType(timeImport.get()); }
PyTypeObject* dateTimeType() { return asType(dateTimeImport.get()); }

std::optional<ling::Date> readDate(PyObject* object) {
    const auto fields = readFields(object, {&kYear, &kMonth, &kDay});
    if (!fields)
        return std::nullopt;
    const auto [year, month, day] = *fields;
    return ling::Date(static_cast<int>(year), narrow(month), narrow(day));
}

std::optional<ling::Time> readTime(PyObject* object) {
    const auto fields = readFields(object, {&kHour, &kMinute, &kSecond, &kMicrosecond});
    if (!fields)
        return std::nullopt;
    const auto [hour, minute, second, microsecond] = *fields;
    const unsigned nanoseconds = static_cast<unsigned>(microsecond) * kNanosecondsPerMicrosecond;
    const std::optional<std::int64_t> offset = readOffset(object);
    if (!offset)
        return ling::Time(narrow(hour), narrow(minute), narrow(second), nanoseconds);
    ErrorSteps steps;
    steps.endStep();
    const unsigned char fold = readFold(object);
    steps.endStep();
    return ling::Time(narrow(hour), narrow(minute), narrow(second), nanoseconds, *offset, readZoneName(object), fold);
}

std::optional<ling::DateTime> readDateTime(PyObject* object) {
    const std::optional<ling::Date> date = readDate(object);
    if (!date)
        return std::nullopt;
    const std::optional<ling::Time> time = readTime(object);
    return time ? std::optional(ling::DateTime(*date, *time)) : std::nullopt;
}

ling::Any readDecimal(PyObject* object) {
    PyRef shown = PyRef::steal(PyObject_Str(object));
    const ling::Any text = toLing(shown.get());
    const ling::Result<ling::String> string = ling::String::cast(text);
    return string ? ling::Decimal::fromString(*string) : text;
}

PyObject* makeDate(const ling::Date& date) {
    PyObject* type = dateImport.require();
    return type != nullptr ? PyObject_CallFunction(type, "iii", date.year(), date.month(), date.day()) : nullptr;
}

PyObject* makeTime(const ling::Time& time) {
    PyObject* type = timeImport.require();
    return type != nullptr
               ? PyObject_CallFunction(type, "iiii", time.hour(), time.minute(), time.second(), microseconds(time))
               : nullptr;
}

PyObject* makeDateTime(const ling::DateTime& dateTime) {
    const ling::Date date = dateTime.date();
    const ling::Time time = dateTime.time();
    PyObject* type = dateTimeImport.require();
    return type != nullptr ? PyObject_CallFunction(type, "iiiiiii", date.year(), date.month(), date.day(), time.hour(),
                                                   time.minute(), time.second(), microseconds(time))
                           : nullptr;
}

PyObject* makeDecimal(const ling::Decimal& decimal) {
    PyObject* type = decimalImport.require();
    PyRef text = PyRef::steal(type != nullptr ? textToPython(decimal.toString()) : nullptr);
    return text ? PyObject_CallOneArg(type, text.get()) : nullptr;
}

}  // namespace ling::python
