#include "proxies/members.h"

#include "bridge/convert.h"
#include "host/entry.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/members.h"
#include "proxies/method_names.h"
#include "proxies/python_proxy.h"

namespace ling::python {

namespace {

/// The name as an interned `str`, as attribute tables have theirs. Null, with an error pending, for one that has none.
PyRef pythonName(const ling::String& name) {
    PyObject* text = toPython(name);
    if (text != nullptr)
        PyUnicode_InternInPlace(&text);
    return PyRef::steal(text);
}

/// Converts to an invokable; none for everything else. Leaves nothing pending.
ling::Any invokableFrom(PyObject* object) {
    if (object == nullptr || PyCallable_Check(object) == 0)
        return {};
    ling::Any converted = toLing(object);
    forgetError();
    return ling::I_Invokable_Generic::cast(converted) ? converted : ling::Any();
}

ling::Any findMethod(const ling::Any& self, const ling::String& name) {
    ling::Any own = ling::raw_method_of(self, platform::LookupName(name).method());
    PyObject* object = PythonProxy::pythonObject(self);
    if (!own.isNone() || object == nullptr)
        return own;
    PythonEntry entry;
    PyRef key = pythonName(name);
    PyRef attribute = key ? PyRef::steal(PyObject_GetAttr(object, key.get())) : PyRef();
    if (!attribute)
        forgetError();
    return invokableFrom(attribute.get());
}

bool isProperty(PyObject* attribute) { return attribute != nullptr && PyObject_TypeCheck(attribute, &PyProperty_Type); }

/// The property object that Python has under a name: on the type, where reading it through the object would run its
/// getter, else whatever the object itself gives.
PyRef findPythonProperty(PyObject* object, PyObject* name) {
    PyRef onType = PyRef::borrow(_PyType_Lookup(Py_TYPE(object), name));
    if (onType)
        return isProperty(onType.get()) ? onType : PyRef();
    PyRef ownAttribute = PyRef::steal(PyObject_GetAttr(object, name));
    if (!ownAttribute)
        forgetError();
    return isProperty(ownAttribute.get()) ? ownAttribute : PyRef();
}

ling::Any accessor(PyObject* property, const Name& name) {
    PyRef function = PyRef::steal(attribute(property, name));
    if (!function)
        forgetError();
    return invokableFrom(function.get());
}

ling::Any lingProperty(PyObject* property) {
    const ling::Any getter = accessor(property, names::fget);
    if (getter.isNone())
        return {};
    ling::internal::property_builder_base builder;
    builder.assign_independent(false);  // Both want the object in front, though nothing in Python says so.
    builder.assign_getter(ling::unchecked<ling::I_Invokable_Generic>(getter));
    const ling::Any setter = accessor(property, names::fset);
    if (!setter.isNone())
        builder.assign_setter(ling::unchecked<ling::I_Invokable_Generic>(setter));
    return builder.build();
}

ling::Any findProperty(const ling::Any& self, const ling::String& name) {
    ling::Any own = ling::raw_property_of(self, platform::LookupName(name).property());
    PyObject* object = PythonProxy::pythonObject(self);
    if (!own.isNone() || object == nullptr)
        return own;
    PythonEntry entry;
    PyRef key = pythonName(name);
    if (!key) {
        forgetError();
        return {};
    }
    PyRef property = findPythonProperty(object, key.get());
    return property ? lingProperty(property.get()) : ling::Any();
}

/// Sets an attribute of the held object to a converted value. None, or the error.
ling::Any setAttribute(const ling::Any& self, const ling::String& name, const ling::Any& value) {
    PythonEntry entry;
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr)
        return platform::failure(u"The object is null.");
    PyRef key = pythonName(name);
    PyRef converted = key ? PyRef::steal(toPython(value)) : PyRef();
    if (converted && PyObject_SetAttr(object, key.get(), converted.get()) == 0)
        return {};
    const ling::Any error = takePythonError();
    return error.isNone() ? platform::failure(ling::String(u"Unable to convert an argument: {}.").arg(value)) : error;
}

ling::Any insertMethod(const ling::Any& self, const ling::String& name, const ling::I_Invokable_Generic& function) {
    const bool wantsReceiver = !function.isIndependent() && function.parameterCount() > 0;
    return setAttribute(self, name, wantsReceiver ? function.bindArgs(self) : function);
}

ling::Any insertProperty(const ling::Any& self, const ling::String& name, const ling::Property& property) {
    if (property.isValue())
        return setAttribute(self, name, property.value());
    return platform::failure(
        u"Unable to insert non-value property to a python object, use 'raw_insert_property' instead.");
}

bool removeNothing(const ling::Any&, const ling::String&) { return false; }
ling::List_Generic listNothing(const ling::Any&) { return ling::List_Generic::empty(); }

}  // namespace

void addMemberProtocol(ling::internal::class_builder& builder) {
    builder.method(ling::Any::$__removeProperty__, "name", &removeNothing)
        .method(ling::Any::$__removeMethod__, "name", &removeNothing)
        .method(ling::Any::$__property__, "name", &findProperty)
        .method(ling::Any::$__ownProperty__, "name", &findProperty)
        .method(ling::Any::$__ownProperties__, "", &listNothing)
        .method(ling::Any::$__ownMethods__, "", &listNothing)
        .method(ling::Any::$__ownMethod__, "name", &findMethod)
        .method(ling::Any::$__method__, "name", &findMethod)
        .method(ling::Any::$__insertProperty__, "name, property", &insertProperty)
        .method(ling::Any::$__insertMethod__, "name, function", &insertMethod);
}

}  // namespace ling::python
