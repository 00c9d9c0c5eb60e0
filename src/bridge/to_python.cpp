#include "bridge/convert.h"
#include "bridge/date_time.h"
#include "bridge/errors.h"
#include "bridge/text.h"
#include "host/gil_guard.h"
#include "host/py_ref.h"
#include "host/stack_room.h"
#include "ling/byte_array.h"
#include "ling/indirect_values.h"
#include "ling/list.h"
#include "lingobject/wrapper.h"
#include "proxies/python_proxy.h"
#include "proxies/python_type.h"

#include <array>

namespace ling::python {

namespace {

PyObject* convert(const ling::Any& value);

/// Values may lie in each other as deep as memory allows; the stack has to hold their conversion.
bool hasRoom() {
    if (hasStackRoom())
        return true;
    PyErr_SetString(PyExc_RecursionError, "The value is nested too deeply.");
    return false;
}

template <class Handle>
bool isInstance(const ling::Any& value) {
    return ling::internal::cast_object(value, Handle::getClass()) != nullptr;
}

PyObject* fromBoolean(const ling::Any& value) { return PyBool_FromLong(value.asBoolean()); }

PyObject* fromByteArray(const ling::Any& value) {
    const auto& bytes = ling::unchecked<ling::ByteArray>(value);
    return PyBytes_FromStringAndSize(bytes.data(), static_cast<Py_ssize_t>(bytes.size()));
}

PyObject* fromFloat(const ling::Any& value) { return PyFloat_FromDouble(value.asFloat()); }

PyObject* fromInteger(const ling::Any& value) { return PyLong_FromLongLong(value.asInteger()); }

PyObject* fromString(const ling::Any& value) { return textToPython(ling::unchecked<ling::String>(value)); }

PyObject* fromTuple(const ling::Any& value) {
    if (!hasRoom())
        return nullptr;
    const auto& items = *static_cast<const ling::internal::object_value_tuple*>(value.object());
    PyRef result = PyRef::steal(PyTuple_New(static_cast<Py_ssize_t>(items.size())));
    for (std::size_t i = 0; result && i < items.size(); ++i) {
        PyObject* item = convert(items.at(i));
        if (item == nullptr)
            return nullptr;
        PyTuple_SET_ITEM(result.get(), static_cast<Py_ssize_t>(i), item);
    }
    return result.release();
}

PyObject* fromExternal(const ling::Any& value) {
    if (!hasRoom())  // It may load itself.
        return nullptr;
    return convert(static_cast<const ling::internal::object_value_external*>(value.object())->load());
}

PyObject* fromUndefined(const ling::Any&) { return Py_NewRef(Py_NotImplemented); }

// Objects. A rule answers a new reference, or null with the Python error set, or that the value is not one of its.

using Answer = std::optional<PyObject*>;
using ObjectRule = Answer (*)(const ling::Any&);
constexpr std::nullopt_t kNotMine = std::nullopt;

/// Null, with nothing pending, for a proxy that holds nothing.
Answer proxy(const ling::Any& value) {
    return isPythonProxy(value) ? Answer(Py_XNewRef(PythonProxy::pythonObject(value))) : kNotMine;
}

Answer classObject(const ling::Any& value) {
    if (value.object()->ownClass() != nullptr)  // Classes alone have none.
        return kNotMine;
    PyTypeObject* type = pythonTypeOf(ling::unchecked<ling::Class_Generic>(value));
    return type != nullptr ? Py_NewRef(reinterpret_cast<PyObject*>(type)) : wrapValue(value);
}

Answer date(const ling::Any& value) {
    return isInstance<ling::Date>(value) ? Answer(makeDate(ling::unchecked<ling::Date>(value))) : kNotMine;
}

Answer decimal(const ling::Any& value) {
    return isInstance<ling::Decimal>(value) ? Answer(makeDecimal(ling::unchecked<ling::Decimal>(value))) : kNotMine;
}

Answer error(const ling::Any& value) {
    return isInstance<ling::Error>(value) ? Answer(raiseError(ling::unchecked<ling::Error>(value))) : kNotMine;
}

/// A part of a longer string.
Answer stringObject(const ling::Any& value) {
    return isInstance<ling::String>(value) ? Answer(fromString(value)) : kNotMine;
}

Answer time(const ling::Any& value) {
    return isInstance<ling::Time>(value) ? Answer(makeTime(ling::unchecked<ling::Time>(value))) : kNotMine;
}

Answer dateTime(const ling::Any& value) {
    return isInstance<ling::DateTime>(value) ? Answer(makeDateTime(ling::unchecked<ling::DateTime>(value))) : kNotMine;
}

Answer anyObject(const ling::Any& value) { return wrapValue(value); }

/// The first rule that takes the object decides.
constexpr ObjectRule kObjectRules[] = {
    proxy,         // the very object that came from Python
    classObject,   // the very type that came from Python, or a wrapper
    date,          // `datetime.date`
    decimal,       // `decimal.Decimal`
    error,         // raised
    stringObject,  // `str`
    time,          // `datetime.time`, without zone
    dateTime,      // `datetime.datetime`, without zone
    anyObject,     // a wrapper
};

PyObject* fromObject(const ling::Any& value) {
    Answer answer;
    for (const ObjectRule* rule = kObjectRules; !answer; ++rule)
        answer = (*rule)(value);
    return *answer;
}

using Conversion = PyObject* (*)(const ling::Any&);

/// By kind, in the order of their numbers.
constexpr std::array<Conversion, 16> kConversions = {
    fromBoolean,    // Boolean
    fromByteArray,  // ByteArray
    fromFloat,      // Float
    wrapValue,      // Function
    wrapValue,      // Map
    wrapValue,      // Set
    fromInteger,    // Integer
    wrapValue,      // List
    fromObject,     // Object
    fromString,     // String
    fromTuple,      // Tuple
    wrapValue,      // Boxed
    fromExternal,   // External
    wrapValue,      // Lazy
    wrapValue,      // Weak
    fromUndefined,  // Undefined
};

PyObject* convert(const ling::Any& value) {
    if (value.isNone())
        return Py_NewRef(Py_None);
    const auto kind = static_cast<std::size_t>(value.kind());
    return kind < kConversions.size() ? kConversions[kind](value) : wrapValue(value);
}

}  // namespace

PyObject* toPythonLocked(const ling::Any& value) { return convert(value); }

PyObject* toPython(const ling::Any& value) {
    const GilGuard gil;
    return convert(value);
}

}  // namespace ling::python
