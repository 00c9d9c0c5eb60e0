#include "functions/signature.h"

#include "bridge/convert.h"
#include "host/interruption.h"
#include "host/names.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/class.h"
#include "ling/function.h"

#include <vector>

namespace ling::python {

namespace names {

inline constinit const Name annotation{"annotation"};
inline constinit const Name defaultValue{"default"};
inline constinit const Name empty{"empty"};
inline constinit const Name kind{"kind"};
inline constinit const Name parameterName{"name"};
inline constinit const Name parameters{"parameters"};
inline constinit const Name returnAnnotation{"return_annotation"};
inline constinit const Name valuesMethod{"values"};

}  // namespace names

namespace {

/// `inspect.signature`, borrowed and kept for the process, or null. Two threads that come first at once look it up
/// twice and find the same object.
PyObject* inspectSignature() {
    static constinit PyObject* kept = nullptr;
    if (kept != nullptr)
        return kept;
    PyRef module = PyRef::steal(PyImport_ImportModule("inspect"));
    PyObject* dictionary = module ? PyModule_GetDict(module.get()) : nullptr;
    PyRef function = PyRef::borrow(dictionary == nullptr ? nullptr : PyDict_GetItemString(dictionary, "signature"));
    if (kept == nullptr)
        kept = function.release();
    return kept;
}

/// An attribute of one of `inspect`'s objects; null when it cannot be read, with nothing pending.
PyRef read(PyObject* object, const Name& name) {
    PyRef value = PyRef::steal(attribute(object, name));
    if (!value)
        forgetError();
    return value;
}

/// The type that an annotation names, or the untyped type. `_empty` is `inspect`'s word for no annotation.
ling::Type annotatedType(PyObject* annotation, bool anyIsUntyped) {
    const ling::Any converted = toLing(annotation);
    forgetError();
    const ling::Result<ling::Class_Generic> cls = ling::Class_Generic::cast(converted);
    if (!cls || cls->name() == u"_empty" || (anyIsUntyped && cls->name() == u"Any"))
        return ling::Untyped::getType();
    return ling::Type(*cls);
}

/// By the numbers of `inspect._ParameterKind`.
ling::ParameterMode modeOf(PyObject* parameter) {
    constexpr ling::ParameterMode kModes[] = {ling::ParameterMode::PositionalOnly, ling::ParameterMode::Ordinary,
                                              ling::ParameterMode::VariadicPositional, ling::ParameterMode::NameOnly,
                                              ling::ParameterMode::VariadicNamed};
    PyRef kind = read(parameter, names::kind);
    const long number = kind ? PyLong_AsLong(kind.get()) : -1;
    forgetError();
    return number >= 0 && number < std::ssize(kModes) ? kModes[number] : ling::ParameterMode::Ordinary;
}

ling::Parameter makeParameter(PyObject* parameter) {
    PyRef name = read(parameter, names::parameterName);
    PyRef annotation = read(parameter, names::annotation);
    PyRef value = read(parameter, names::defaultValue);
    PyRef empty = read(parameter, names::empty);
    const ling::String text = ling::String::cast(toLing(name.get())).valueOr(ling::String());
    const ling::Type type = annotatedType(annotation.get(), false);
    if (!value || value.get() == empty.get())
        return ling::Parameter(text, type, modeOf(parameter));
    const ling::Any defaultValue = toLing(value.get());
    forgetError();
    return ling::Parameter(text, type, modeOf(parameter), defaultValue);
}

std::vector<ling::Parameter> makeParameters(PyObject* signature) {
    std::vector<ling::Parameter> all;
    PyRef mapping = read(signature, names::parameters);
    PyRef method = mapping ? read(mapping.get(), names::valuesMethod) : PyRef();
    PyRef values = method ? PyRef::steal(PyObject_CallNoArgs(method.get())) : PyRef();
    PyRef iterator = values ? PyRef::steal(PyObject_GetIter(values.get())) : PyRef();
    while (PyRef parameter = iterator ? PyRef::steal(PyIter_Next(iterator.get())) : PyRef())
        all.push_back(makeParameter(parameter.get()));
    forgetError();
    return all;
}

}  // namespace

ling::Any deriveSignature(PyObject* callable) {
    PyObject* inspect = inspectSignature();
    if (inspect == nullptr) {
        forgetError();
        return platform::failure(u"Unable to access 'inspect.signature' function.");
    }
    PyRef signature = PyRef::steal(PyObject_CallOneArg(inspect, callable));
    if (!signature) {
        forgetError();
        return platform::failure(u"Unable to fetch signature.");
    }
    PyRef result = read(signature.get(), names::returnAnnotation);
    const ling::Type resultType = result ? annotatedType(result.get(), true) : ling::Untyped::getType();
    return ling::Signature(makeParameters(signature.get()), resultType);
}

}  // namespace ling::python
