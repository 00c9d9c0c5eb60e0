#include "lingobject/wrapper.h"

#include "host/gil_guard.h"
#include "ling/class.h"
#include "ling/function.h"
#include "lingobject/instance.h"
#include "lingobject/types.h"
#include "lingobject/wrapper_memory.h"

#include <memory>
#include <new>
#include <utility>

namespace ling::python {

PyObject* wrapLocked(ling::Any&& value) {
    const ClassFacts* facts = factsOf(ling::raw_class_record(value));
    WrapperBlock* block = facts != nullptr ? newWrapper(*facts) : nullptr;
    if (block == nullptr)
        return nullptr;
    block->instance.value = std::construct_at(&block->cell, std::move(value));
    return &block->instance.ob_base;
}

PyObject* wrapValue(const ling::Any& value) {
    const GilGuard gil;
    return wrapLocked(ling::Any(value));
}

PyObject* bindLocked(PyObject* receiver, ling::internal::object_value* method) {
    const ClassFacts* facts = factsOf(ling::FunctionCL_Generic::getClass().record());
    WrapperBlock* block = facts != nullptr ? newWrapper(*facts) : nullptr;
    if (block == nullptr)
        return nullptr;
    block->instance.value = nullptr;
    block->bound = {Py_NewRef(receiver), method};
    return &block->instance.ob_base;
}

const ling::Any& makeBoundValue(PyObject* self) {
    WrapperBlock& block = blockOf(self);
    const auto [receiver, method] = block.bound;
    const ling::Any function = ling::Any::share(method);
    ling::Any bound = ling::unchecked<ling::I_Invokable_Generic>(function).bindArgs(valueOf(receiver));
    block.instance.value = std::construct_at(&block.cell, std::move(bound));
    Py_DECREF(receiver);  // Its value lives on in the function.
    return block.cell;
}

bool isLingObject(PyObject* object) noexcept {
    const PyTypeObject* type = Py_TYPE(object);
    return type->tp_name == kFamilyName || (type->tp_base != nullptr && type->tp_base->tp_name == kFamilyName);
}

const ling::Any* heldValue(PyObject* wrapper) { return &valueOf(wrapper); }

}  // namespace ling::python
