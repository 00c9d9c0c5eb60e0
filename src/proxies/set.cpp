#include "bridge/convert.h"
#include "host/entry.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/class_builder.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "ling/set_interface.h"
#include "proxies/argument_array.h"
#include "proxies/iteration.h"
#include "proxies/method_names.h"
#include "proxies/python_proxy.h"

namespace ling::python {

namespace {

/// Adds one item: to an exact `set`, whose `add` nobody can have replaced, without asking for the method each time.
ling::Any addItem(const ling::Any& self, const ling::Any& item) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr || !PySet_CheckExact(object))
        return PythonProxy::callPythonMethod(self, names::add, {item});
    PythonEntry entry;
    PyRef converted = PyRef::steal(toPython(item));
    if (!converted)
        return cannotConvert(item);
    return PySet_Add(object, converted.get()) == 0 ? ling::Any() : takeResult(nullptr);
}

/// Python's `add` does not say whether the value is new, so the length is asked for before and after.
ling::Any insert(const ling::Any& self, const ling::Any& value) {
    const ling::I_Set_Generic& set = ling::unchecked<ling::I_Set_Generic>(self);
    const ling::Result<ling::Integer> before = set.length();
    if (!before)
        return before.error();
    ling::Any outcome = addItem(self, value);
    if (ling::internal::is_error_result(outcome))
        return outcome;
    const ling::Result<ling::Integer> after = set.length();
    return after ? ling::Any(before->value() < after->value()) : after.error();
}

/// Whether `remove` took it: an exception of any kind says that it was not there.
ling::Any remove(const ling::Any& self, const ling::Any& value) {
    PythonEntry entry;
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr)
        return platform::failure(u"The object is null.");
    PyRef method = PyRef::steal(attribute(object, names::remove));
    if (!method || PyCallable_Check(method.get()) == 0) {
        forgetError();
        return platform::failure(ling::String(u"The method is missing in {}.").arg(self));
    }
    ArgumentArray argument(1);
    if (!argument.add(value))
        return cannotConvert(value);
    PyRef result = PyRef::steal(argument.call(method.get()));
    if (!result)
        forgetError();
    return static_cast<bool>(result);
}

ling::Any extend(const ling::Any& self, const ling::Any& items) {
    const ling::Result<ling::I_Iterable_Generic> iterable = ling::I_Iterable_Generic::cast(items);
    if (!iterable)
        return iterable.error();
    ling::iteration walk = iterable->beginImpl();
    while (walk.advance()) {
        ling::Any outcome = addItem(self, walk.item());
        if (ling::internal::is_error_result(outcome))
            return outcome;
    }
    return walk.error();
}

ling::Any collect(const ling::Any& self) { return collectItems(self, PythonProxySet::getClass()); }

ling::Any clear(const ling::Any& self) { return PythonProxy::callPythonMethod(self, names::clear); }

ling::Class_Generic makeClass() {
    using Mutable = ling::I_MutableSet_Generic;
    return ling::internal::defclass_impl("PythonProxySet", "ling.python")
        .parent(PythonProxy::getClass())
        .parent(Mutable::genericInstance(ling::Untyped::getType()))
        .method(Mutable::$remove, "value", &remove)
        .method(Mutable::$insert, "value", &insert)
        .method(Mutable::$extend, "items", &extend)
        .method(Mutable::$clear, "", &clear)
        // The runtime's defaults for sets stand on iteration, which only the object itself can give.
        .method(ling::I_Iterable_Generic::$iter, "", &iterate)
        .method(ling::I_Iterable_Generic::$contains, "value", &containsValue)
        .method(ling::I_Iterable_Generic::$collect, "", &collect)
        .property(ling::I_Set_Generic::$$length,
                  ling::internal::property_builder().getter(&lengthOf).doc("How many items there are."))
        .build();
}

const bool classIsQueued =
    (ling::internal::add_init_handler(ling::InitLevel::Classes, [] { (void)PythonProxySet::getClass(); }), true);

}  // namespace

const ling::Class_Generic& PythonProxySet::getClass() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(makeClass());
    return cls;
}

}  // namespace ling::python
