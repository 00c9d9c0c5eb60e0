#include "lingobject/special_names.h"

#include "host/names.h"
#include "host/py_ref.h"
#include "ling/basic_values.h"
#include "ling/byte_array.h"
#include "ling/class.h"
#include "ling/error.h"
#include "ling/interfaces.h"
#include "ling/list.h"
#include "ling/members.h"
#include "ling/module.h"
#include "lingobject/signature_object.h"
#include "lingobject/slot_result.h"
#include "lingobject/types.h"

#include <optional>

namespace ling::python {

namespace {

/// What a special name answers: a value to convert, or nothing when the value does not have it.
using Answer = std::optional<ling::Any>;

Answer docOf(const ling::Any& value) {
    ling::string_builder text;
    if (const std::optional<ling::Signature> signature = signatureOf(value))
        text.append(signature->toString()).append(u"\n\n");
    const auto documented = ling::I_HasDoc::cast(value);
    const ling::String own = documented ? documented->doc() : ling::String();
    text.append(own.isEmpty() ? ling::class_of(value).doc() : own);
    return text.build();
}

Answer moduleOf(const ling::Any& value) {
    const auto cls = ling::Class_Generic::cast(value);
    if (!cls)
        return std::nullopt;
    const ling::Class_Generic generic = cls->parentGeneric();
    const ling::Module module = (generic.isNone() ? *cls : generic).parentModule();
    return module.isNone() ? ling::Any() : ling::Any(module.name());
}

Answer nameOf(const ling::Any& value) {
    const auto named = ling::I_HasName::cast(value);
    return named ? Answer(named->name()) : std::nullopt;
}

Answer codeOf(const ling::Any& value) {
    const auto coded = ling::I_HasCode::cast(value);
    return coded ? Answer(coded->code()) : std::nullopt;
}

/// The value converted into `target`, or `fallback` when that fails.
Answer converted(const ling::Any& value, const ling::Class_Generic& target, const ling::Any& fallback) {
    const auto convertible = ling::I_Convertible::cast(value);
    if (!convertible)
        return std::nullopt;
    const ling::Any result = ling::internal::result_unwrap_lazy(convertible->tryInto(target));
    return ling::internal::is_error_result(result) ? fallback : result;
}

Answer bytesOf(const ling::Any& value) { return converted(value, ling::ByteArray::getClass(), ling::ByteArray()); }
Answer truthOf(const ling::Any& value) { return converted(value, ling::Boolean::getClass(), false); }

Answer directoryOf(const ling::Any& value) {
    const ling::List_Generic names = ling::List_Generic::empty();
    const ling::Class_Generic cls = ling::class_of(value);
    for (const auto& field : cls.fields(ling::Inherited::Yes))
        names.append(field.id.name());
    for (const auto& method : cls.methods(ling::Inherited::Yes))
        names.append(method.id.name());
    for (const auto& property : cls.properties(ling::Inherited::Yes))
        names.append(property.id.name());
    for (const ling::List_Generic& own : {ling::own_methods_of(value), ling::own_properties_of(value)})
        names.appendAll(own.copyItems());
    return names;
}

Answer signatureTextOf(const ling::Any& value) {
    const std::optional<ling::Signature> signature = signatureOf(value);
    return signature ? Answer(signature->toString()) : std::nullopt;
}

/// Adds `name: type` when the type names a class. False with the Python error set on failure.
bool annotate(PyObject* annotations, const ling::String& name, const ling::Type& type) {
    const ling::Class_Generic cls = type.toClass();
    if (cls.isNone())
        return true;
    PyTypeObject* pythonType = typeForClass(cls);
    PyRef key = pythonType == nullptr ? PyRef() : PyRef::steal(toPython(name));
    return key && PyDict_SetItem(annotations, key.get(), reinterpret_cast<PyObject*>(pythonType)) == 0;
}

PyObject* annotationsOf(const ling::Signature& signature) {
    PyRef annotations = PyRef::steal(PyDict_New());
    for (const ling::Parameter& parameter : signature.parameters())
        if (!annotations || !annotate(annotations.get(), parameter.name(), parameter.type()))
            return nullptr;
    if (!annotations || !annotate(annotations.get(), u"return", signature.resultType()))
        return nullptr;
    return annotations.release();
}

bool answerAnnotations(const ling::Any& value, PyObject*& answer) {
    const std::optional<ling::Signature> signature = signatureOf(value);
    if (!signature)
        return false;
    answer = annotationsOf(*signature);
    return true;
}

bool giveAnswer(const Answer& found, PyObject*& answer) {
    if (!found)
        return false;
    answer = giveResult(*found);
    return true;
}

template <Answer (*Find)(const ling::Any&)>
bool answerValue(const ling::Any& value, PyObject*& answer) {
    return giveAnswer(Find(value), answer);
}

struct SpecialName {
    Name name;
    bool (*answer)(const ling::Any& value, PyObject*& answer);
};

constinit const SpecialName kSpecialNames[] = {
    {Name("__doc__"), answerValue<docOf>},
    {Name("__annotations__"), answerAnnotations},
    {Name("__module__"), answerValue<moduleOf>},
    {Name("__name__"), answerValue<nameOf>},
    {Name("__code__"), answerValue<codeOf>},
    {Name("__bytes__"), answerValue<bytesOf>},
    {Name("__bool__"), answerValue<truthOf>},
    {Name("__dir__"), answerValue<directoryOf>},
    {Name("__text_signature__"), answerValue<signatureTextOf>},
};

}  // namespace

bool answerSpecialName(const ling::Any& value, PyObject* name, PyObject*& answer) {
    for (const SpecialName& special : kSpecialNames)
        if (PyUnicode_CompareWithASCIIString(name, special.name.text()) == 0)
            return special.answer(value, answer);
    return false;
}

}  // namespace ling::python
