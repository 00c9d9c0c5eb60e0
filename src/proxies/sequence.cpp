#include "ling/sequence.h"
#include "bridge/convert.h"
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
#include "proxies/sequence_access.h"

#include <optional>

namespace ling::python {

namespace {

ling::Any atOr(const ling::Any& self, const ling::Any& index, const ling::Any& fallback) {
    const ling::Any item = ling::internal::result_unwrap_lazy(itemAt(self, index));
    return ling::internal::is_error_result(item) ? fallback : item;
}

ling::Any set(const ling::Any& self, const ling::Any& index, const ling::Any& value) {
    if (std::optional<ling::Any> outcome = exact::set(self, index, value))
        return *std::move(outcome);
    return PythonProxy::callPythonMethod(self, names::dunderSetitem, {index, value});
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

ling::internal::property_builder lengthProperty() {
    ling::internal::property_builder property;
    property.assign_getter(
        platform::offering(ling::make_method(ling::internal::kGetterName, "", &sequenceLength), sequenceAccess()));
    property.doc("How many items there are.");
    return property;
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
        .method(Sequence::$at, platform::offering(ling::make_method("at", "index", &itemAt), sequenceAccess()))
        .property(Sequence::$$length, lengthProperty())
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
