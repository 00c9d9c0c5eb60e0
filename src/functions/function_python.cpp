#include "functions/function_python.h"

#include "bridge/convert.h"
#include "functions/signature.h"
#include "host/entry.h"
#include "host/error_scope.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/class_builder.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "ling/interfaces.h"
#include "proxies/argument_array.h"
#include "proxies/proxy_record.h"
#include "proxies/python_proxy.h"
#include "proxies/python_type.h"

namespace ling::python {

namespace names {

inline constinit const Name defaults{"__defaults__"};
inline constinit const Name name{"__name__"};
inline constinit const Name objclass{"__objclass__"};
inline constinit const Name self{"__self__"};

}  // namespace names

namespace {

const ling::field_ident_untyped $_signature("_signature");

/// The callable is held: it may lose the function that it was called through.
ling::Any callHeld(PyObject* callable, std::span<const ling::Any> positional,
                   std::span<const ling::NamedArgument> named) {
    PythonEntry entry;
    const PyRef held = PyRef::borrow(callable);
    return held ? callPython(callable, positional, named) : platform::failure(u"Unable to find the function.");
}

ling::Any invokeNamed(const ling::Any& self, std::span<const ling::Any> positional,
                      std::span<const ling::NamedArgument> named) {
    return callHeld(PythonProxy::pythonObject(self), positional, named);
}

ling::Any invoke(const ling::Any& self, std::span<const ling::Any> arguments) {
    return invokeNamed(self, arguments, {});
}

/// What stands behind a function: it is called without a look at its class, but for whether that says so.
class FunctionRecord final : public ProxyRecord {
public:
    using ProxyRecord::ProxyRecord;
    ling::Any invoke(std::span<const ling::Any> arguments) override {
        if (ownClass() != functionPythonClass().record() && ownClass()->hooks().invoke != &python::invoke)
            return ProxyRecord::invoke(arguments);
        return platform::contain([&] { return callHeld(pythonObject(), arguments, {}); });
    }
};

ling::internal::object_value* allocateFunction(ling::internal::object_value_class* klass) {
    return new FunctionRecord(klass);
}

ling::Any invokeWithSequence(const ling::Any& self, const ling::I_Sequence_Generic& arguments) {
    const ling::Result<ling::List_Generic> list = arguments.collectImpl();
    return list ? invoke(self, platform::itemsOf(*list)) : list.error();
}

/// An attribute of the callable as text; an empty one when there is none. Leaves nothing pending.
ling::String textOf(const ling::Any& self, const Name& name) {
    PythonEntry entry;
    PyObject* callable = PythonProxy::pythonObject(self);
    PyRef value = callable == nullptr ? PyRef() : PyRef::steal(attribute(callable, name));
    forgetError();
    const ling::Any text = toLing(value.get());
    forgetError();
    return ling::String::cast(text).valueOr(ling::String());
}

ling::String nameOf(const ling::Any& self) { return textOf(self, names::name); }
ling::String docOf(const ling::Any& self) { return textOf(self, names::doc); }

ling::Any defaultsOf(const ling::Any& self) {
    PythonEntry entry;
    ling::List_Generic defaults = ling::List_Generic::empty();
    PyObject* callable = PythonProxy::pythonObject(self);
    PyRef tuple = callable == nullptr ? PyRef() : PyRef::steal(attribute(callable, names::defaults));
    forgetError();
    ErrorSteps steps;
    for (Py_ssize_t i = 0; tuple && PyTuple_Check(tuple.get()) && i < PyTuple_GET_SIZE(tuple.get()); ++i) {
        defaults.append(toLing(PyTuple_GET_ITEM(tuple.get(), i)));
        steps.endStep();
    }
    return defaults;
}

/// A new tuple of converted items, or null when one does not convert; `problem` is then its error.
PyRef makeTuple(const std::vector<ling::Any>& items, ling::Any& problem) {
    PyRef tuple = PyRef::steal(PyTuple_New(static_cast<Py_ssize_t>(items.size())));
    for (std::size_t i = 0; tuple && i < items.size(); ++i) {
        PyObject* converted = toPython(ling::internal::result_unwrap_lazy(items[i]));
        if (converted == nullptr) {
            problem = cannotConvert(items[i]);
            return {};
        }
        PyTuple_SET_ITEM(tuple.get(), static_cast<Py_ssize_t>(i), converted);
    }
    return tuple;
}

ling::Any setDefaults(const ling::Any& self, const ling::I_Iterable_Generic& defaults) {
    const ling::Result<ling::List_Generic> list = defaults.collectImpl();
    if (!list)
        return list.error();
    PythonEntry entry;
    PyObject* callable = PythonProxy::pythonObject(self);
    if (callable == nullptr)
        return platform::failure(u"Unable to find the function.");
    ling::Any problem;
    PyRef tuple = makeTuple(platform::itemsOf(*list), problem);
    if (tuple && PyObject_SetAttr(callable, names::defaults.object(), tuple.get()) == 0)
        return {};
    return problem.isNone() ? takeResult(nullptr) : problem;
}

/// Derived once: a signature that stands in the field is the answer for good.
ling::Any signatureOf(const ling::Any& self) {
    ling::Any cached = self.fieldValue($_signature);
    if (ling::Signature::getType().isMatch(cached))
        return cached;
    PythonEntry entry;
    PyObject* callable = PythonProxy::pythonObject(self);
    if (callable == nullptr)
        return platform::failure(u"Unable to find the function.");
    ling::Any derived = deriveSignature(callable);
    if (!ling::internal::is_error_result(derived))
        (void)self.setFieldValue($_signature, derived);
    return derived;
}

/// The class that a method belongs to: the class, or that of the object, that it is bound to, or the one that a method
/// descriptor names.
ling::Any definingClassOf(const ling::Any& self) {
    PythonEntry entry;
    PyObject* callable = PythonProxy::pythonObject(self);
    if (callable == nullptr)
        return {};
    PyRef owner = PyRef::steal(attribute(callable, names::objclass));
    forgetError();
    if (owner && PyType_Check(owner.get()))
        return toLing(owner.get());
    if (PyObject* receiver = PyMethod_Check(callable) != 0 ? PyMethod_GET_SELF(callable) : nullptr)
        return toLing(PyType_Check(receiver) ? receiver : reinterpret_cast<PyObject*>(Py_TYPE(receiver)));
    return {};
}

/// A Python callable has its receiver in it, or takes it as an ordinary argument.
bool isIndependent(const ling::Any&) { return true; }

ling::Class_Generic makeClass() {
    using Invokable = ling::I_Invokable_Generic;
    using ling::internal::property_builder;
    return ling::internal::defclass_impl("FunctionPython", "ling.python")
        .parent(PythonProxy::getClass())
        .parent(Invokable::getClass())
        .doc("Invokable wrapper around of a Python function.")
        .hooks({.allocate = &allocateFunction, .invoke = &invoke, .invokeNamed = &invokeNamed})
        .field($_signature, ling::internal::type_unite(ling::Signature::getType(), ling::None::getType()),
               "The signature, once it was asked for.")
        .method(Invokable::$invoke, "arguments", &invokeWithSequence)
        .property(ling::I_HasName::$$name, property_builder().getter(&nameOf).doc("Returns name of a function."))
        .property(ling::I_HasDoc::$$doc, property_builder().getter(&docOf).doc("Returns description of a function."))
        .property(Invokable::$$defaults, property_builder()
                                             .getter(&defaultsOf)
                                             .setter(&setDefaults)
                                             .doc("Default values for arguments, can be overriden."))
        .property(Invokable::$$signature, property_builder().getter(&signatureOf).doc("Cached signature."))
        .property(Invokable::$$definingClass, property_builder().getter(&definingClassOf).doc("Definition class."))
        .property(Invokable::$$independent,
                  property_builder().getter(&isIndependent).doc("Whether it is called without a receiver in front."))
        .build();
}

const bool classIsQueued =
    (ling::internal::add_init_handler(ling::InitLevel::Classes, [] { (void)functionPythonClass(); }), true);

}  // namespace

const ling::Class_Generic& functionPythonClass() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(makeClass());
    return cls;
}

ling::Any functionFromPython(PyObject* object) {
    if (PyCallable_Check(object) == 0)
        return platform::failure(u"The source object isn't a function.");
    return PythonProxy::create(functionPythonClass(), object);
}

}  // namespace ling::python
