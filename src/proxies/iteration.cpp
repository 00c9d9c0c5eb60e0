#include "proxies/iteration.h"
#include "bridge/convert.h"
#include "host/entry.h"
#include "host/error_scope.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/class_builder.h"
#include "ling/class_record.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "ling/iterable.h"
#include "ling/list.h"
#include "proxies/argument_array.h"
#include "proxies/method_names.h"
#include "proxies/plain_items.h"
#include "proxies/python_proxy.h"

namespace ling::python {

namespace {

ling::Any nextItem(const ling::Any& self) {
    PythonEntry entry;
    PyObject* iterator = PythonProxy::pythonObject(self);
    if (iterator == nullptr)
        return ling::StopIteration();
    if (PyIter_Check(iterator) == 0)
        return platform::failure(u"The object is not an iterator.");
    if (isInterruptionHeld() && raiseHeldInterruption())
        return takeResult(nullptr);
    PyObject* item = PyIter_Next(iterator);
    return item != nullptr || PyErr_Occurred() != nullptr ? takeResult(item) : ling::Any(ling::StopIteration());
}

/// What `__iter__()` of the held object gives, or null with `problem` set.
PyRef newIterator(const ling::Any& self, ling::Any& problem) {
    PyObject* object = PythonProxy::pythonObject(self);
    PyRef method = object != nullptr ? PyRef::steal(attribute(object, names::dunderIter)) : PyRef();
    if (!method || PyCallable_Check(method.get()) == 0) {
        forgetError();
        problem = platform::failure(object == nullptr ? u"Invalid object." : u"Missing '__iter__' method.");
        return {};
    }
    PyRef iterator = PyRef::steal(ArgumentArray(0).call(method.get()));
    if (!iterator)
        problem = takePythonError();
    return iterator;
}

ling::Any collect(const ling::Any& self) { return collectItems(self, PythonProxyIterable::getClass()); }
ling::Any collectRest(const ling::Any& self) { return collectItems(self, PythonProxyIterator::getClass()); }

ling::Class_Generic makeIteratorClass() {
    return ling::internal::defclass_impl("PythonProxyIterator", "ling.python")
        .parent(PythonProxy::getClass())
        .parent(ling::I_Iterator_Generic::genericInstance(ling::Untyped::getType()))
        .method(ling::I_Iterator_Generic::$next, "", &nextItem)
        .method(ling::I_Iterable_Generic::$collect, "", &collectRest)
        .build();
}

ling::Class_Generic makeIterableClass() {
    return ling::internal::defclass_impl("PythonProxyIterable", "ling.python")
        .parent(PythonProxy::getClass())
        .parent(ling::I_Iterable_Generic::genericInstance(ling::Untyped::getType()))
        .method(ling::I_Iterable_Generic::$iter, "", &iterate)
        .method(ling::I_Iterable_Generic::$contains, "value", &containsValue)
        .method(ling::I_Iterable_Generic::$collect, "", &collect)
        .build();
}

const bool iteratorIsQueued =
    (ling::internal::add_init_handler(ling::InitLevel::Classes, [] { (void)PythonProxyIterator::getClass(); }), true);
const bool iterableIsQueued =
    (ling::internal::add_init_handler(ling::InitLevel::Classes, [] { (void)PythonProxyIterable::getClass(); }), true);

}  // namespace

const ling::Class_Generic& PythonProxyIterator::getClass() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(makeIteratorClass());
    return cls;
}

const ling::Class_Generic& PythonProxyIterable::getClass() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(makeIterableClass());
    return cls;
}

ling::Any iterate(const ling::Any& self) {
    PythonEntry entry;
    ling::Any problem;
    PyRef iterator = newIterator(self, problem);
    return iterator ? PythonProxy::create(ProxyClass::Iterator, iterator.get()) : problem;
}

ling::Any collectItems(const ling::Any& self, const ling::Class_Generic& cls) {
    if (!isStock(self, cls))
        return collectByDefault(self);
    PythonEntry entry;
    if (PyObject* object = PythonProxy::pythonObject(self))
        if (std::optional<ling::Any> items = plainItems(object))
            return *std::move(items);
    ling::Any problem;
    PyRef iterator = newIterator(self, problem);
    return iterator ? listOfItems(iterator.get(), Items::Whole) : problem;
}

ling::Any asBoolean(const ling::Any& result) {
    const ling::Any value = ling::internal::result_unwrap_lazy(result);
    return ling::internal::is_error_result(value) ? value : ling::Boolean::cast(value).toAny();
}

ling::Any asInteger(const ling::Any& result) {
    const ling::Any value = ling::internal::result_unwrap_lazy(result);
    return ling::internal::is_error_result(value) ? value : ling::Integer::cast(value).toAny();
}

ling::Any containsValue(const ling::Any& self, const ling::Any& value) {
    return asBoolean(PythonProxy::callPythonMethod(self, names::dunderContains, {value}));
}

ling::Any lengthOf(const ling::Any& self) { return asInteger(PythonProxy::callPythonMethod(self, names::dunderLen)); }

ling::Any listOfItems(PyObject* iterator, Items wanted) {
    if (PyIter_Check(iterator) == 0)
        return platform::failure(u"The object is not an iterator.");
    ling::list_builder items;
    ErrorSteps steps;
    platform::InterruptionPoll mustStop;
    while (PyRef item = PyRef::steal(PyIter_Next(iterator))) {
        items.add(toLingLocked(item.get()));
        if (wanted == Items::Whole && PyErr_Occurred() != nullptr)
            return takeConversionError();
        steps.endStep();
        if (mustStop())
            return platform::interruptedError();
    }
    return PyErr_Occurred() == nullptr ? ling::Any(items.take()) : takePythonError();
}

bool isStock(const ling::Any& self, const ling::Class_Generic& cls) noexcept {
    return self.object()->ownClass() == cls.record() && self.object()->findExtras() == nullptr;
}

ling::Any collectByDefault(const ling::Any& self) {
    const ling::internal::found_member byDefault =
        ling::I_Iterable_Generic::getClass().record()->findMethod(ling::I_Iterable_Generic::$collect);
    return byDefault.member->invoke({&self, 1});
}

}  // namespace ling::python
