#include "proxies/python_proxy.h"

#include "bridge/convert.h"
#include "host/boxed_object.h"
#include "host/entry.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "host/text_round.h"
#include "ling/class_builder.h"
#include "ling/extension.h"
#include "ling/interfaces.h"
#include "proxies/argument_array.h"
#include "proxies/compare.h"
#include "proxies/members.h"
#include "proxies/method_names.h"
#include "proxies/proxy_record.h"

#include <new>

namespace ling::python {

const ling::field_ident_untyped PythonProxy::$_pyobj("_pyobj");

namespace {

constexpr const char* kModule = "ling.python";

ling::internal::object_value* allocateProxy(ling::internal::object_value_class* klass) {
    return new ProxyRecord(klass);
}

bool isRecursion(const ling::Any& failed) {
    const ling::Result<ling::Error> error = ling::Error::cast(failed);
    PyObject* exception = error ? PythonProxy::pythonObject(platform::originOf(*error)) : nullptr;
    return exception != nullptr && PyObject_TypeCheck(exception, reinterpret_cast<PyTypeObject*>(PyExc_RecursionError));
}

/// The text of the object's `__str__`, or an empty one; a failure leaves no error pending.
ling::Any displayText(const ling::Any& self) {
    const TextRound round;
    const ling::Any text = ling::internal::result_unwrap_lazy(PythonProxy::callPythonMethod(self, names::dunderStr));
    if (isRecursion(text))
        round.noteRecursion();
    return ling::String::cast(text).valueOr(ling::String());
}

/// A proxy that was called into being would hold nothing.
ling::Any refuseConstruction(const ling::Class_Generic& cls, std::span<const ling::Any>) {
    return platform::failure(
        ling::String(u"Instances of the class '{}' stand for Python objects: they are made by converting one.")
            .arg(ling::qualname(cls)));
}

ling::Class_Generic makeProxyClass() {
    ling::internal::class_builder builder = ling::internal::defclass_impl("PythonProxy", kModule);
    builder.parent(ling::I_RuntimeOnly::getClass())
        .doc("Proxy wrapper around of 'PyObject'.")
        .hooks({.allocate = &allocateProxy, .construct = &refuseConstruction})
        .field(PythonProxy::$_pyobj, boxedObjectOption(), "The Python object.");
    addMemberProtocol(builder);
    builder.method(ling::Any::$__display__, "", &displayText)
        .method(ling::Any::$__compare__, "other", &compareObjects)
        .method(ling::Any::$__hash__, "", &hashObject);
    return builder.build();
}

// The class units of this room each queue the definition of their class.
const bool classIsQueued =
    (ling::internal::add_init_handler(ling::InitLevel::Classes, [] { (void)PythonProxy::getClass(); }), true);

const ling::Class_Generic& classOf(ProxyClass kind) {
    switch (kind) {
        case ProxyClass::Object:
            break;
        case ProxyClass::Iterator:
            return PythonProxyIterator::getClass();
        case ProxyClass::Iterable:
            return PythonProxyIterable::getClass();
        case ProxyClass::Sequence:
            return PythonProxySequence::getClass();
        case ProxyClass::Mapping:
            return PythonProxyMapping::getClass();
        case ProxyClass::Set:
            return PythonProxySet::getClass();
    }
    return PythonProxy::getClass();
}

ling::Any missingMethod(const ling::Any& self, const Name& name) {
    forgetError();
    return platform::failure(
        ling::String(u"The method is missing: {}, target object: {}.").arg(ling::String(name.text()), self));
}

}  // namespace

const ling::Class_Generic& PythonProxy::getClass() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(makeProxyClass());
    return cls;
}

ling::Type PythonProxy::getType() { return ling::Type(getClass()); }

bool isPythonProxy(const ling::Any& value) noexcept {
    return ling::internal::cast_object(value, PythonProxy::getClass()) != nullptr;
}

PyObject* PythonProxy::pythonObject(const ling::Any& proxy) noexcept {
    if (PyObject* object = exactlyHeld(proxy, getClass().record()))
        return object;
    ling::internal::object_value* object = ling::internal::cast_object(proxy, getClass());
    return object == nullptr ? nullptr : static_cast<ProxyRecord*>(object)->pythonObject();
}

ling::Any PythonProxy::create(ProxyClass kind, PyObject* object) { return create(classOf(kind), object); }

ling::Any PythonProxy::create(const ling::Class_Generic& cls, PyObject* object) {
    ling::Any proxy = cls.allocateInstance();
    // Nothing but memory is needed for one. An error result would pass for the value that stands for the object.
    if (ling::internal::is_error_result(proxy))
        throw std::bad_alloc();
    static_cast<ProxyRecord*>(proxy.object())->hold(object);
    return proxy;
}

ling::Any PythonProxy::callPythonMethod(const ling::Any& self, const Name& name, std::span<const ling::Any> arguments) {
    PythonEntry entry;
    PyObject* object = pythonObject(self);
    if (object == nullptr)
        return platform::failure(u"The object is null.");
    PyRef method = PyRef::steal(attribute(object, name));
    if (!method || PyCallable_Check(method.get()) == 0)
        return missingMethod(self, name);
    ArgumentArray converted(arguments.size());
    for (const ling::Any& argument : arguments)
        if (!converted.add(argument))
            return cannotConvert(argument);
    return takeResult(converted.call(method.get()));
}

}  // namespace ling::python
