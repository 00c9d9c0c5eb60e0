#include "ling/sequence.h"
#include "bridge/convert.h"
#include "bridge/small_integer.h"
#include "host/entry.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/class_builder.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "ling/list.h"
#include "proxies/argument_array.h"
#include "proxies/iteration.h"
#include "proxies/method_names.h"
#include "proxies/python_proxy.h"

#include <optional>

namespace ling::python {

namespace {

/// The short ways: for an exact `list` or `tuple`, whose methods nobody can have replaced, and arguments for which the
/// named method could do nothing else. Each answers nothing where the named method has to be asked, errors included.
namespace exact {

bool isSequence(PyObject* object) { return PyList_CheckExact(object) || PyTuple_CheckExact(object); }

/// The position meant by an index, if it is inside.
std::optional<Py_ssize_t> position(PyObject* sequence, const ling::Any& index) {
    if (!index.is(ling::Kind::Integer))
        return std::nullopt;
    const Py_ssize_t size = Py_SIZE(sequence);
    const std::int64_t wanted = index.asInteger() + (index.asInteger() < 0 ? size : 0);
    return wanted >= 0 && wanted < size ? std::optional<Py_ssize_t>(wanted) : std::nullopt;
}

/// Borrowed.
PyObject* itemOf(PyObject* sequence, Py_ssize_t at) {
    return PyList_CheckExact(sequence) ? PyList_GET_ITEM(sequence, at) : PyTuple_GET_ITEM(sequence, at);
}

/// Whether nobody can have replaced the methods of the object's class, and the object has none of its own: what
/// `__getitem__` and `__len__` do is then what the class's slots do.
bool hasFixedMethods(PyObject* object) {
    const PyTypeObject* type = Py_TYPE(object);
    return PyType_HasFeature(Py_TYPE(object), Py_TPFLAGS_IMMUTABLETYPE) &&
           type->tp_getattro == PyObject_GenericGetAttr && type->tp_dictoffset == 0 &&
           !PyType_HasFeature(Py_TYPE(object), Py_TPFLAGS_MANAGED_DICT);
}

/// An item is kept alive while it is converted, unless nothing can happen meanwhile.
ling::Any convertItem(PyObject* item) {
    ling::Any value;
    return readSmallInteger(item, value) ? value : takeResult(Py_NewRef(item));
}

/// The item of a `range`, an `array`, a `deque` and their like.
std::optional<ling::Any> itemBySlot(PyObject* object, const ling::Any& index) {
    PythonEntry entry;
    PyRef key = PyRef::steal(toPython(index));
    return takeResult(key ? PyObject_GetItem(object, key.get()) : nullptr);
}

std::optional<ling::Any> at(const ling::Any& self, const ling::Any& index) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr || !index.is(ling::Kind::Integer))
        return std::nullopt;
    if (!isSequence(object))
        return hasFixedMethods(object) ? itemBySlot(object, index) : std::nullopt;
    PythonEntry entry;
    const std::optional<Py_ssize_t> where = position(object, index);
    if (!where)
        return std::nullopt;
    return convertItem(itemOf(object, *where));
}

bool hasLengthSlot(const PyTypeObject* type) {
    return (type->tp_as_sequence != nullptr && type->tp_as_sequence->sq_length != nullptr) ||
           (type->tp_as_mapping != nullptr && type->tp_as_mapping->mp_length != nullptr);
}

std::optional<ling::Any> length(const ling::Any& self) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr)
        return std::nullopt;
    PythonEntry entry;  // Another thread may be about to change the list.
    if (isSequence(object))
        return ling::Any(Py_SIZE(object));
    if (!hasFixedMethods(object) || !hasLengthSlot(Py_TYPE(object)))
        return std::nullopt;
    const Py_ssize_t size = PyObject_Size(object);
    return size >= 0 ? ling::Any(size) : takeResult(nullptr);
}

std::optional<ling::Any> append(const ling::Any& self, const ling::Any& value) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr || !PyList_CheckExact(object))
        return std::nullopt;
    PythonEntry entry;
    PyRef item = PyRef::steal(toPython(value));
    if (!item)
        return cannotConvert(value);
    return PyList_Append(object, item.get()) == 0 ? ling::Any() : takeResult(nullptr);
}

std::optional<ling::Any> set(const ling::Any& self, const ling::Any& index, const ling::Any& value) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr || !PyList_CheckExact(object))
        return std::nullopt;
    PythonEntry entry;
    PyRef item = PyRef::steal(toPython(value));
    if (!item)
        return cannotConvert(value);
    const std::optional<Py_ssize_t> where = position(object, index);  // Only now: the conversion may run code.
    if (!where)
        return std::nullopt;
    return PyList_SetItem(object, *where, item.release()) == 0 ? ling::Any() : takeResult(nullptr);
}

/// All items under one acquisition of the lock. The list is asked for its length at each step, since converting an item
/// may run code that changes it.
std::optional<ling::Any> collect(const ling::Any& self) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr || !isSequence(object))
        return std::nullopt;
    PythonEntry entry;
    ling::list_builder items(static_cast<std::size_t>(Py_SIZE(object)));
    for (Py_ssize_t i = 0; i < Py_SIZE(object); ++i) {
        items.add(convertItem(itemOf(object, i)));
        if (PyErr_Occurred() != nullptr)
            return takeConversionError();
    }
    return items.take();
}

}  // namespace exact

ling::Any at(const ling::Any& self, const ling::Any& index) {
    if (std::optional<ling::Any> item = exact::at(self, index))
        return *std::move(item);
    return PythonProxy::callPythonMethod(self, names::dunderGetitem, {index});
}

ling::Any atOr(const ling::Any& self, const ling::Any& index, const ling::Any& fallback) {
    const ling::Any item = ling::internal::result_unwrap_lazy(at(self, index));
    return ling::internal::is_error_result(item) ? fallback : item;
}

ling::Any set(const ling::Any& self, const ling::Any& index, const ling::Any& value) {
    if (std::optional<ling::Any> outcome = exact::set(self, index, value))
        return *std::move(outcome);
    return PythonProxy::callPythonMethod(self, names::dunderSetitem, {index, value});
}

ling::Any length(const ling::Any& self) {
    if (std::optional<ling::Any> known = exact::length(self))
        return *std::move(known);
    return lengthOf(self);
}

ling::Any append(const ling::Any& self, const ling::Any& value) {
    if (std::optional<ling::Any> outcome = exact::append(self, value))
        return *std::move(outcome);
    return PythonProxy::callPythonMethod(self, names::append, {value});
}

ling::Any appendAt(const ling::Any& self, const ling::Any& index, const ling::Any& value) {
    return PythonProxy::callPythonMethod(self, names::insert, {index, value});
}

ling::Any extend(const ling::Any& self, const ling::Any& items) {
    return PythonProxy::callPythonMethod(self, names::extend, {items});
}

ling::Any pop(const ling::Any& self, const ling::Any& index) {
    return PythonProxy::callPythonMethod(self, names::pop, {index});
}

ling::Any clear(const ling::Any& self) { return PythonProxy::callPythonMethod(self, names::clear); }

ling::Any removeAt(const ling::Any& self, const ling::Any& index, std::int64_t count) {
    for (; count > 0; --count) {
        ling::Any outcome = PythonProxy::callPythonMethod(self, names::dunderDelitem, {index});
        if (ling::internal::is_error_result(outcome))
            return outcome;
    }
    return {};
}

ling::Any removeOne(const ling::Any& self, const ling::Any& value) {
    ling::Any count = asInteger(PythonProxy::callPythonMethod(self, names::count, {value}));
    if (ling::internal::is_error_result(count))
        return count;
    if (count.asInteger() <= 0)
        return false;
    ling::Any outcome = PythonProxy::callPythonMethod(self, names::remove, {value});
    return ling::internal::is_error_result(outcome) ? outcome : ling::Any(true);
}

/// Calls `index(value, start)`; a failure of any kind is an absent value.
ling::Any callIndex(PyObject* object, PyObject* value, std::int64_t start) {
    PyRef method = PyRef::steal(attribute(object, names::index));
    // Only the low 32 bits of the start reach Python, as a C `int`.
    PyRef from = PyRef::steal(PyLong_FromLong(static_cast<int>(start)));
    PyRef found =
        method && from ? PyRef::steal(PyObject_CallFunctionObjArgs(method.get(), value, from.get(), nullptr)) : PyRef();
    const ling::Any position = found ? ling::internal::result_unwrap_lazy(toLing(found.get())) : ling::Any(-1);
    forgetError();
    return position.is(ling::Kind::Integer) ? position : ling::Any(-1);
}

ling::Any indexOf(const ling::Any& self, const ling::Any& value, std::int64_t start) {
    PythonEntry entry;
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr)
        return platform::failure(u"The object is null.");
    PyRef converted = PyRef::steal(toPython(value));
    if (converted)
        return callIndex(object, converted.get(), start);
    forgetError();
    return -1;
}

ling::Any collect(const ling::Any& self) {
    if (isStock(self, PythonProxySequence::getClass()))
        if (std::optional<ling::Any> items = exact::collect(self))
            return *std::move(items);
    return collectByDefault(self);
}

ling::FunctionCL_Generic withDefaults(ling::FunctionCL_Generic method, std::initializer_list<ling::Any> defaults) {
    (void)method.setParameterDefaults(defaults);
    return method;
}

ling::Class_Generic makeClass() {
    using Mutable = ling::I_MutableSequence_Generic;
    using Sequence = ling::I_Sequence_Generic;
    return ling::internal::defclass_impl("PythonProxySequence", "ling.python")
        .parent(PythonProxy::getClass())
        .parent(Mutable::genericInstance(ling::Untyped::getType()))
        .method(Mutable::$set, "index, value", &set)
        .method(Mutable::$removeAt, withDefaults(ling::make_method("removeAt", "index, count", &removeAt), {1}))
        .method(Mutable::$removeOne, "value", &removeOne)
        .method(Mutable::$pop, withDefaults(ling::make_method("pop", "index", &pop), {-1}))
        .method(Mutable::$extend, "items", &extend)
        .method(Mutable::$clear, "", &clear)
        .method(Mutable::$appendAt, "index, value", &appendAt)
        .method(Mutable::$append, "value", &append)
        .method(Sequence::$indexOf, withDefaults(ling::make_method("indexOf", "value, start", &indexOf), {0}))
        .method(ling::I_Iterable_Generic::$contains, "value", &containsValue)
        .method(ling::I_Iterable_Generic::$collect, "", &collect)
        .method(Sequence::$atOr, "index, default", &atOr)
        .method(Sequence::$at, "index", &at)
        .property(Sequence::$$length,
                  ling::internal::property_builder().getter(&length).doc("How many items there are."))
        .build();
}

const bool classIsQueued =
    (ling::internal::add_init_handler(ling::InitLevel::Classes, [] { (void)PythonProxySequence::getClass(); }), true);

}  // namespace

const ling::Class_Generic& PythonProxySequence::getClass() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(makeClass());
    return cls;
}

}  // namespace ling::python
