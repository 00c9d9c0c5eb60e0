#include "bridge/convert.h"
#include "bridge/small_integer.h"
#include "host/entry.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/class_builder.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "ling/list.h"
#include "ling/map_interface.h"
#include "proxies/argument_array.h"
#include "proxies/iteration.h"
#include "proxies/method_names.h"
#include "proxies/plain_items.h"
#include "proxies/proxy_record.h"
#include "proxies/python_proxy.h"

#include <optional>

namespace ling::python {

namespace {

/// The short ways for an exact `dict` and a key that is an exact `str` or `int`: looking it up runs nobody's code
/// unless the table holds keys of other classes under the same hash, whose comparison the named methods would run as
/// well. Each answers nothing where the named method has to be asked.
namespace exact {

/// A converted key that may go the short way, or null.
PyRef plainKey(PyObject* object, const ling::Any& key) {
    if (object == nullptr || !PyDict_CheckExact(object) ||
        (!key.is(ling::Kind::Integer) && !key.is(ling::Kind::String)))
        return {};
    return PyRef::steal(toPythonLocked(key));
}

/// Within an entry, by which `object` is held.
std::optional<ling::Any> get(PyObject* object, const ling::Any& key, const ling::Any& fallback) {
    PyRef plain = plainKey(object, key);
    if (!plain)
        return std::nullopt;
    PyObject* value = PyDict_GetItemWithError(object, plain.get());
    ling::Any small;
    if (value != nullptr && readSmallInteger(value, small))
        return small;
    if (value != nullptr || PyErr_Occurred() != nullptr)
        return takeResult(Py_XNewRef(value));
    return fallback;
}

std::optional<ling::Any> set(const ling::Any& self, const ling::Any& key, const ling::Any& value) {
    PyObject* object = PythonProxy::pythonObject(self);
    PythonEntry entry;
    PyRef plain = plainKey(object, key);
    if (!plain)
        return std::nullopt;
    PyRef item = PyRef::steal(toPython(value));
    if (!item)
        return cannotConvert(value);
    return PyDict_SetItem(object, plain.get(), item.get()) == 0 ? ling::Any() : takeResult(nullptr);
}

std::optional<ling::Any> length(const ling::Any& self) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr || !PyDict_CheckExact(object))
        return std::nullopt;
    PythonEntry entry;
    return ling::Any(PyDict_GET_SIZE(object));
}

}  // namespace exact

ling::Any set(const ling::Any& self, const ling::Any& key, const ling::Any& value) {
    if (std::optional<ling::Any> outcome = exact::set(self, key, value))
        return *std::move(outcome);
    return PythonProxy::callPythonMethod(self, names::dunderSetitem, {key, value});
}

ling::Any remove(const ling::Any& self, const ling::Any& key) {
    return PythonProxy::callPythonMethod(self, names::pop, {key});
}

/// Asks the proxy whether it has the key through `ling`'s dispatch, so that an override counts; only then reads it.
ling::Any get(const ling::Any& self, const ling::Any& key, const ling::Any& fallback) {
    if (isStock(self, PythonProxyMapping::getClass())) {
        PythonEntry entry;
        if (std::optional<ling::Any> value = exact::get(PythonProxy::pythonObject(self), key, fallback))
            return *std::move(value);
    }
    const ling::Any present = asBoolean(self.callMethod(ling::I_Map_Generic::$contains, {key}));
    if (ling::internal::is_error_result(present))
        return present;
    return present.asBoolean() ? PythonProxy::callPythonMethod(self, names::dunderGetitem, {key}) : fallback;
}

/// What `$get` and `$contains` offer together, so that nobody has put another in the place of either.
class Access final : public platform::ValueWays {
public:
    ling::Any get(const ling::Any& self, const ling::Any& key, const ling::Any& fallback) const override {
        if (PyObject* object = exactlyHeld(self, PythonProxyMapping::getClass().record())) {
            PythonEntry entry;
            const PyRef dict = PyRef::borrow(object);  // Comparing keys may run code.
            if (std::optional<ling::Any> value = exact::get(dict.get(), key, fallback))
                return *std::move(value);
        }
        const ling::Any held = self;
        return python::get(held, key, fallback);
    }
};

ling::FunctionCL_Generic offering(ling::FunctionCL_Generic function) {
    static const Access& access = *new Access;
    return platform::offering(std::move(function), access);
}

ling::Any clear(const ling::Any& self) { return PythonProxy::callPythonMethod(self, names::clear); }

ling::Any length(const ling::Any& self) {
    if (std::optional<ling::Any> known = exact::length(self))
        return *std::move(known);
    return lengthOf(self);
}

/// A list of all that the view under `name` gives now; `plain` gives that of an exact `dict` in a shorter way.
ling::Any listOf(const ling::Any& self, const Name& name, std::optional<ling::Any> (*plain)(PyObject*), Items wanted) {
    PythonEntry entry;
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr)
        return ling::List_Generic::empty();
    if (PyDict_CheckExact(object))
        if (std::optional<ling::Any> items = plain(object))
            return *std::move(items);
    PyRef method = PyRef::steal(attribute(object, name));
    PyRef view = method ? PyRef::steal(ArgumentArray(0).call(method.get())) : PyRef();
    PyRef iterator = view ? PyRef::steal(PyObject_GetIter(view.get())) : PyRef();
    if (iterator)
        return listOfItems(iterator.get(), wanted);
    const ling::Any error = takePythonError();
    return error.isNone() ? platform::failure(u"Unknown error.") : error;
}

ling::Any keys(const ling::Any& self) { return listOf(self, names::keys, &plainItems, Items::AsTheyCome); }
ling::Any values(const ling::Any& self) { return listOf(self, names::values, &plainValues, Items::AsTheyCome); }

/// What iterating the mapping gives: its keys.
ling::Any collect(const ling::Any& self) {
    return isStock(self, PythonProxyMapping::getClass()) ? listOf(self, names::keys, &plainItems, Items::Whole)
                                                         : collectByDefault(self);
}

ling::Type itemType(const ling::Any&) { return ling::Untyped::getType(); }

ling::FunctionCL_Generic getMethod() {
    ling::FunctionCL_Generic method = offering(ling::make_method("get", "key, default", &get));
    (void)method.setParameterDefaults({ling::Any()});
    return method;
}

ling::Class_Generic makeClass() {
    using Mutable = ling::I_MutableMap_Generic;
    using Map = ling::I_Map_Generic;
    using ling::internal::property_builder;
    const ling::Type untyped = ling::Untyped::getType();
    return ling::internal::defclass_impl("PythonProxyMapping", "ling.python")
        .parent(PythonProxy::getClass())
        .parent(Mutable::genericInstance(untyped, untyped))
        .method(Mutable::$set, "key, value", &set)
        .method(Mutable::$remove, "key", &remove)
        .method(Map::$get, getMethod())
        .method(Map::$contains, offering(ling::make_method("contains", "key", &containsValue)))
        .method(Mutable::$clear, "", &clear)
        .method(ling::I_Iterable_Generic::$collect, "", &collect)
        .property(Map::$$valuesType, property_builder().getter(&itemType).doc("The type of the values: any."))
        .property(Map::$$values, property_builder().getter(&values).doc("All values, in the order of their keys."))
        .property(Map::$$length, property_builder().getter(&length).doc("How many keys there are."))
        .property(Map::$$keysType, property_builder().getter(&itemType).doc("The type of the keys: any."))
        .property(Map::$$keys, property_builder().getter(&keys).doc("All keys, in their order."))
        .build();
}

const bool classIsQueued =
    (ling::internal::add_init_handler(ling::InitLevel::Classes, [] { (void)PythonProxyMapping::getClass(); }), true);

}  // namespace

const ling::Class_Generic& PythonProxyMapping::getClass() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(makeClass());
    return cls;
}

}  // namespace ling::python
