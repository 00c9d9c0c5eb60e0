#include "proxies/python_type.h"

#include "bridge/convert.h"
#include "host/entry.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/class_record.h"
#include "ling/error.h"
#include "ling/native_function.h"
#include "ling/property.h"
#include "proxies/argument_array.h"
#include "proxies/method_names.h"

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
    /// Calling the class calls the type.
    ling::Any invoke(std::span<const ling::Any> arguments) override;

private:
    PyTypeObject* const type_;  // Never let go: the cache keeps the class for the process.
};

ling::Any TypeRecord::invoke(std::span<const ling::Any> arguments) {
    PythonEntry entry;
    ArgumentArray converted(arguments.size());
    for (const ling::Any& argument : arguments)
        if (!converted.add(argument))
            return cannotConvert(argument);
    return takeResult(converted.call(reinterpret_cast<PyObject*>(type_)));
}

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
    PyErr_Clear();
    return ling::String::cast(text).valueOr(ling::String());
}

/// Adds one entry of the type's dictionary. None, or the error that ends the build.
ling::Any addMember(TypeRecord& record, const ling::String& name, PyObject* value) {
    const ling::Any converted = toLing(value);
    PyErr_Clear();  // A number too large says so by its value alone here.
    if (ling::internal::is_error_result(converted) && !PyExceptionInstance_Check(value))
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

ling::Any addMembers(TypeRecord& record) {
    PyRef members = snapshotOfMembers(record.type());
    if (!members)
        return takePythonError();
    PyObject* key = nullptr;
    PyObject* value = nullptr;
    for (Py_ssize_t position = 0; PyDict_Next(members.get(), &position, &key, &value) != 0;) {
        const ling::Any text = PyUnicode_Check(key) ? toLing(key) : ling::Any();
        PyErr_Clear();
        const ling::String name = ling::String::cast(text).valueOr(ling::String());
        if (name.isEmpty() || name.startsWith(u"_"))
            continue;
        ling::Any problem = addMember(record, name, value);
        if (!problem.isNone())
            return problem;
    }
    return {};
}

ling::Any addBases(TypeRecord& record) {
    if (PyType_HasFeature(record.type(), Py_TPFLAGS_BASE_EXC_SUBCLASS))
        (void)record.add_parent_unsafe(ling::Error::getClass());
    PyRef bases = PyRef::steal(attribute(reinterpret_cast<PyObject*>(record.type()), names::bases));
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
    PyObject* type = reinterpret_cast<PyObject*>(record.type());
    ling::internal::property_builder_base property;
    property.assign_getter(ling::make_function("pythonModule", "", [type] {
        PythonEntry entry;
        return textAttribute(type, names::module);
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
    record.set_doc_unsafe(textAttribute(reinterpret_cast<PyObject*>(record.type()), names::doc));
    addModuleName(record);
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
