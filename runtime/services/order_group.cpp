#include "services/order_group.h"

#include "ling/class_record.h"
#include "ling/function.h"
#include "ling/stand_in.h"
#include "ling/string.h"
#include "services/number_order.h"

#include <array>
#include <utility>

namespace ling::internal {

namespace {

/// The groups of the kinds, by the kinds' numbers. Kinds that stand for other values are resolved before; where that
/// failed they count as objects.
constexpr std::array<order_group, 16> kGroups{
    order_group::Boolean, order_group::Bytes,  order_group::Number, order_group::Function,
    order_group::Map,     order_group::Set,    order_group::Number, order_group::List,
    order_group::Object,  order_group::Text,   order_group::Tuple,  order_group::Object,
    order_group::Object,  order_group::Object, order_group::Object, order_group::Undefined};

order_group objectGroup(const Any& value) noexcept {
    const object_value_class* own = value.object()->ownClass();
    if (own == nullptr)
        return order_group::Class;
    if (own == String::getClass().record())
        return order_group::Text;
    return is_number(value) ? order_group::Number : order_group::Object;
}

template <class T>
int order(T a, T b) noexcept {
    return a < b ? -1 : a > b ? 1 : 0;
}

std::uintptr_t place(const object_value* object) noexcept { return reinterpret_cast<std::uintptr_t>(object); }

}  // namespace

order_group order_group_of(const Any& value) noexcept {
    if (value.isNone())
        return order_group::None;
    const Kind kind = value.kind();
    return kind == Kind::Object ? objectGroup(value) : kGroups[static_cast<std::size_t>(kind)];
}

int compare_identity(const Any& a, const Any& b) noexcept {
    const order_group left = order_group_of(a);
    const order_group right = order_group_of(b);
    if (left != right)
        return order(left, right);
    if (!a.isHeap() || !b.isHeap())  // A decimal, whose class could not tell it from an immediate number.
        return order(a.isHeap(), b.isHeap());
    const int byClass = order(place(a.object()->ownClass()), place(b.object()->ownClass()));
    return byClass != 0 ? byClass : order(place(a.object()), place(b.object()));
}

/// The immediates of one pattern are told apart by their kind.
std::pair<std::uint64_t, Kind> identity_key(const Any& value) noexcept {
    if (value.isHeap() && value.is(Kind::Object))
        if (const auto* standIn = dynamic_cast<const object_value_stand_in*>(value.object()))
            return {reinterpret_cast<std::uintptr_t>(standIn->original()), Kind::Object};
    return {value.rawBits(), value.kind()};
}

int compare_functions(const Any& a, const Any& b) noexcept {
    const function_identity left = static_cast<const object_value_function*>(a.object())->identity();
    const function_identity right = static_cast<const object_value_function*>(b.object())->identity();
    if (left.target != right.target)
        return order(place(left.target), place(right.target));
    if (left.leading.size() != right.leading.size())
        return order(left.leading.size(), right.leading.size());
    for (std::size_t i = 0; i < left.leading.size(); ++i)
        if (const int byReceiver = order(identity_key(left.leading[i]), identity_key(right.leading[i]));
            byReceiver != 0)
            return byReceiver;
    return 0;
}

}  // namespace ling::internal
