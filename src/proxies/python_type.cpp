#include "proxies/python_type.h"

#include "bridge/convert.h"
#include "bridge/date_time.h"
#include "host/entry.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/class_record.h"
#include "ling/error.h"
#include "ling/native_function.h"
#include "ling/property.h"
#include "proxies/argument_array.h"
#include "proxies/method_names.h"
#include "proxies/proxy_record.h"
#include "proxies/python_proxy.h"

#include <string_view>
#include <unordered_map>

namespace ling::python {

namespace {

using ling::internal::object_value_class;

/// The record of a class that stands for a Python type. It keeps the type alive.
class TypeRecord final : public object_value_class {
public:
    TypeRecord(const ling::String& name, PyTypeObject* type)
        : object_value_class(name), type_(reinterpret_cast<PyTypeObject*>(Py_NewRef(type))) {}

    PyTypeObject* type() const noexcept { return type_; }
    PyObject* object() const noexcept { return reinterpret_cast<PyObject*>(type_); }
    /// Calling the class calls the type.
    ling::Any invoke(std::span<const ling::Any> arguments) override { return invokeNamed(arguments, {}); }
    ling::Any invokeNamed(std::span<const ling::Any> positional, std::span<const ling::NamedArgument> named) override {
        return platform::contain([&] {
            PythonEntry entry;
            return callPython(object(), positional, named);
        });
    }

protected:
    /// Only the class of a type that could not be converted goes: the cache keeps every other for the process.
    ~TypeRecord() override { dropOnAnyThread(object()); }

private:
    PyTypeObject* const type_;
};

/// The classes made so far. Read and written under the interpreter lock, by steps that run no other code.
std::unordered_map<PyTypeObject*, ling::Class_Generic>& cache() {
    static auto& classes = *new std::unordered_map<PyTypeObject*, ling::Class_Generic>;
    return classes;
}

/// What follows the last dot, unless that is the first character.
ling::String shortName(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return ling::String(dot == std::string_view::npos || dot == 0 ? name : name.substr(dot + 1));
}

/// An attribute as text, or an empty one. Leaves nothing pending.
ling::String textAttribute(PyObject* object, const Name& name) {
    PyRef value = PyRef::steal(attribute(object, name));
    const ling::Any text = value && PyUnicode_Check(value.get()) ? toLing(value.get()) : ling::Any();
    forgetError();
    return ling::String::cast(text).valueOr(ling::String());
}

bool isClassMethod(PyObject* member) {
    return PyObject_TypeCheck(member, &PyClassMethod_Type) != 0 || Py_IS_TYPE(member, &PyClassMethodDescr_Type);
}

/// Adds a class method as Python calls it, bound to the type. One that refuses to be bound is none.
void addBoundMethod(TypeRecord& record, const ling::String& name, PyObject* member) {
    const descrgetfunc bind = Py_TYPE(member)->tp_descr_get;
    PyRef bound = bind != nullptr ? PyRef::steal(bind(member, nullptr, record.object())) : PyRef();
    const ling::Any converted = bound ? toLing(bound.get()) : ling::Any();
    forgetError();
    if (const auto callable = ling::I_Invokable_Generic::cast(converted))
        record.add_class_method_unsafe(ling::method_ident_untyped(name), &record, *callable);
}

/// Types and decimals are made from what is in them, which may fail. Whatever else gives an error result is an error,
/// or stands for one: that is its value.
bool isMadeFromContent(PyObject* value) { return PyType_Check(value) || Py_IS_TYPE(value, decimalType()); }

/// Adds one entry of the type's dictionary. None, or the error that ends the build.
ling::Any addMember(TypeRecord& record, const ling::String& name, PyObject* value) {
    if (isClassMethod(value)) {
        addBoundMethod(record, name, value);
        if (PyCallable_Check(value) != 0)  // Unbound, that of a built-in class would ask for the type.
            return {};
    }
    const ling::Any converted = toLing(value);
    forgetError();  // A number too large says so by its value alone here.
    if (ling::internal::is_error_result(converted) && isMadeFromContent(value))
        return converted;
    if (const auto callable = ling::I_Invokable_Generic::cast(converted); callable && PyCallable_Check(value) != 0) {
        record.add_class_method_unsafe(ling::method_ident_untyped(name), &record, *callable);
        return {};
    }
    ling::internal::property_builder_base property;
    property.assign_getter_value(converted);
    property.assign_doc(textAttribute(value, names::doc));
    record.add_class_property_unsafe(ling::property_ident_untyped(name), &record, property.build());
    return {};
}

/// The type's own dictionary, as it is now: converting what is in it may run code that changes the type.
PyRef snapshotOfMembers(PyTypeObject* type) {
    PyRef dictionary = PyRef::steal(PyType_GetDict(type));
    return dictionary ? PyRef::steal(PyDict_Copy(dictionary.get())) : PyRef();
}

/// The name of a member that `ling` sees; empty for a private one.
ling::String publicName(PyObject* key) {
    const ling::Any text = PyUnicode_Check(key) ? toLing(key) : ling::Any();
    forgetError();
    ling::String name = ling::String::cast(text).valueOr(ling::String());
    return name.startsWith(u"_") ? ling::String() : name;
}

ling::Any addMembers(TypeRecord& record) {
    PyRef members = snapshotOfMembers(record.type());
    if (!members)
        return takePythonError();
    PyObject* key = nullptr;
    PyObject* value = nullptr;
    for (Py_ssize_t position = 0; PyDict_Next(members.get(), &position, &key, &value) != 0;) {
        const ling::String name = publicName(key);
        ling::Any problem = name.isEmpty() ? ling::Any() : addMember(record, name, value);
        if (!problem.isNone())
            return problem;
    }
    return {};
}

/// Adds the class methods that the type inherits, bound to the type itself: those of the parents' classes are bound to
/// the parents.
void addInheritedClassMethods(TypeRecord& record) {
    PyRef order = PyRef::borrow(record.type()->tp_mro);
    for (Py_ssize_t i = 1; order && i < PyTuple_GET_SIZE(order.get()); ++i) {
        PyObject* base = PyTuple_GET_ITEM(order.get(), i);
        PyRef members = snapshotOfMembers(reinterpret_cast<PyTypeObject*>(base));
        PyObject* key = nullptr;
        PyObject* value = nullptr;
        for (Py_ssize_t position = 0; members && PyDict_Next(members.get(), &position, &key, &value) != 0;) {
            if (!isClassMethod(value) || _PyType_Lookup(record.type(), key) != value)
                continue;
            if (const ling::String name = publicName(key); !name.isEmpty())
                addBoundMethod(record, name, value);
        }
    }
    forgetError();
}

ling::Any addBases(TypeRecord& record) {
    if (PyType_HasFeature(record.type(), Py_TPFLAGS_BASE_EXC_SUBCLASS))
        (void)record.add_parent_unsafe(ling::Error::getClass());
    PyRef bases = PyRef::steal(attribute(record.object(), names::bases));
    PyRef iterator = bases ? PyRef::steal(PyObject_GetIter(bases.get())) : PyRef();
    if (!iterator)
        return takePythonError();
    while (PyRef base = PyRef::steal(PyIter_Next(iterator.get()))) {
        const ling::Any converted = toLing(base.get());
        const ling::Result<ling::Class_Generic> parent = ling::Class_Generic::cast(converted);
        if (!parent)
            return ling::internal::is_error_result(converted) ? converted : parent.error();
        (void)record.add_parent_unsafe(*parent);
    }
    return takePythonError();
}

/// The name of the Python module that the class comes from: what `ling` code cannot read off the class's own name.
void addModuleName(TypeRecord& record) {
    ling::internal::property_builder_base property;
    const ling::Any keeper = PythonProxy::create(ProxyClass::Object, record.object());
    property.assign_getter(ling::make_function("pythonModule", "", [keeper] {
        PythonEntry entry;
        return textAttribute(PythonProxy::pythonObject(keeper), names::module);
    }));
    property.assign_doc(ling::String("Name of the Python module that defines the class."));
    record.add_class_property_unsafe(ling::property_ident_untyped("pythonModule"), &record, property.build());
}

/// Parents before members: what converts back to the class while its members are converted finds it in its place.
ling::Any build(TypeRecord& record) {
    ling::Any problem = addBases(record);
    if (!problem.isNone())
        return problem;
    if (ling::Class_Generic::share(&record).parents().empty())  // The root of Python's classes.
        (void)record.add_parent_unsafe(ling::Any::getClass());
    record.set_doc_unsafe(textAttribute(record.object(), names::doc));
    addModuleName(record);
    addInheritedClassMethods(record);
    return addMembers(record);
}

}  // namespace

ling::Any PythonType::fromPythonType(PyObject* object) {
    if (!PyType_Check(object))
        return platform::failure(u"Not a type.");
    auto* type = reinterpret_cast<PyTypeObject*>(object);
    if (auto known = cache().find(type); known != cache().end())
        return known->second;
    auto* record = new TypeRecord(shortName(type->tp_name), type);
    const ling::Class_Generic cls = ling::Class_Generic::adopt(record);
    cache().emplace(type, cls);
    ling::Any problem = build(*record);
    if (problem.isNone())
        return cls;
    cache().erase(type);
    return problem;
}

ling::Result<PythonType> PythonType::cast(const ling::Any& value) {
    const ling::Result<ling::Class_Generic> cls = ling::Class_Generic::cast(value);
    if (cls && pythonTypeOf(*cls) != nullptr)
        return ling::unchecked<PythonType>(value);
    return ling::Result<PythonType>::failure(ling::internal::cast_error(value, ling::Class_Generic::getClass()));
}

PyTypeObject* pythonTypeOf(const ling::Class_Generic& cls) noexcept {
    const auto* record = dynamic_cast<const TypeRecord*>(cls.record());
    return record == nullptr ? nullptr : record->type();
}

}  // namespace ling::python
