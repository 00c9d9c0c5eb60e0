#include "ling/decimal.h"

#include "library/decimal_arithmetic.h"
#include "library/decimal_number.h"
#include "library/decimal_value.h"
#include "ling/class.h"
#include "ling/error.h"
#include "ling/interfaces.h"

#include <string>
#include <typeinfo>
#include <utility>

namespace ling {

using internal::decimal_number;
using internal::object_value_decimal;

Any decimal_access::adopt(decimal_number number, internal::object_value_class* klass) {
    return Any::adopt(new object_value_decimal(klass, std::move(number)));
}

const decimal_number& decimal_access::number(const Any& decimal) noexcept {
    static const decimal_number& zero = *new decimal_number;
    return decimal.isHeap() ? static_cast<const object_value_decimal*>(decimal.object())->number : zero;
}

namespace {

const decimal_number& numberOf(const Any& decimal) noexcept { return decimal_access::number(decimal); }

Any answer(Result<decimal_number> outcome) {
    return outcome ? decimal_access::adopt(*std::move(outcome)) : outcome.error();
}

}  // namespace

Decimal::Decimal() : Decimal(0) {}
Decimal::Decimal(std::int64_t value) : Decimal(decimal_access::adopt(internal::decimal_of_integer(value))) {}

Any Decimal::fromString(const String& text) {
    if (std::optional<decimal_number> number = internal::parse_decimal(text.view()))
        return decimal_access::adopt(*std::move(number));
    return internal::failure(String(u"Invalid decimal: '{}'.").arg(internal::brief(text)));
}

Any Any::ofLarge(std::uint64_t value) { return Decimal::fromString(String::fromLatin1(std::to_string(value))); }

String Decimal::toString() const { return String::fromLatin1(internal::format_decimal(numberOf(*this))); }

bool Decimal::isFinite() const noexcept { return numberOf(*this).isFinite(); }
bool Decimal::isNaN() const noexcept { return numberOf(*this).isNaN(); }
bool Decimal::isNegative() const noexcept { return numberOf(*this).negative; }
std::string_view Decimal::digits() const noexcept { return numberOf(*this).digits; }
std::int64_t Decimal::exponent() const noexcept { return numberOf(*this).exponent; }

Any Decimal::plus(const Decimal& other) const {
    return answer(internal::add_decimals(numberOf(*this), numberOf(other)));
}
Any Decimal::minus(const Decimal& other) const {
    return answer(internal::subtract_decimals(numberOf(*this), numberOf(other)));
}
Any Decimal::times(const Decimal& other) const {
    return answer(internal::multiply_decimals(numberOf(*this), numberOf(other)));
}
Any Decimal::dividedBy(const Decimal& other) const {
    return answer(internal::divide_decimals(numberOf(*this), numberOf(other)));
}

int Decimal::compare(const Decimal& other) const {
    return internal::compare_decimals(numberOf(*this), numberOf(other));
}
int Decimal::compareWithInteger(std::int64_t other) const {
    return internal::compare_decimals(numberOf(*this), internal::decimal_of_integer(other));
}
int Decimal::compare(double other) const {
    return internal::compare_decimals(numberOf(*this), internal::decimal_of_float(other));
}
std::int64_t Decimal::hash() const { return internal::hash_decimal(numberOf(*this)); }

Result<Decimal> Decimal::cast(const Any& value) {
    // A class may derive from this one and keep its instances in another form; only the form tells.
    const internal::object_value* object = value.object();
    if (object != nullptr && typeid(*object) == typeid(object_value_decimal))
        return unchecked<Decimal>(value);
    return Result<Decimal>::failure(internal::cast_error(value, getClass()));
}

const Class_Generic& Decimal::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::native_class("Decimal", {I_Immutable::getClass()}));
    return cls;
}

Type Decimal::getType() { return Type(getClass()); }

}  // namespace ling
