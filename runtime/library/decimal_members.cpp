#include "interfaces/optional_method.h"
#include "library/decimal_value.h"
#include "library/define.h"
#include "library/native_constructor.h"
#include "ling/class_builder.h"
#include "ling/error.h"

namespace ling::internal {

namespace {

Any unconvertible(const Any& value) {
    return failure(String(u"Unable to make a decimal from a value of class '{}'.").arg(qualname(raw_class_of(value))));
}

/// The decimal of an integer or of a decimal. A float is none: whether its short text or its exact value is meant
/// cannot be known.
Any operandOf(const Any& given) {
    const Any value = result_unwrap_lazy(given);
    if (is_error_result(value))
        return value;
    if (value.is(Kind::Integer))
        return Decimal(value.asInteger());
    return Decimal::cast(value) ? value : unconvertible(value);
}

Any makeDecimal(const Any& value) {
    if (Result<String> text = String::cast(value))
        return Decimal::fromString(*text);
    return operandOf(value);
}

object_value* copyDecimal(const Any& value, object_value_class* derived) {
    return new object_value_decimal(derived, decimal_access::number(value));
}

FunctionCL_Generic decimalMaker() {
    FunctionCL_Generic make = make_function("Decimal", "value", &makeDecimal);
    make.setParameterDefaults({0});
    return make;
}

const native_constructor& decimalConstructor() {
    static const native_constructor& constructor =
        *new native_constructor{Decimal::getClass(), decimalMaker(), Decimal(), &copyDecimal};
    return constructor;
}

/// The operator for a right operand that is a decimal or an integer.
template <Any (Decimal::*Operation)(const Decimal&) const>
Any operate(const Decimal& self, const Any& other) {
    const Any operand = operandOf(other);
    return is_error_result(operand) ? operand : (self.*Operation)(unchecked<Decimal>(operand));
}

Any compare(const Decimal& self, const Any& other) {
    if (other.is(Kind::Integer))
        return self.compare(other.asInteger());
    if (other.is(Kind::Float))
        return self.compare(other.asFloat());
    const Result<Decimal> decimal = Decimal::cast(other);
    return decimal ? Any(self.compare(*decimal)) : decimal.error();
}

void defineOperators() {
    extend_class(Decimal::getClass())
        .method(Any::$__add__, "other", &operate<&Decimal::plus>, "The exact sum with a decimal or an integer.")
        .method(Any::$__sub__, "other", &operate<&Decimal::minus>, "The exact difference.")
        .method(Any::$__mul__, "other", &operate<&Decimal::times>, "The exact product.")
        .method(Any::$__div__, "other", &operate<&Decimal::dividedBy>,
                "The quotient, exact where 28 digits are enough and otherwise the nearest of that many.")
        .method(Any::$__compare__, "other", &compare,
                "Negative, zero or positive: less than a number of any kind, equal to it, or greater.")
        .method(
            Any::$__hash__, "", [](const Decimal& self) { return self.hash(); },
            "A number that equal numbers of all kinds have in common.")
        .build();
}

}  // namespace

void define_decimal_members() {
    extend_class(Decimal::getClass())
        .doc("A decimal number with all its digits, exactly as written. Called with a text or an integer.")
        .hooks(constructor_hooks<&decimalConstructor>())
        .method(Any::$__init__, decimalConstructor().initialiser())
        .property("digits", property_builder()
                                .getter([](const Decimal& self) { return String(self.digits()); })
                                .doc("The digits, without sign and point."))
        .property("exponent", property_builder()
                                  .getter([](const Decimal& self) { return self.exponent(); })
                                  .doc("The power of ten that the digits are scaled by."))
        .property("isFinite", property_builder()
                                  .getter([](const Decimal& self) { return self.isFinite(); })
                                  .doc("False for an infinity and for what is not a number."))
        .property("isNaN", property_builder()
                               .getter([](const Decimal& self) { return self.isNaN(); })
                               .doc("True for what is not a number."))
        .property("isNegative", property_builder()
                                    .getter([](const Decimal& self) { return self.isNegative(); })
                                    .doc("True for numbers with a minus sign, zero included."))
        .method(
            "toString", "", [](const Decimal& self) { return self.toString(); }, "The number as text, digit by digit.")
        .method(
            Any::$__display__, "", [](const Decimal& self) { return self.toString(); },
            "The number as text, digit by digit.")
        .build();
    defineOperators();
}

}  // namespace ling::internal
