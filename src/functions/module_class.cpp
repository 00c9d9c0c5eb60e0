#include "functions/module_class.h"

#include "bridge/convert.h"
#include "host/error_scope.h"
#include "host/gil_guard.h"
#include "host/names.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/error.h"
#include "ling/property.h"

#include <utility>

namespace ling::python {

namespace {

using ling::internal::object_value_class;

/// What a member of a module is in the host: a class or something to call. None for all others and for what does not
/// convert.
ling::Any exportedMember(PyObject* value) {
    if (!PyType_Check(value) && PyCallable_Check(value) == 0)
        return {};
    ling::Any member = toLing(value);
    PyErr_Clear();
    return ling::internal::is_error_result(member) ? ling::Any() : member;
}

void addMember(object_value_class& record, PyObject* key, PyObject* value) {
    if (!PyUnicode_Check(key))
        return;
    const ling::Result<ling::String> name = ling::String::cast(toLing(key));
    PyErr_Clear();
    if (!name || !isPublicName(*name))
        return;
    const ling::Any member = exportedMember(value);
    if (member.isNone())
        return;
    ling::internal::property_builder_base property;
    property.assign_getter_value(member);
    record.add_class_property_unsafe(ling::property_ident_untyped(*name), &record, property.build());
}

/// Walks a copy: converting a member can run code that changes the module.
void addMembers(object_value_class& record, PyObject* module) {
    PyRef members = PyRef::steal(PyModule_Check(module) ? PyDict_Copy(PyModule_GetDict(module)) : nullptr);
    PyObject* key = nullptr;
    PyObject* value = nullptr;
    Py_ssize_t position = 0;
    while (members && PyDict_Next(members.get(), &position, &key, &value) != 0)
        addMember(record, key, value);
}

/// The documentation where it is a text, else an empty one.
ling::String docOf(PyObject* module) {
    PyRef doc = PyRef::steal(attribute(module, names::doc));
    const ling::Any text = doc && PyUnicode_Check(doc.get()) ? toLing(doc.get()) : ling::Any();
    PyErr_Clear();
    return ling::String::cast(text).valueOr(ling::String());
}

}  // namespace

bool isPublicName(const ling::String& name) { return !name.isEmpty() && !name.startsWith(u"_"); }

void reportNotExported(const ling::String& pythonName, const ling::Any& error) {
    const ling::Result<ling::Error> known = ling::Error::cast(error);
    platform::report(ling::String(u"Unable to export the Python module {}: {}")
                         .arg(pythonName, known ? known->message() : ling::String()));
}

ModuleClass::ModuleClass(const ling::String& name, const ling::Class_Generic& parent, ling::String pythonName)
    : object_value_class(name), pythonName_(std::move(pythonName)) {
    (void)add_parent_unsafe(parent);
    expect_members_unsafe();
}

ModuleClass::~ModuleClass() {
    if (const GilGuard gil = GilGuard::ifAlive()) {
        const ErrorScope pending;
        Py_XDECREF(module_.load(std::memory_order_relaxed));
    }
}

ling::Class_Generic ModuleClass::make(const ling::String& name, const ling::Class_Generic& parent, PyObject* module) {
    auto* record = new ModuleClass(name, parent, ling::String());
    ling::Class_Generic cls = ling::Class_Generic::adopt(record);
    record->module_.store(Py_NewRef(module), std::memory_order_release);
    (void)record->ensureMembers();
    return cls;
}

ling::Class_Generic ModuleClass::makeLate(const ling::String& name, const ling::Class_Generic& parent,
                                          const ling::String& pythonName) {
    return ling::Class_Generic::adopt(new ModuleClass(name, parent, pythonName));
}

PyObject* ModuleClass::module() {
    (void)ensureMembers();
    return module_.load(std::memory_order_acquire);
}

/// Whoever looks may have a Python error pending, which is no business of the import's.
bool ModuleClass::declareMembers() {
    const GilGuard gil = GilGuard::ifAlive();
    if (!gil)
        return false;
    const ErrorScope pending;
    fetched_.run([this] { return fetch(); });
    return fetched_.isDone();
}

bool ModuleClass::fetch() {
    if (!import())
        return false;
    PyObject* module = module_.load(std::memory_order_acquire);
    set_doc_unsafe(docOf(module));
    addMembers(*this, module);
    return true;
}

bool ModuleClass::import() {
    if (module_.load(std::memory_order_acquire) != nullptr)
        return true;
    PyRef name = PyRef::steal(toPython(pythonName_));
    PyRef imported = name ? PyRef::steal(PyImport_Import(name.get())) : PyRef();
    if (!imported) {
        reportNotExported(pythonName_, takePythonError());
        return false;
    }
    module_.store(imported.release(), std::memory_order_release);
    return true;
}

}  // namespace ling::python
