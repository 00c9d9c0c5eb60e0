#include "functions/module_python.h"

#include "host/boxed_object.h"
#include "host/error_scope.h"
#include "host/gil_guard.h"
#include "ling/class_builder.h"
#include "ling/extension.h"
#include "proxies/python_proxy.h"

#include <atomic>

namespace ling::python {

namespace {

/// Holds the Python module for good: whoever writes to the field writes to nothing.
class ModuleRecord final : public ling::internal::object_value_module {
public:
    using object_value_module::object_value_module;

    PyObject* pythonModule() const noexcept { return module_.load(std::memory_order_acquire); }
    /// Once, by the maker. The interpreter lock must be held.
    void hold(PyObject* module) noexcept { module_.store(Py_NewRef(module), std::memory_order_release); }

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

protected:
    ~ModuleRecord() override {
        const GilGuard gil = GilGuard::ifAlive();
        if (!gil)
            return;
        const ErrorScope pending;
        Py_XDECREF(module_.load(std::memory_order_relaxed));
    }

private:
    bool isModuleField(std::size_t position) const {
        return static_cast<std::int64_t>(position) == ownClass()->findField(PythonProxy::$_pyobj);
    }

    std::atomic<PyObject*> module_{nullptr};
};

ling::internal::object_value* allocateModule(ling::internal::object_value_class* klass) {
    return new ModuleRecord(klass, ling::String());
}

ling::Class_Generic makeClass() {
    return ling::internal::defclass_impl("ModulePython", "ling.python")
        .parent(ling::Module::getClass())
        .doc("Class to export a python module.")
        .hooks({.allocate = &allocateModule})
        .field(PythonProxy::$_pyobj, boxedObjectOption(), "The Python module.")
        .build();
}

const bool classIsQueued =
    (ling::internal::add_init_handler(ling::InitLevel::Classes, [] { (void)ModulePython::getClass(); }), true);

}  // namespace

ModulePython ModulePython::make(const ling::Class_Generic& cls, const ling::String& name, PyObject* module) {
    auto* record = new ModuleRecord(cls.record(), name);
    record->hold(module);
    return ModulePython(ling::unchecked<ling::Module>(ling::Any::adopt(record)));
}

PyObject* ModulePython::pythonModule(const ling::Any& value) noexcept {
    ling::internal::object_value* record = ling::internal::cast_object(value, getClass());
    return record == nullptr ? nullptr : static_cast<ModuleRecord*>(record)->pythonModule();
}

const ling::Class_Generic& ModulePython::getClass() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(makeClass());
    return cls;
}

}  // namespace ling::python
