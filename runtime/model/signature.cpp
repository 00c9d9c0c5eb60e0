#include "ling/class_record.h"
#include "ling/comparison.h"
#include "ling/function.h"
#include "ling/interfaces.h"
#include "ling/list.h"
#include "model/define.h"

#include <utility>

namespace ling {

namespace {

class object_value_parameter final : public internal::object_value_object {
public:
    object_value_parameter(const String& itsName, const Type& itsType, ParameterMode itsMode, bool withDefault,
                           const Any& itsDefault)
        : object_value_object(Parameter::getClass().record()),
          name(itsName),
          type(itsType),
          mode(itsMode),
          hasDefault(withDefault),
          defaultValue(itsDefault) {}

    const String name;
    const Type type;
    const ParameterMode mode;
    const bool hasDefault;
    const Any defaultValue;
};

class object_value_signature final : public internal::object_value_object {
public:
    object_value_signature(std::vector<Parameter> itsParameters, const Type& result)
        : object_value_object(Signature::getClass().record()),
          parameters(std::move(itsParameters)),
          resultType(result) {}

    const std::vector<Parameter> parameters;
    const Type resultType;
};

const object_value_parameter& parameterRecord(const Any& value) noexcept {
    return *static_cast<const object_value_parameter*>(value.object());
}
const object_value_signature& signatureRecord(const Any& value) noexcept {
    return *static_cast<const object_value_signature*>(value.object());
}

/// A text in a signature is quoted, so that an empty one can be seen; everything else shows as it does anywhere.
String defaultText(const Any& value) {
    Result<String> text = String::cast(value);
    return text ? String(u"'{}'").arg(*text) : display(value);
}

const char* modeMark(ParameterMode mode) {
    switch (mode) {
        case ParameterMode::VariadicPositional:
            return "*";
        case ParameterMode::VariadicNamed:
            return "**";
        case ParameterMode::Ordinary:
        case ParameterMode::PositionalOnly:
        case ParameterMode::NameOnly:
            break;
    }
    return "";
}

}  // namespace

Parameter::Parameter(const String& name, const Type& type, ParameterMode mode)
    : Any(Any::adopt(new object_value_parameter(name, type, mode, false, Any()))) {}
Parameter::Parameter(const String& name, const Type& type, ParameterMode mode, const Any& defaultValue)
    : Any(Any::adopt(new object_value_parameter(name, type, mode, true, defaultValue))) {}

String Parameter::name() const { return parameterRecord(*this).name; }
Type Parameter::type() const { return parameterRecord(*this).type; }
ParameterMode Parameter::mode() const noexcept { return parameterRecord(*this).mode; }
bool Parameter::hasDefault() const noexcept { return parameterRecord(*this).hasDefault; }
Any Parameter::defaultValue() const { return parameterRecord(*this).defaultValue; }
Parameter Parameter::withDefault(const Any& value) const { return Parameter(name(), type(), mode(), value); }

String Parameter::toString(unsigned flags) const {
    string_builder text;
    text.append(modeMark(mode())).append(name());
    const bool typed = (flags & kSignatureTypes) != 0 && !type().isUntyped();
    if (typed)
        text.append(": ").append(type().toString());
    if ((flags & kSignatureDefaults) != 0 && hasDefault())
        text.append(typed ? " = " : "=").append(defaultText(defaultValue()));
    return text.build();
}

Result<Parameter> Parameter::cast(const Any& value) { return internal::cast_handle<Parameter>(value); }
const Class_Generic& Parameter::getClass() {
    static const Class_Generic& cls = *new Class_Generic(
        internal::runtime_made_class("Parameter", {I_HasName::getClass(), I_RuntimeOnly::getClass()}));
    return cls;
}
Type Parameter::getType() { return Type(getClass()); }

Signature::Signature(std::vector<Parameter> parameters, const Type& resultType)
    : Any(Any::adopt(new object_value_signature(std::move(parameters), resultType))) {}

const std::vector<Parameter>& Signature::parameters() const noexcept { return signatureRecord(*this).parameters; }
Type Signature::resultType() const { return signatureRecord(*this).resultType; }

String Signature::toString(unsigned flags) const {
    string_builder text;
    text.append("(");
    bool first = true;
    bool positionalOnly = false;  // "/" ends the parameters that go by position alone,
    bool nameOnly = false;        // "*" begins those that go by name alone.
    auto separate = [&] {
        text.append(first ? "" : ", ");
        first = false;
    };
    for (const Parameter& parameter : parameters()) {
        const ParameterMode mode = parameter.mode();
        if (std::exchange(positionalOnly, mode == ParameterMode::PositionalOnly) &&
            mode != ParameterMode::PositionalOnly) {
            separate();
            text.append("/");
        }
        if (mode == ParameterMode::NameOnly && !std::exchange(nameOnly, true)) {
            separate();
            text.append("*");
        }
        nameOnly = nameOnly || mode == ParameterMode::VariadicPositional;
        separate();
        text.append(parameter.toString(flags));
    }
    if (positionalOnly)
        text.append(", /");
    text.append(")");
    if ((flags & kSignatureResult) != 0 && !resultType().isUntyped())
        text.append(" -> ").append(resultType().toString());
    return text.build();
}

Result<Signature> Signature::cast(const Any& value) { return internal::cast_handle<Signature>(value); }
const Class_Generic& Signature::getClass() {
    static const Class_Generic& cls =
        *new Class_Generic(internal::runtime_made_class("Signature", {I_RuntimeOnly::getClass()}));
    return cls;
}
Type Signature::getType() { return Type(getClass()); }

}  // namespace ling
