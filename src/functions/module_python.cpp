#include "functions/module_python.h"

#include "functions/module_class.h"
#include "host/boxed_object.h"
#include "host/platform.h"
#include "ling/class_builder.h"
#include "ling/extension.h"
#include "proxies/python_proxy.h"

namespace ling::python {

namespace {

/// What its class holds is in the field of the instance: whoever writes to that writes to nothing.
class ModuleRecord final : public ling::internal::object_value_module {
public:
    using object_value_module::object_value_module;

    PyObject* pythonModule() const {
        ModuleClass* cls = moduleClass();
        return cls == nullptr ? nullptr : cls->module();
    }

    /// What somebody has said about it, else what the Python module says about itself.
    ling::String doc() const override {
        ling::String own = object_value_module::doc();
        return own.isEmpty() && moduleClass() != nullptr ? ling::Class_Generic::share(ownClass()).doc() : own;
    }
    ling::Any field(std::size_t position) const override {
        if (!isModuleField(position))
            return object_value_module::field(position);
        PyObject* held = pythonModule();
        return held == nullptr ? ling::Any() : ling::Any(BoxedObject(held));
    }
    void setField(std::size_t position, ling::Any value) override {
        if (!isModuleField(position))
            object_value_module::setField(position, std::move(value));
    }

private:
    /// Null for an instance of any other class.
    ModuleClass* moduleClass() const { return dynamic_cast<ModuleClass*>(ownClass()); }
    bool isModuleField(std::size_t position) const {
        return static_cast<std::int64_t>(position) == ownClass()->findField(PythonProxy::$_pyobj);
    }
};

ling::internal::object_value* allocateModule(ling::internal::object_value_class* klass) {
    return new ModuleRecord(klass, ling::String());
}

ling::Any refuseConstruction(const ling::Class_Generic& cls, std::span<const ling::Any>) {
    return platform::failure(
        ling::String(u"Instances of the class '{}' stand for Python modules: they are made by exporting one.")
            .arg(ling::qualname(cls)));
}

ling::Class_Generic makeClass() {
    return ling::internal::defclass_impl("ModulePython", "ling.python")
        .parent(ling::Module::getClass())
        .doc("Class to export a python module.")
        .hooks({.allocate = &allocateModule, .construct = &refuseConstruction})
        .field(PythonProxy::$_pyobj, boxedObjectOption(), "The Python module.")
        .build();
}

ling::String lastPart(const ling::String& name) { return name.sliced(platform::lastIndexOf(name, u'.') + 1); }

const bool classIsQueued =
    (ling::internal::add_init_handler(ling::InitLevel::Classes, [] { (void)ModulePython::getClass(); }), true);

}  // namespace

ModulePython ModulePython::make(const ling::String& name, PyObject* module) {
    return makeInstance(ModuleClass::make(lastPart(name), getClass(), module), name);
}

ModulePython ModulePython::makeLate(const ling::String& name, const ling::String& pythonName) {
    return makeInstance(ModuleClass::makeLate(lastPart(name), getClass(), pythonName), name);
}

ModulePython ModulePython::makeInstance(const ling::Class_Generic& cls, const ling::String& name) {
    return ModulePython(ling::unchecked<ling::Module>(ling::Any::adopt(new ModuleRecord(cls.record(), name))));
}

bool ModulePython::isInstance(const ling::Any& value) noexcept {
    return ling::internal::cast_object(value, getClass()) != nullptr;
}

PyObject* ModulePython::pythonModule(const ling::Any& value) {
    ling::internal::object_value* record = ling::internal::cast_object(value, getClass());
    return record == nullptr ? nullptr : static_cast<ModuleRecord*>(record)->pythonModule();
}

const ling::Class_Generic& ModulePython::getClass() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(makeClass());
    return cls;
}

}  // namespace ling::python
