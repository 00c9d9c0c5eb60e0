#include "ling/basic_values.h"

#include "ling/class.h"
#include "ling/class_record.h"
#include "ling/interfaces.h"
#include "ling/string.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace ling {

namespace {

template <class Handle>
Result<Handle> castKind(const Any& value, Kind kind) {
    if (value.is(kind))
        return unchecked<Handle>(value);
    return Result<Handle>::failure(internal::cast_error(value, Handle::getClass()));
}

}  // namespace

Result<None> None::cast(const Any& value) {
    if (value.isNone())
        return None();
    return Result<None>::failure(internal::cast_error(value, getClass()));
}
Result<Undefined> Undefined::cast(const Any& value) { return castKind<Undefined>(value, Kind::Undefined); }
Result<Boolean> Boolean::cast(const Any& value) { return castKind<Boolean>(value, Kind::Boolean); }
Result<Integer> Integer::cast(const Any& value) { return castKind<Integer>(value, Kind::Integer); }

Result<Float> Float::cast(const Any& value) {
    if (value.is(Kind::Integer))
        return Float(static_cast<double>(value.asInteger()));
    return castKind<Float>(value, Kind::Float);
}

String Float::toString() const {
    const double number = value();
    if (std::isnan(number))
        return u"nan";
    if (std::isinf(number))
        return number < 0 ? u"-inf" : u"inf";
    // Within these bounds all digits are shown; outside, and for zero none are lacking, an exponent is shorter.
    const double magnitude = std::fabs(number);
    const bool plain = number == 0 || (magnitude >= 1e-4 && magnitude < 1e16);
    char text[40];
    char* end = std::to_chars(text, text + sizeof text - 2, number,
                              plain ? std::chars_format::fixed : std::chars_format::scientific)
                    .ptr;
    if (plain && std::memchr(text, '.', static_cast<std::size_t>(end - text)) == nullptr) {
        *end++ = '.';
        *end++ = '0';
    }
    return String::fromLatin1(std::string_view(text, static_cast<std::size_t>(end - text)));
}

const Class_Generic& None::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::native_class("None", {I_Immutable::getClass()}));
    return cls;
}
const Class_Generic& Undefined::getClass() {
    static const Class_Generic& cls =
        *new Class_Generic(internal::native_class("Undefined", {I_Immutable::getClass()}));
    return cls;
}
const Class_Generic& Boolean::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::native_class("Boolean", {I_Immutable::getClass()}));
    return cls;
}
const Class_Generic& Integer::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::native_class("Integer", {I_Immutable::getClass()}));
    return cls;
}
const Class_Generic& Float::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::native_class("Float", {I_Immutable::getClass()}));
    return cls;
}

Type None::getType() { return Type(getClass()); }
Type Undefined::getType() { return Type(getClass()); }
Type Boolean::getType() { return Type(getClass()); }
Type Integer::getType() { return Type(getClass()); }
Type Float::getType() { return Type(getClass()); }

}  // namespace ling
