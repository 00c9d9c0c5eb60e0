#include "lingobject/wrapper.h"

#include "host/gil_guard.h"
#include "ling/class.h"
#include "lingobject/instance.h"
#include "lingobject/types.h"

namespace ling::python {

PyObject* wrapValue(const ling::Any& value) {
    GilGuard gil;
    PyTypeObject* type = typeForClass(ling::raw_class_of(value));
    if (type == nullptr)
        return nullptr;
    auto* instance = PyObject_New(Instance, type);
    if (instance != nullptr)
        instance->value = new ling::Any(value);
    return reinterpret_cast<PyObject*>(instance);
}

bool isLingObject(PyObject* object) noexcept {
    const PyTypeObject* type = Py_TYPE(object);
    return type->tp_name == kFamilyName || (type->tp_base != nullptr && type->tp_base->tp_name == kFamilyName);
}

const ling::Any* heldValue(PyObject* wrapper) noexcept { return reinterpret_cast<Instance*>(wrapper)->value; }

}  // namespace ling::python
