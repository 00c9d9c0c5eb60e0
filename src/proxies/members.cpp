#include "proxies/members.h"

#include "bridge/convert.h"
#include "host/entry.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/members.h"
#include "proxies/argument_array.h"
#include "proxies/method_names.h"
#include "proxies/python_proxy.h"

#include <array>
#include <cstddef>
#include <utility>

/// CPython's own look-up of what is called next: a function of the type comes without being bound. Answers whether it
/// did; null with an error when there is nothing. Exported, but declared in a header for CPython's own modules.
extern "C" int _PyObject_GetMethod(PyObject* object, PyObject* name, PyObject** method);

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

/// The interned names of identifiers that are kept for the process, the one found last in each place. Under the
/// interpreter lock.
class NameCache {
public:
    /// Borrowed until the next question. Null, with an error pending, for a name that is no text.
    PyObject* find(const ling::identifier& id) {
        Entry& entry = entries_[reinterpret_cast<std::uintptr_t>(id.data()) / alignof(std::max_align_t) % kSize];
        if (entry.id == id.data())
            return entry.name.get();
        PyRef name = pythonName(id.name());
        if (!name)
            return nullptr;
        entry.id = id.data();
        std::swap(entry.name, name);  // The end of a `str` runs no code.
        return entry.name.get();
    }

private:
    struct Entry {
        const ling::internal::identifier_data* id = nullptr;
        PyRef name;
    };
    static constexpr std::size_t kSize = 512;
    std::array<Entry, kSize> entries_;
};

PyObject* cachedName(const ling::identifier& id) {
    static NameCache& cache = *new NameCache;
    return cache.find(id);
}

/// Whether an attribute is found by the usual rules, and is a function that the type has, or what stands in the object
/// itself: finding it runs no code then. `name` is the attribute's.
bool isFoundQuietly(PyObject* object, PyObject* name) {
    PyTypeObject* type = Py_TYPE(object);
    if (type->tp_getattro != PyObject_GenericGetAttr)
        return false;
    PyObject* onType = _PyType_Lookup(type, name);
    return onType == nullptr || PyFunction_Check(onType) || Py_IS_TYPE(onType, &PyMethodDescr_Type);
}

/// A callable that becomes a `ling` function around it, and no other value.
bool isPlainCallable(PyObject* object) {
    return PyMethod_Check(object) || PyFunction_Check(object) || PyCFunction_CheckExact(object) ||
           Py_IS_TYPE(object, &PyMethodDescr_Type);
}

/// A callable as it was found, and whether the object goes in front of the arguments.
struct FoundCallable {
    PyRef callable;
    bool takesObject = false;
};

FoundCallable findQuietly(PyObject* object, const ling::identifier& id) {
    const PyRef name = PyRef::borrow(cachedName(id));
    PyObject* found = nullptr;
    bool takesObject = false;
    if (name && isFoundQuietly(object, name.get()))
        takesObject = _PyObject_GetMethod(object, name.get(), &found) != 0;
    PyRef callable = PyRef::steal(found);
    forgetError();
    return callable && isPlainCallable(callable.get()) ? FoundCallable{std::move(callable), takesObject}
                                                       : FoundCallable{};
}

/// What `$__method__` offers: the callables that are the commonest are called where they are found, without a function
/// of `ling` around them.
class Source final : public platform::MethodWays {
public:
    bool callMethod(const ling::Any& self, const ling::method_ident_untyped& id, std::span<const ling::Any> arguments,
                    ling::Any& result) const override {
        PyObject* held = PythonProxy::pythonObject(self);
        if (held == nullptr || id.data()->hash == 0)  // A name that nobody keeps.
            return false;
        PythonEntry entry;
        const PyRef object = PyRef::borrow(held);  // The call may take it from `self`.
        const FoundCallable method = findQuietly(object.get(), id);
        if (!method.callable)
            return false;
        result = method.takesObject ? callPythonWith(object.get(), method.callable.get(), arguments)
                                    : callPython(method.callable.get(), arguments);
        return true;
    }
};

ling::FunctionCL_Generic offering(ling::FunctionCL_Generic function) {
    static const Source& source = *new Source;
    return platform::offering(std::move(function), source);
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
        .method(ling::Any::$__property__, offering(ling::make_method("__property__", "name", &findProperty)))
        .method(ling::Any::$__ownProperty__, "name", &findProperty)
        .method(ling::Any::$__ownProperties__, "", &listNothing)
        .method(ling::Any::$__ownMethods__, "", &listNothing)
        .method(ling::Any::$__ownMethod__, "name", &findMethod)
        .method(ling::Any::$__method__, offering(ling::make_method("__method__", "name", &findMethod)))
        .method(ling::Any::$__insertProperty__, "name, property", &insertProperty)
        .method(ling::Any::$__insertMethod__, "name, function", &insertMethod);
}

}  // namespace ling::python
