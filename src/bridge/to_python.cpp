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

PyObject* wrap(const ling::Any& value) { return wrapLocked(ling::Any(value)); }

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
    return type != nullptr ? Py_NewRef(reinterpret_cast<PyObject*>(type)) : wrap(value);
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

Answer anyObject(const ling::Any& value) { return wrap(value); }

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

/// The rules that classes came to of late. Every rule but that for classes goes by the class of the object, as its
/// shape shows. Under the interpreter lock.
class RecentRules {
public:
    /// Null where it is not known.
    ObjectRule find(const ling::internal::object_value_class* cls) const noexcept {
        const Entry& entry = entries_[slotOf(cls)];
        return entry.cls == cls && entry.shape == cls->shape() ? entry.rule : nullptr;
    }
    /// `shape` is that of the class before the rules were asked.
    void remember(const ling::internal::object_value_class* cls, const void* shape, ObjectRule rule) noexcept {
        if (cls != nullptr && cls->isPinned() && shape != nullptr)
            entries_[slotOf(cls)] = {cls, shape, rule};
    }

private:
    struct Entry {
        const ling::internal::object_value_class* cls = nullptr;  // Is there for ever.
        const void* shape = nullptr;
        ObjectRule rule = nullptr;
    };
    static constexpr std::size_t kSlots = 256;
    static std::size_t slotOf(const ling::internal::object_value_class* cls) noexcept {
        return (reinterpret_cast<std::uintptr_t>(cls) >> 4) % kSlots;
    }

    std::array<Entry, kSlots> entries_{};
};

constinit RecentRules recentRules;

/// The rule that is known for the object's class, or null.
ObjectRule knownRule(const ling::Any& value) noexcept {
    const ling::internal::object_value_class* cls = value.object()->ownClass();
    return cls != nullptr ? recentRules.find(cls) : nullptr;
}

PyObject* findRule(const ling::Any& value) {
    const ling::internal::object_value_class* cls = value.object()->ownClass();
    const void* shape = cls != nullptr ? cls->shape() : nullptr;
    const ObjectRule* rule = kObjectRules;
    Answer answer = (*rule)(value);
    while (!answer)
        answer = (*++rule)(value);
    recentRules.remember(cls, shape, *rule);
    return *answer;
}

PyObject* fromObject(const ling::Any& value) {
    if (ObjectRule rule = knownRule(value))
        if (const Answer answer = rule(value))
            return *answer;
    return findRule(value);
}

using Conversion = PyObject* (*)(const ling::Any&);

/// By kind, in the order of their numbers.
constexpr std::array<Conversion, 16> kConversions = {
    fromBoolean,    // Boolean
    fromByteArray,  // ByteArray
    fromFloat,      // Float
    wrap,           // Function
    wrap,           // Map
    wrap,           // Set
    fromInteger,    // Integer
    wrap,           // List
    fromObject,     // Object
    fromString,     // String
    fromTuple,      // Tuple
    wrap,           // Boxed
    fromExternal,   // External
    wrap,           // Lazy
    wrap,           // Weak
    fromUndefined,  // Undefined
};

PyObject* convert(const ling::Any& value) {
    if (value.isNone())
        return Py_NewRef(Py_None);
    const auto kind = static_cast<std::size_t>(value.kind());
    return kind < kConversions.size() ? kConversions[kind](value) : wrap(value);
}

}  // namespace

PyObject* toPythonLocked(const ling::Any& value) { return convert(value); }

PyObject* toPythonLocked(ling::Any&& value) {
    const bool isWrapped = value.is(ling::Kind::Object) && knownRule(value) == &anyObject;
    return isWrapped ? wrapLocked(std::move(value)) : convert(value);
}

PyObject* toPython(const ling::Any& value) {
    const GilGuard gil;
    return convert(value);
}

}  // namespace ling::python
