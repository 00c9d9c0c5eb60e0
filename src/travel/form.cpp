#include "travel/form.h"

#include "host/platform.h"
#include "ling/class.h"
#include "ling/date_time.h"
#include "ling/decimal.h"
#include "ling/members.h"
#include "ling/module.h"
#include "proxies/python_proxy.h"
#include "proxies/python_type.h"
#include "travel/dotted_name.h"

#include <cmath>

namespace ling::python {

namespace {

const ling::method_ident_untyped $__state__("__state__");
const ling::method_ident_untyped $__restore__("__restore__");

constexpr unsigned kNanosecondsPerMicrosecond = 1000;

template <class Handle>
bool isInstance(const ling::Any& value) {
    return ling::internal::cast_object(value, Handle::getClass()) != nullptr;
}

Form formOfFloat(double number) {
    double whole = 0;
    return std::isnan(number) || std::modf(number, &whole) != 0.0 ? Form::AsItIs : Form::Float;
}

bool losesNothing(const ling::Time& time) {
    return !time.hasOffset() && time.fold() == 0 && time.zoneName().isEmpty() &&
           time.nanoSeconds() % kNanosecondsPerMicrosecond == 0;
}

bool hasMethod(const ling::Any& value, const ling::method_ident_untyped& id) {
    return !ling::method_of(value, id).isNone();
}

bool isNamed(const ling::Any& value) { return !dottedNameOf(value).isEmpty(); }

Form formOfClass(const ling::Class_Generic& cls) {
    if (pythonTypeOf(cls) != nullptr)
        return Form::AsItIs;
    return isNamed(cls) ? Form::Name : Form::None;
}

Form formOfObject(const ling::Any& value) {
    if (value.object()->ownClass() == nullptr)
        return formOfClass(ling::unchecked<ling::Class_Generic>(value));
    if (isPythonProxy(value) || isInstance<ling::Date>(value) || isInstance<ling::Decimal>(value) ||
        isInstance<ling::String>(value))
        return Form::AsItIs;
    if (isInstance<ling::Time>(value))
        return losesNothing(ling::unchecked<ling::Time>(value)) ? Form::AsItIs : Form::Time;
    if (isInstance<ling::DateTime>(value))
        return losesNothing(ling::unchecked<ling::DateTime>(value).time()) ? Form::AsItIs : Form::DateTime;
    if (isInstance<ling::Module>(value))
        return Form::Name;
    const bool optsIn = hasMethod(value, $__state__) && hasMethod(value, $__restore__);
    return optsIn && isNamed(ling::raw_class_of(value)) ? Form::Object : Form::None;
}

Form formOfFunction(const ling::Any& function) {
    if (isNamed(function))
        return Form::Name;
    return receiverOf(function).isNone() ? Form::None : Form::Method;
}

}  // namespace

Form formOf(const ling::Any& value) {
    if (value.isNone())
        return Form::AsItIs;
    switch (value.kind()) {
        case ling::Kind::Boolean:
        case ling::Kind::ByteArray:
        case ling::Kind::Integer:
        case ling::Kind::String:
        case ling::Kind::Undefined:
            return Form::AsItIs;
        case ling::Kind::Float:
            return formOfFloat(value.asFloat());
        case ling::Kind::Tuple:
            return Form::Tuple;
        case ling::Kind::List:
        case ling::Kind::Map:
        case ling::Kind::Set:
            return isOfNativeClass(value) || isNamed(ling::raw_class_of(value)) ? Form::Container : Form::None;
        case ling::Kind::Function:
            return formOfFunction(value);
        case ling::Kind::Object:
            return formOfObject(value);
        default:
            return Form::None;
    }
}

ling::Any makeEmptyLike(const ling::Any& value) { return ling::raw_class_of(value).allocateInstance(); }

ling::Any stateOf(const ling::Any& object) { return ling::internal::result_unwrap_lazy(object.callMethod($__state__)); }

ling::Any restoreState(const ling::Any& object, const ling::Any& state) {
    return ling::internal::result_unwrap_lazy(object.callMethod($__restore__, {state}));
}

ling::Any receiverOf(const ling::Any& function) {
    const auto& bound = *static_cast<const ling::internal::object_value_function*>(function.object());
    const auto [target, leading] = bound.identity();
    if (leading.size() != 1)
        return {};
    const ling::Any method = ling::method_of(leading[0], platform::LookupName(bound.name()).method());
    return method.object() == target ? leading[0] : ling::Any();
}

ling::String refusalOf(const ling::Any& value) {
    if (value.is(ling::Kind::Function) || ling::internal::is_instance<ling::Class_Generic>(value))
        return ling::String(u"cannot copy or pickle {}: no name leads to it").arg(value);
    return ling::String(
               u"cannot copy or pickle '{}' object: its class has to have the methods __state__() and "
               u"__restore__(state), and to be found by its name")
        .arg(ling::qualname(ling::raw_class_of(value)));
}

}  // namespace ling::python
