#include "services/number_order.h"

#include "ling/class.h"
#include "ling/decimal.h"
#include "values/number_hash.h"

#include <cmath>

namespace ling::internal {

namespace {

bool isDecimal(const Any& value) noexcept {
    const object_value* object = value.object();
    return object != nullptr && object->ownClass() == Decimal::getClass().record();
}

bool isNaN(const Any& value) noexcept {
    return value.isHeap() ? unchecked<Decimal>(value).isNaN() : value.is(Kind::Float) && std::isnan(value.asFloat());
}

template <class T>
int order(T a, T b) noexcept {
    return a < b ? -1 : a > b ? 1 : 0;
}

/// Neither is turned into the other's type, which would round: the integer is held against the whole part of the float,
/// and where they are equal the fraction decides. `b` is not a NaN.
int compareMixed(std::int64_t a, double b) noexcept {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63, the first value above all integers.
    if (b >= kLimit)
        return -1;
    if (b < -kLimit)
        return 1;
    const double whole = std::trunc(b);
    const int byWhole = order(a, static_cast<std::int64_t>(whole));
    return byWhole != 0 ? byWhole : order(0.0, b - whole);
}

int compareDecimal(const Decimal& a, const Any& b) {
    if (b.is(Kind::Float))
        return a.compare(b.asFloat());
    return b.is(Kind::Integer) ? a.compare(Decimal(b.asInteger())) : a.compare(unchecked<Decimal>(b));
}

int compareImmediate(const Any& a, const Any& b) noexcept {
    if (a.is(Kind::Integer))
        return b.is(Kind::Integer) ? order(a.asInteger(), b.asInteger()) : compareMixed(a.asInteger(), b.asFloat());
    return b.is(Kind::Float) ? order(a.asFloat(), b.asFloat()) : -compareMixed(b.asInteger(), a.asFloat());
}

}  // namespace

bool is_number(const Any& value) noexcept {
    return value.is(Kind::Integer) || value.is(Kind::Float) || isDecimal(value);
}

int compare_numbers(const Any& a, const Any& b) {
    if (const bool unordered = isNaN(a); unordered || isNaN(b))
        return order<int>(unordered, isNaN(b));
    if (a.isHeap())
        return compareDecimal(unchecked<Decimal>(a), b);
    return b.isHeap() ? -compareDecimal(unchecked<Decimal>(b), a) : compareImmediate(a, b);
}

std::int64_t hash_number(const Any& value) {
    if (value.is(Kind::Integer))
        return hash_integer(value.asInteger());
    if (value.is(Kind::Float))
        return hash_float(value.asFloat());
    return unchecked<Decimal>(value).hash();
}

}  // namespace ling::internal
