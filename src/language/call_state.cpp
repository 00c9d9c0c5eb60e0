#include "language/call_state.h"

#include "bridge/contained.h"
#include "bridge/convert.h"
#include "host/interruption.h"
#include "language/code_wrap.h"
#include "proxies/python_exception.h"
#include "proxies/python_proxy.h"

#include <memory>
#include <optional>

namespace ling::python {

namespace {

constexpr const char* kCapsuleName = "ling.evaluation";

CallState& stateOf(PyObject* capsule) { return *static_cast<CallState*>(PyCapsule_GetPointer(capsule, kCapsuleName)); }

void destroyState(PyObject* capsule) { delete &stateOf(capsule); }

bool checkOpen(PyObject* capsule) {
    if (stateOf(capsule).isOpen())
        return true;
    PyErr_SetString(PyExc_RuntimeError, "The evaluation has ended.");
    return false;
}

/// No value, with the Python error set, for what cannot be converted.
std::optional<ling::Any> convertArgument(PyObject* argument) {
    ling::Any value = toLing(argument);
    if (mustRaise())
        return std::nullopt;
    return value;
}

/// What a variable is handed back as. An exception that converts to an error would end the evaluation instead, as if it
/// had been raised: it goes back as the object that it is.
std::optional<ling::Any> convertVariable(PyObject* variable) {
    std::optional<ling::Any> value = convertArgument(variable);
    if (value && ling::internal::is_error_result(*value) && PyExceptionInstance_Check(variable))
        value = PythonProxy::create(PythonException::getClass(), variable);
    return value;
}

PyObject* storeResult(PyObject* capsule, PyObject* argument) {
    if (!checkOpen(capsule))
        return nullptr;
    std::optional<ling::Any> result = convertArgument(argument);
    if (!result)
        return nullptr;
    stateOf(capsule).setResult(*std::move(result));
    Py_RETURN_NONE;
}

PyObject* storeLocal(PyObject* capsule, PyObject* const* arguments, Py_ssize_t count) {
    if (count != 2)
        return PyErr_Format(PyExc_TypeError, "%s() takes exactly 2 arguments (%zd given)", names::kStoreLocal, count);
    if (!PyUnicode_Check(arguments[0]))
        return PyErr_Format(PyExc_TypeError, "%s() argument 1 must be str, not %T", names::kStoreLocal, arguments[0]);
    if (!checkOpen(capsule))
        return nullptr;
    const std::optional<ling::Any> name = convertArgument(arguments[0]);
    const std::optional<ling::Any> value = name ? convertVariable(arguments[1]) : std::nullopt;
    if (!value)
        return nullptr;
    const ling::Any outcome = stateOf(capsule).setLocal(*name, *value);
    if (ling::internal::is_error_result(outcome))
        return toPython(outcome);
    if (mustRaise())  // The map is a Python object that could not convert what it answered.
        return nullptr;
    Py_RETURN_NONE;
}

PyMethodDef kStoreResultDefinition = {names::kStoreResult, contained<storeResult>, METH_O,
                                      "Keeps a value as the result of the evaluation."};
PyMethodDef kStoreLocalDefinition = {names::kStoreLocal,
                                     reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(contained<storeLocal>)),
                                     METH_FASTCALL, "Hands a variable back to the caller of the evaluation."};

PyRef makeCapsule(const ling::I_Map_Generic& outLocals) {
    auto state = std::make_unique<CallState>(outLocals);
    PyRef capsule = PyRef::steal(PyCapsule_New(state.get(), kCapsuleName, destroyState));
    if (capsule)
        (void)state.release();
    return capsule;
}

bool storeFunction(PyObject* target, PyMethodDef& definition, PyObject* capsule) {
    PyRef function = PyRef::steal(PyCFunction_New(&definition, capsule));
    return function && PyDict_SetItemString(target, definition.ml_name, function.get()) == 0;
}

}  // namespace

CallState* CallState::install(PyObject* target, const ling::I_Map_Generic& outLocals, PyRef& capsule) {
    capsule = makeCapsule(outLocals);
    const bool done = capsule && storeFunction(target, kStoreLocalDefinition, capsule.get()) &&
                      storeFunction(target, kStoreResultDefinition, capsule.get());
    return done ? &stateOf(capsule.get()) : nullptr;
}

ling::Any CallState::close() {
    isOpen_ = false;
    const ling::Any outLocals = std::move(outLocals_);  // Goes last: dropping it may run any code.
    return std::move(result_);
}

ling::Any CallState::setLocal(const ling::Any& name, const ling::Any& value) {
    const ling::Result<ling::I_MutableMap_Generic> map = ling::I_MutableMap_Generic::cast(outLocals_);
    return map ? map->set(name, value) : map.error();
}

}  // namespace ling::python
