#include "ling/comparison.h"

#include <array>

namespace ling {

namespace {

constexpr std::array<const char*, 16> kKindNames{
    "boolean",        "byte_array", "float",          "function", "map",   "set",
    "integer",        "list",       "object",         "string",   "tuple", "boxed_value",
    "external_value", "lazy_value", "weak_reference", "undefined"};

}  // namespace

bool is_same(const Any& a, const Any& b) noexcept {
    // Two zeros of different signs are equal floats, though not the same bits.
    const bool floats = a.is(Kind::Float) && b.is(Kind::Float);
    return a.isSameAs(b) || (floats && a.asFloat() == b.asFloat());
}

std::int64_t object_id(const Any& value) noexcept {
    // Objects are aligned, so their numbers are even; those of immediates are odd and meet none of them.
    if (value.isHeap())
        return static_cast<std::int64_t>(value.rawBits());
    const std::uint64_t kind = value.isNone() ? kKindNames.size() : static_cast<std::uint64_t>(value.kind());
    return static_cast<std::int64_t>((((value.rawBits() << 5) ^ (value.rawBits() >> 59) ^ kind) << 1) | 1);
}

String kind_of(const Any& value) {
    return value.isNone() ? "none" : kKindNames[static_cast<std::size_t>(value.kind())];
}

}  // namespace ling
