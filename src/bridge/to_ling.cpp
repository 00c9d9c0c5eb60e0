#include "bridge/to_ling.h"

#include "bridge/convert.h"
#include "bridge/date_time.h"
#include "bridge/errors.h"
#include "bridge/loss.h"
#include "bridge/text.h"
#include "functions/function_python.h"
#include "host/gil_guard.h"
#include "host/interruption.h"
#include "host/names.h"
#include "host/py_ref.h"
#include "ling/basic_values.h"
#include "ling/byte_array.h"
#include "lingobject/wrapper.h"
#include "proxies/python_proxy.h"
#include "proxies/python_type.h"

#include <cmath>
#include <limits>

namespace ling::python {

namespace {

/// What the rules look at.
struct Subject {
    PyObject* object;
    PyTypeObject* type;
};

/// A rule answers the value, or that the object is not one of its.
using Answer = std::optional<ling::Any>;
using Rule = Answer (*)(const Subject&);
constexpr std::nullopt_t kNotMine = std::nullopt;

ling::Any bytesFrom(const char* data, Py_ssize_t size) {
    return ling::ByteArray(std::string_view(data, static_cast<std::size_t>(size)));
}

/// A float without a fraction becomes an integer. One that is out of range, infinities included, gives what the
/// processor makes of it: the least integer.
ling::Any fromDouble(double number) {
    constexpr double kLimit = 9223372036854775808.0;
    if (std::isnan(number))
        return number;
    double whole = 0;
    if (std::modf(number, &whole) != 0.0)
        return number;
    if (whole >= -kLimit && whole < kLimit)
        return static_cast<std::int64_t>(whole);
    tellLoss(Loss::Range);
    return std::numeric_limits<std::int64_t>::min();
}

/// -1, with Python's error pending, beyond 64 bits.
ling::Any fromLong(PyObject* number) { return PyLong_AsLongLong(number); }

Answer proxyIf(bool isMine, ProxyClass kind, PyObject* object) {
    return isMine ? Answer(PythonProxy::create(kind, object)) : kNotMine;
}

template <class Value>
Answer answerOf(std::optional<Value> value) {
    return value ? Answer(*std::move(value)) : kNotMine;
}

Answer none(const Subject& it) { return it.object == Py_None ? Answer(ling::Any()) : kNotMine; }

Answer notImplemented(const Subject& it) {
    return it.object == Py_NotImplemented ? Answer(ling::Undefined()) : kNotMine;
}

Answer wrappedValue(const Subject& it) {
    const ling::Any* held = isLingObject(it.object) ? heldValue(it.object) : nullptr;
    return held != nullptr ? Answer(*held) : kNotMine;
}

Answer boolean(const Subject& it) {
    return it.type == &PyBool_Type ? Answer(ling::Any(it.object == Py_True)) : kNotMine;
}

Answer byteArray(const Subject& it) {
    if (!PyByteArray_Check(it.object))
        return kNotMine;
    return bytesFrom(PyByteArray_AS_STRING(it.object), PyByteArray_GET_SIZE(it.object));
}

Answer bytes(const Subject& it) {
    if (!PyBytes_Check(it.object))
        return kNotMine;
    return bytesFrom(PyBytes_AS_STRING(it.object), PyBytes_GET_SIZE(it.object));
}

Answer decimal(const Subject& it) { return it.type == decimalType() ? Answer(readDecimal(it.object)) : kNotMine; }

Answer floating(const Subject& it) {
    return PyFloat_Check(it.object) ? Answer(fromDouble(PyFloat_AS_DOUBLE(it.object))) : kNotMine;
}

/// What has a value as a `float`, and none as an index, may have a fraction; an integer of any kind has both, and what
/// merely stands for a number, such as an address, has neither.
bool mayHaveFraction(const PyTypeObject* type) noexcept {
    const PyNumberMethods* methods = type->tp_as_number;
    return methods != nullptr && methods->nb_float != nullptr && methods->nb_index == nullptr;
}

void tellLostFraction(PyObject* number, PyObject* whole) {
    if (PyErr_Occurred() != nullptr)
        return;
    const int isEqual = PyObject_RichCompareBool(whole, number, Py_EQ);
    if (isEqual < 0)
        forgetError();  // What cannot be compared is not known to be the same.
    if (isEqual <= 0)
        tellLoss(Loss::Fraction);
}

/// Everything else that calls itself a number. Where Python finds no integer in it, -1 stands beside the pending error.
Answer number(const Subject& it) {
    if (PyNumber_Check(it.object) == 0)
        return kNotMine;
    PyRef whole = PyRef::steal(PyNumber_Long(it.object));
    if (!whole)
        return ling::Any(-1);
    const ling::Any value = fromLong(whole.get());
    if (mayHaveFraction(it.type))
        tellLostFraction(it.object, whole.get());
    return value;
}

/// An object whose `__class__` cannot be read is no exception.
Answer exception(const Subject& it) {
    const int answer = PyObject_IsInstance(it.object, PyExc_Exception);
    if (answer > 0)
        return errorFromException(it.object);
    if (answer < 0)
        forgetError();
    return kNotMine;
}

Answer type(const Subject& it) {
    return PyType_Check(it.object) ? Answer(PythonType::fromPythonType(it.object)) : kNotMine;
}

Answer callable(const Subject& it) {
    return PyCallable_Check(it.object) != 0 ? Answer(functionFromPython(it.object)) : kNotMine;
}

Answer text(const Subject& it) { return PyUnicode_Check(it.object) ? Answer(textFromPython(it.object)) : kNotMine; }

Answer mapping(const Subject& it) { return proxyIf(PyDict_Check(it.object), ProxyClass::Mapping, it.object); }

/// Any class of Python that defines `__getitem__` has the item slot, mappings that are no `dict` included.
Answer sequence(const Subject& it) {
    const PySequenceMethods* methods = it.type->tp_as_sequence;
    const bool hasItems = methods != nullptr && methods->sq_item != nullptr;
    return proxyIf(hasItems || PyList_Check(it.object), ProxyClass::Sequence, it.object);
}

Answer set(const Subject& it) { return proxyIf(PySet_Check(it.object), ProxyClass::Set, it.object); }

Answer iterable(const Subject& it) { return proxyIf(it.type->tp_iter != nullptr, ProxyClass::Iterable, it.object); }

Answer date(const Subject& it) { return it.type == dateType() ? answerOf(readDate(it.object)) : kNotMine; }

Answer time(const Subject& it) { return it.type == timeType() ? answerOf(readTime(it.object)) : kNotMine; }

Answer dateTime(const Subject& it) { return it.type == dateTimeType() ? answerOf(readDateTime(it.object)) : kNotMine; }

Answer anyObject(const Subject& it) { return PythonProxy::create(ProxyClass::Object, it.object); }

/// The first rule that takes the object decides; the order is a promise to those who write Python classes.
constexpr Rule kRules[] = {
    none,            // the `None` object
    notImplemented,  // undefined
    wrappedValue,    // the very value that came from `ling`
    boolean,         // exactly `bool`
    byteArray,       // `bytearray` and derived: bytes, copied
    bytes,           // `bytes` and derived: bytes, copied
    decimal,         // exactly `decimal.Decimal`; one derived is a number like others
    floating,        // `float` and derived: an integer where there is no fraction
    number,          // what has `__index__`, `__int__` or `__float__`: an integer
    exception,       // instances of `Exception`: an error result
    type,            // classes
    callable,        // functions, methods, instances with `__call__`
    text,            // `str` and derived
    mapping,         // `dict` and derived
    sequence,        // `list`, and everything with items by position
    set,             // `set` and derived
    iterable,        // everything else that can be iterated
    date,            // exactly `datetime.date`
    time,            // exactly `datetime.time`
    dateTime,        // exactly `datetime.datetime`
    anyObject,       // and the rest
};

/// The types that nearly all values have, each with the answer of the rule that would take it in the end. None of them
/// satisfies an earlier rule.
Answer byCommonType(PyObject* object) {
    PyTypeObject* const exact = Py_TYPE(object);
    if (exact == &PyUnicode_Type)
        return textFromPython(object);
    if (exact == &PyLong_Type)
        return fromLong(object);
    if (exact == &PyFloat_Type)
        return fromDouble(PyFloat_AS_DOUBLE(object));
    if (exact == &PyBool_Type)
        return ling::Any(object == Py_True);
    if (exact == &PyDict_Type)
        return PythonProxy::create(ProxyClass::Mapping, object);
    if (exact == &PyList_Type || exact == &PyTuple_Type)
        return PythonProxy::create(ProxyClass::Sequence, object);
    if (exact == &PyFunction_Type || exact == &PyMethod_Type || exact == &PyCFunction_Type)
        return functionFromPython(object);
    return kNotMine;
}

constinit const Name kClass{"__class__"};

/// Whether nothing but its type decides by which rule an object is taken: `isinstance` asks it for its `__class__`.
bool isDecidedByType(PyTypeObject* type) {
    PyObject* name = kClass.object();
    if (name == nullptr || type->tp_getattro != PyObject_GenericGetAttr)
        return false;
    PyObject* found = _PyType_Lookup(type, name);
    return found != nullptr && found == _PyType_Lookup(&PyBaseObject_Type, name);
}

/// The rules that took objects of some types, each for as long as the type is not changed: no two types, nor one before
/// and after a change, have the same version. Under the interpreter lock.
class RuleMemory {
public:
    const Rule* find(const PyTypeObject* type) const noexcept {
        const Entry& entry = entries_[place(type)];
        return entry.type == type && entry.version == type->tp_version_tag ? entry.rule : nullptr;
    }
    void keep(const PyTypeObject* type, const Rule* rule) noexcept {
        if (type->tp_version_tag != 0)
            entries_[place(type)] = {type, type->tp_version_tag, rule};
    }

private:
    struct Entry {
        const PyTypeObject* type = nullptr;
        unsigned version = 0;
        const Rule* rule = nullptr;
    };
    static constexpr std::size_t kSize = 256;
    static std::size_t place(const PyTypeObject* type) noexcept {
        return (reinterpret_cast<std::uintptr_t>(type) >> 5) % kSize;
    }
    Entry entries_[kSize];
};

constinit RuleMemory ruleMemory;

/// The first rule that takes the object.
Answer byRules(const Subject& subject, const Rule*& rule) {
    Answer answer;
    for (rule = kRules; !(answer = (*rule)(subject)); ++rule) {
    }
    return answer;
}

/// By the rule that took the last object of this type, if the type alone decides.
ling::Any byRememberedRule(PyObject* object) {
    const PyRef type = PyRef::borrow(reinterpret_cast<PyObject*>(Py_TYPE(object)));
    const Subject subject{object, Py_TYPE(object)};
    const bool isRemembered = object != Py_NotImplemented && !isLingObject(object);
    if (const Rule* known = isRemembered ? ruleMemory.find(subject.type) : nullptr)
        if (Answer answer = (*known)(subject))
            return *std::move(answer);
    const Rule* rule = nullptr;
    const bool isKept = isRemembered && isDecidedByType(subject.type);
    const unsigned version = subject.type->tp_version_tag;
    Answer answer = byRules(subject, rule);
    if (isKept && version == subject.type->tp_version_tag)  // The rules may have run code that changed the type.
        ruleMemory.keep(subject.type, rule);
    return *std::move(answer);
}

/// A float of which nothing is lost.
bool isTold(double number) { return !(std::isinf(number) || std::fabs(number) >= 9223372036854775808.0); }

}  // namespace

bool toLingPlainly(PyObject* object, ling::Any& value) {
    PyTypeObject* const exact = Py_TYPE(object);
    if (exact == &PyLong_Type) {
        int overflow = 0;
        value = ling::Any(PyLong_AsLongLongAndOverflow(object, &overflow));
        return overflow == 0;
    }
    if (exact == &PyFloat_Type && !isTold(PyFloat_AS_DOUBLE(object)))
        return false;
    const bool isNone = object == Py_None;
    if (!isNone && exact != &PyUnicode_Type && exact != &PyFloat_Type && exact != &PyBool_Type &&
        exact != &PyDict_Type && exact != &PyList_Type && exact != &PyTuple_Type)
        return false;
    value = toLingLocked(object);
    if (PyErr_Occurred() == nullptr)
        return true;
    PyErr_Clear();  // Of a text with surrogates, which cannot be an interruption.
    return false;
}

ling::Any toLingByRules(PyObject* object) {
    if (object == nullptr)
        return {};
    // The code that a rule runs may give the object another class, and the one it had may have lived through it alone.
    const PyRef type = PyRef::borrow(reinterpret_cast<PyObject*>(Py_TYPE(object)));
    const Subject subject{object, Py_TYPE(object)};
    const Rule* rule = nullptr;
    return *byRules(subject, rule);
}

ling::Any toLingLocked(PyObject* object) {
    if (object == nullptr || object == Py_None)
        return {};
    Answer answer = byCommonType(object);
    return answer ? *std::move(answer) : byRememberedRule(object);
}

ling::Any toLing(PyObject* object) {
    if (object == nullptr || object == Py_None)
        return {};
    const GilGuard gil;
    return toLingLocked(object);
}

}  // namespace ling::python
