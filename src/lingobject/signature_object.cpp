#include "lingobject/signature_object.h"

#include "host/cached_import.h"
#include "host/names.h"
#include "host/py_ref.h"
#include "lingobject/instance.h"
#include "lingobject/slot_result.h"

namespace ling::python {

namespace {

constinit CachedImport parameterClass{"inspect", "Parameter"};
constinit CachedImport signatureClass{"inspect", "Signature"};
constinit const Name kSignature{"__signature__"};

/// The number that `inspect` has for how a parameter takes its argument.
int kindOf(ling::ParameterMode mode) noexcept {
    switch (mode) {
        case ling::ParameterMode::PositionalOnly:
            return 0;
        case ling::ParameterMode::Ordinary:
            return 1;
        case ling::ParameterMode::VariadicPositional:
            return 2;
        case ling::ParameterMode::NameOnly:
            return 3;
        case ling::ParameterMode::VariadicNamed:
            return 4;
    }
    return 1;
}

/// Adds `name: value` to keywords. Takes the reference over; false with the Python error set when it is null.
bool addKeyword(PyObject* keywords, const char* name, PyObject* value) {
    PyRef owned = PyRef::steal(value);
    return owned && PyDict_SetItemString(keywords, name, owned.get()) == 0;
}

/// A type stands as its text: the classes of numbers and texts have no Python type of that name.
bool addAnnotation(PyObject* keywords, const char* name, const ling::Type& type) {
    return type.isUntyped() || addKeyword(keywords, name, toPythonLocked(type.toString()));
}

/// Calls what `inspect` has for making one of these.
PyObject* make(CachedImport& maker, const PyRef& arguments, const PyRef& keywords) {
    PyObject* type = maker.require();
    return type != nullptr ? PyObject_Call(type, arguments.get(), keywords.get()) : nullptr;
}

PyRef makeParameter(const ling::Parameter& parameter) {
    PyRef arguments = PyRef::steal(Py_BuildValue("(Ni)", toPythonLocked(parameter.name()), kindOf(parameter.mode())));
    PyRef keywords = PyRef::steal(arguments ? PyDict_New() : nullptr);
    if (!keywords || !addAnnotation(keywords.get(), "annotation", parameter.type()))
        return {};
    if (parameter.hasDefault() && !addKeyword(keywords.get(), "default", giveResult(parameter.defaultValue())))
        return {};
    return PyRef::steal(make(parameterClass, arguments, keywords));
}

PyObject* makeSignature(const ling::Signature& signature) {
    PyRef parameters = PyRef::steal(PyList_New(0));
    for (const ling::Parameter& each : signature.parameters()) {
        PyRef parameter = parameters ? makeParameter(each) : PyRef();
        if (!parameter || PyList_Append(parameters.get(), parameter.get()) != 0)
            return nullptr;
    }
    PyRef arguments = PyRef::steal(parameters ? PyTuple_Pack(1, parameters.get()) : nullptr);
    PyRef keywords = PyRef::steal(arguments ? PyDict_New() : nullptr);
    if (!keywords || !addAnnotation(keywords.get(), "return_annotation", signature.resultType()))
        return nullptr;
    return make(signatureClass, arguments, keywords);
}

}  // namespace

std::optional<ling::Signature> signatureOf(const ling::Any& value) {
    const auto invokable = ling::I_Invokable_Generic::cast(value);
    if (!invokable)
        return std::nullopt;
    const ling::Result<ling::Signature> signature = invokable->signature();
    return signature ? *signature : ling::Signature({}, ling::Untyped::getType());
}

PyObject* readSignature(PyObject* self, void*) {
    const std::optional<ling::Signature> signature = signatureOf(*Receiver(self));
    if (mustRaise())
        return nullptr;
    if (signature)
        return makeSignature(*signature);
    PyErr_SetObject(PyExc_AttributeError, kSignature.object());
    return nullptr;
}

}  // namespace ling::python
