#include "library/decimal_value.h"
#include "library/define.h"
#include "library/native_constructor.h"
#include "ling/basic_values.h"
#include "ling/class_builder.h"
#include "ling/error.h"

#include <cmath>
#include <optional>

namespace ling::internal {

namespace {

Any unconvertible(const Any& value, const Class_Generic& target) {
    return failure(String(u"Unable to convert a value of class '{}' to '{}'.")
                       .arg(qualname(raw_class_of(value)), qualname(target)));
}

Any integerOrError(const std::optional<std::int64_t>& integer, const Any& found) {
    return integer ? Any(*integer) : failure(String(u"Integer out of range: {}.").arg(found));
}

/// The number that a text writes, or nothing. Space around it does not count.
std::optional<decimal_number> numberIn(const String& text) { return parse_decimal(text.trimmed().view()); }

bool isIntegerText(const String& text) {
    const String number = text.trimmed();
    return number.view().find_first_not_of(u"+-0123456789") == std::u16string_view::npos;
}

Any integerOfText(const String& text) {
    const std::optional<decimal_number> number = numberIn(text);
    if (!number || !isIntegerText(text))
        return failure(String(u"Invalid integer: '{}'.").arg(brief(text)));
    return integerOrError(integer_of_decimal(*number), text);
}

Any integerOfFloat(const Any& value) {
    const double whole = std::trunc(value.asFloat());
    const bool fits = whole >= -0x1p63 && whole < 0x1p63;  // False for what is not a number.
    return integerOrError(fits ? std::optional(static_cast<std::int64_t>(whole)) : std::nullopt, value);
}

Any makeInteger(const Any& given) {
    const Any value = result_unwrap_lazy(given);
    if (value.is(Kind::Integer) || is_error_result(value))
        return value;
    if (value.is(Kind::Boolean))
        return value.asBoolean() ? 1 : 0;
    if (value.is(Kind::Float))
        return integerOfFloat(value);
    if (Decimal::cast(value))
        return integerOrError(integer_of_decimal(decimal_access::number(value)), value);
    const Result<String> text = String::cast(value);
    return text ? integerOfText(*text) : unconvertible(value, Integer::getClass());
}

Any makeFloat(const Any& given) {
    const Any value = result_unwrap_lazy(given);
    if (value.is(Kind::Float) || is_error_result(value))
        return value;
    if (value.is(Kind::Boolean))
        return value.asBoolean() ? 1.0 : 0.0;
    if (value.is(Kind::Integer))
        return static_cast<double>(value.asInteger());
    if (Decimal::cast(value))
        return float_of_decimal(decimal_access::number(value));
    const Result<String> text = String::cast(value);
    if (!text)
        return unconvertible(value, Float::getClass());
    const std::optional<decimal_number> number = numberIn(*text);
    return number ? Any(float_of_decimal(*number)) : failure(String(u"Invalid float: '{}'.").arg(brief(*text)));
}

Any booleanOfText(const String& text) {
    if (text.view() == u"true")
        return true;
    if (text.view() == u"false")
        return false;
    return failure(String(u"Invalid boolean: '{}'.").arg(brief(text)));
}

Any makeBoolean(const Any& given) {
    const Any value = result_unwrap_lazy(given);
    if (value.is(Kind::Boolean) || is_error_result(value))
        return value;
    if (value.isNone())
        return false;
    if (value.is(Kind::Integer))
        return value.asInteger() != 0;
    if (value.is(Kind::Float))
        return value.asFloat() != 0;
    if (Decimal::cast(value))
        return !decimal_access::number(value).isZero();
    const Result<String> text = String::cast(value);
    return text ? booleanOfText(*text) : unconvertible(value, Boolean::getClass());
}

template <class Handle, Any (*make)(const Any&)>
const native_constructor& constructorOf() {
    static const native_constructor& constructor = *[] {
        auto* made = new native_constructor{
            Handle::getClass(), make_function(Handle::getClass().name().toStdString(), "value", make), Any(), nullptr};
        made->make.setParameterDefaults({Handle()});
        return made;
    }();
    return constructor;
}

template <class Handle, Any (*make)(const Any&)>
void defineNumber(std::string_view doc) {
    extend_class(Handle::getClass())
        .doc(doc)
        .hooks(constructor_hooks<&constructorOf<Handle, make>>())
        .method(Any::$__init__, constructorOf<Handle, make>().initialiser())
        .build();
}

/// None and undefined are one value each, which calling the class gives.
template <class Handle>
Any onlyValue(const Class_Generic& called, std::span<const Any> arguments) {
    if (!arguments.empty())
        return failure(String(u"The class '{}' takes no arguments.").arg(qualname(called)));
    return Handle();
}

template <class Handle>
void defineOnlyValue(std::string_view doc) {
    class_hooks hooks;
    hooks.construct = &onlyValue<Handle>;
    hooks.allocate = [](object_value_class* called) {
        return failure(String(u"The class '{}' has no instances of its own.").arg(called->name())).take();
    };
    extend_class(Handle::getClass()).doc(doc).hooks(hooks).build();
}

}  // namespace

void define_number_members() {
    defineOnlyValue<None>("The value that says that nothing is there.");
    defineOnlyValue<Undefined>("The value of what has no value: of an operation that does not apply.");
    defineNumber<Boolean, &makeBoolean>(
        "True or false. Called, it tells numbers other than zero from zero, and reads 'true' and 'false'.");
    defineNumber<Integer, &makeInteger>(
        "A whole number of 64 bits. Called, it reads a text, or takes the whole part of a number.");
    defineNumber<Float, &makeFloat>("A number in double precision. Called, it reads a text, or converts a number.");
    extend_class(Float::getClass())
        .method(
            "toString", "", [](const Float& self) { return self.toString(); },
            "The shortest text that reads back as the same number.")
        .build();
}

}  // namespace ling::internal
