#include "library/plain_key.h"

#include "ling/byte_array.h"
#include "ling/class.h"
#include "ling/list.h"
#include "ling/string.h"

#include <algorithm>
#include <cmath>

namespace ling::internal {

namespace {

// Larger tuples are compared like foreign objects, with nothing locked.
constexpr int kDeepestTuple = 4;
constexpr std::size_t kLongestTuple = 16;

bool isText(const Any& value) noexcept {
    if (value.is(Kind::String))
        return value.object()->ownClass() == nullptr;
    return value.is(Kind::Object) && value.object()->ownClass() == String::getClass().record();  // A slice.
}

bool isPlain(const Any& value, int depth) noexcept {
    const object_value* object = value.object();
    if (object == nullptr)
        return true;
    if (object->kind() == Kind::Object)
        return object->ownClass() == nullptr || isText(value);
    if (object->ownClass() != nullptr)
        return false;  // A derived class may compare as it likes.
    switch (object->kind()) {
        case Kind::String:
        case Kind::ByteArray:
        case Kind::List:
        case Kind::Map:
        case Kind::Set:
            return true;
        case Kind::Tuple: {
            const std::span<const Any> items = unchecked<Tuple_Generic>(value).items();
            return depth < kDeepestTuple && items.size() <= kLongestTuple &&
                   std::ranges::all_of(items, [depth](const Any& item) { return isPlain(item, depth + 1); });
        }
        default:
            return false;
    }
}

/// Exactly: no integer is rounded to the nearest float first.
bool equal(std::int64_t integer, double number) noexcept {
    constexpr double kEnd = 9223372036854775808.0;  // 2^63
    return number >= -kEnd && number < kEnd && std::trunc(number) == number &&
           static_cast<std::int64_t>(number) == integer;
}

bool equal(double a, double b) noexcept { return a == b || (std::isnan(a) && std::isnan(b)); }

bool numbersEqual(const Any& a, const Any& b) noexcept {
    if (a.is(Kind::Float))
        return b.is(Kind::Float) ? equal(a.asFloat(), b.asFloat()) : equal(b.asInteger(), a.asFloat());
    return b.is(Kind::Float) && equal(a.asInteger(), b.asFloat());  // Equal integers are the same value.
}

bool isNumber(const Any& value) noexcept { return value.is(Kind::Integer) || value.is(Kind::Float); }

}  // namespace

bool is_plain_key(const Any& value) noexcept { return isPlain(value, 0); }

bool plain_keys_equal(const Any& a, const Any& b) noexcept {
    if (a.isSameAs(b))
        return true;
    if (isNumber(a) && isNumber(b))
        return numbersEqual(a, b);
    if (isText(a) && isText(b))
        return unchecked<String>(a).view() == unchecked<String>(b).view();
    if (a.is(Kind::ByteArray) && b.is(Kind::ByteArray))
        return unchecked<ByteArray>(a).view() == unchecked<ByteArray>(b).view();
    if (a.is(Kind::Tuple) && b.is(Kind::Tuple))
        return std::ranges::equal(unchecked<Tuple_Generic>(a).items(), unchecked<Tuple_Generic>(b).items(),
                                  &plain_keys_equal);
    return false;
}

}  // namespace ling::internal
