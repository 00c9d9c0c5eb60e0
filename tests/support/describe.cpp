#include "support/describe.h"

#include "host/py_ref.h"
#include "ling/byte_array.h"
#include "ling/class.h"
#include "ling/comparison.h"
#include "ling/date_time.h"
#include "ling/decimal.h"
#include "ling/error.h"

#include <Python.h>

namespace {

template <class Handle>
bool is(const ling::Any& value) {
    return ling::internal::cast_object(value, Handle::getClass()) != nullptr;
}

std::string describeObject(const ling::Any& value) {
    if (const auto cls = ling::Class_Generic::cast(value))
        return "class " + cls->name().toStdString();
    if (is<ling::Error>(value))
        return (ling::internal::is_error_result(value) ? "error: " : "plain error: ") +
               ling::unchecked<ling::Error>(value).message().toStdString();
    if (is<ling::Date>(value) || is<ling::Time>(value) || is<ling::DateTime>(value) || is<ling::Decimal>(value) ||
        is<ling::String>(value))
        return ling::raw_class_of(value).name().toStdString() + " " + ling::display(value).toStdString();
    return ling::raw_class_of(value).name().toStdString();
}

}  // namespace

std::string describe(const ling::Any& value) {
    if (value.isNone())
        return "none";
    switch (value.kind()) {
        case ling::Kind::Boolean:
            return value.asBoolean() ? "true" : "false";
        case ling::Kind::Integer:
            return "integer " + std::to_string(value.asInteger());
        case ling::Kind::Float:
            return "float " + ling::display(value).toStdString();
        case ling::Kind::String:
            return "string '" + ling::display(value).toStdString() + "'";
        case ling::Kind::ByteArray:
            return "bytes '" + ling::unchecked<ling::ByteArray>(value).toString().toStdString() + "'";
        case ling::Kind::Undefined:
            return "undefined";
        case ling::Kind::Object:
            return describeObject(value);
        default:
            return ling::kind_of(value).toStdString();
    }
}

std::string takePending() {
    using ling::python::PyRef;
    PyRef error = PyRef::steal(PyErr_GetRaisedException());
    if (!error)
        return {};
    PyRef shown = PyRef::steal(PyObject_Str(error.get()));
    const char* text = shown ? PyUnicode_AsUTF8(shown.get()) : nullptr;
    PyErr_Clear();
    return std::string(Py_TYPE(error.get())->tp_name) + ": " + (text != nullptr ? text : "");
}
