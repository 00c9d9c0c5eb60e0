#include "services/comparison_run.h"

#include "ling/byte_array.h"
#include "ling/hash_containers.h"
#include "ling/stack_room.h"
#include "ling/string.h"
#include "ling/walk_check.h"
#include "services/class_answer.h"
#include "services/number_order.h"
#include "services/order_group.h"

#include <algorithm>
#include <optional>
#include <span>

namespace ling::internal {

namespace {

/// Depth from which on open pairs are kept in a set. Fewer are found as fast by walking the levels, and shallow values,
/// which are nearly all, cost nothing. None may be missed: a list that holds itself ten times would be walked ten times
/// at each level that goes unnoticed.
constexpr std::size_t kShallow = 16;

/// How many levels may be open that came out of lazy or external values. One that gives a new list around itself each
/// time has no end.
constexpr std::size_t kDeepestMade = 250'000;

template <class T>
int order(T a, T b) noexcept {
    return a < b ? -1 : a > b ? 1 : 0;
}

/// An answer of `$__compare__` as -1, 0 or 1. Nothing when it is no integer.
std::optional<std::int64_t> answered(const found_member& method, const Any& self, const Any& other) {
    if (!method)
        return std::nullopt;
    const Any answer = ask_class(method, {self, other});
    if (!answer.is(Kind::Integer) || walk_check::isEnded())
        return std::nullopt;
    return order<std::int64_t>(answer.asInteger(), 0);
}

bool isDerived(const Any& value, const Any& from) {
    object_value_class* own = value.object()->ownClass();
    object_value_class* other = from.object()->ownClass();
    return own != other && own->isAncestor(other);
}

/// The order as the classes of the two see it. The derived class is asked before the one it derives from and `a`
/// before `b`; who cannot answer leaves it to the other, whose answer is turned round where it is that of `b`.
std::optional<std::int64_t> askClasses(const Any& a, const Any& b) {
    const found_member ofA = class_answer(a, Any::$__compare__);
    const found_member ofB = class_answer(b, Any::$__compare__);
    if (!ofA && !ofB)
        return std::nullopt;
    const bool bFirst = ofA && ofB && isDerived(b, a);
    std::optional<std::int64_t> answer = bFirst ? std::nullopt : answered(ofA, a, b);
    if (answer || walk_check::isEnded())
        return answer;
    if (answer = answered(ofB, b, a); answer)
        return -*answer;
    return bFirst && !walk_check::isEnded() ? answered(ofA, a, b) : std::nullopt;
}

object_value_hash_map& mapOf(const Any& value) { return static_cast<object_value_hash_map&>(*value.object()); }
object_value_hash_set& setOf(const Any& value) { return static_cast<object_value_hash_set&>(*value.object()); }

int compareSets(const Any& a, const Any& b) {
    const std::vector<Any> items = setOf(a).copy_items();
    if (const int bySize = order(items.size(), setOf(b).size()); bySize != 0)
        return bySize;
    interruption_poll mustStop;
    for (const Any& item : items) {
        if (mustStop())
            walk_check::noteInterrupted();
        if (walk_check::isEnded() || !setOf(b).contains(item))
            return compare_identity(a, b);
    }
    return 0;
}

}  // namespace

std::int64_t comparison_run::compare(const Any& a, const Any& b) {
    if (!has_stack_room())
        walk_check::noteTooDeep();
    if (walk_check::isEnded())
        return compare_identity(a, b);
    std::int64_t found = compareResolved(a, b);
    while (found == 0 && !levels_.empty() && !walk_check::isEnded())
        found = stepInnermost();
    return walk_check::isEnded() ? compare_identity(a, b) : closeAll(found);
}

std::int64_t comparison_run::compareResolved(const Any& a, const Any& b) {
    const resolved_value left(a);
    const resolved_value right(b);
    if ((*left).isSameAs(*right))
        return 0;
    if (std::optional<std::int64_t> answer = askClasses(*left, *right))
        return *answer;
    made_ = left.isResolved() || right.isResolved();
    return compareContent(*left, *right);
}

/// The order as far as it can be seen without looking at items; zero, with a level opened, where they decide.
std::int64_t comparison_run::compareContent(const Any& a, const Any& b) {
    const order_group group = order_group_of(a);
    if (group != order_group_of(b))
        return compare_identity(a, b);
    switch (group) {
        case order_group::None:
        case order_group::Undefined:
            return 0;
        case order_group::Boolean:
            return order(a.asBoolean(), b.asBoolean());
        case order_group::Number:
            return compare_numbers(a, b);
        case order_group::Text:
            return order(unchecked<String>(a).view(), unchecked<String>(b).view());
        case order_group::Bytes:
            return order(unchecked<ByteArray>(a).view(), unchecked<ByteArray>(b).view());
        case order_group::Tuple:
        case order_group::List:
            return open(a, b, item_cursor(a), item_cursor(b));
        case order_group::Map:
            return openMaps(a, b);
        case order_group::Set:
            return compareSets(a, b);
        case order_group::Function:
            return compare_functions(a, b);
        case order_group::Class:
        case order_group::Object:
            break;
    }
    return compare_identity(a, b);
}

/// Maps are equal when each has the keys of the other with equal values; then their order of insertion does not matter.
std::int64_t comparison_run::openMaps(const Any& a, const Any& b) {
    if (isOpen(a, b))
        return 0;
    const std::vector<std::pair<Any, Any>> pairs = mapOf(a).copy_and_load_pairs();
    if (const int bySize = order(pairs.size(), mapOf(b).size()); bySize != 0)
        return bySize;
    std::vector<Any> left;
    std::vector<Any> right;
    for (const auto& [key, value] : pairs) {
        if (mustStop_())
            walk_check::noteInterrupted();
        if (walk_check::isEnded())
            return 0;
        bool found = false;
        right.push_back(mapOf(b).find(key, found));
        if (!found)
            return compare_identity(a, b);
        left.push_back(value);
    }
    return open(a, b, item_cursor(std::move(left)), item_cursor(std::move(right)));
}

std::int64_t comparison_run::stepInnermost() {
    if (mustStop_()) {
        walk_check::noteInterrupted();
        return 0;
    }
    level& innermost = levels_.back();
    Any left;
    Any right;
    const bool hasLeft = innermost.left.next(left);
    const bool hasRight = innermost.right.next(right);
    if (hasLeft && hasRight)
        return compareResolved(left, right);
    if (hasLeft != hasRight)
        return hasLeft ? 1 : -1;
    if (levels_.size() > kShallow)
        deepPairs_.erase({innermost.a.object(), innermost.b.object()});
    madeLevels_ -= innermost.made ? 1 : 0;
    levels_.pop_back();
    return 0;
}

std::int64_t comparison_run::open(const Any& a, const Any& b, item_cursor left, item_cursor right) {
    if (isOpen(a, b))
        return 0;
    if (made_ && ++madeLevels_ > kDeepestMade)
        walk_check::noteTooDeep();
    levels_.push_back({a, b, std::move(left), std::move(right), made_});
    if (levels_.size() > kShallow)
        deepPairs_.insert({a.object(), b.object()});
    return 0;
}

bool comparison_run::isOpen(const Any& a, const Any& b) const {
    const auto shallow = std::span(levels_).first(std::min(levels_.size(), kShallow));
    return std::ranges::any_of(shallow, [&](const level& open) { return open.a.isSameAs(a) && open.b.isSameAs(b); }) ||
           (!deepPairs_.empty() && deepPairs_.contains({a.object(), b.object()}));
}

/// The order of the outermost pair, when the innermost has `found`. Items decide about the order of sequences; maps
/// that differ anywhere are merely different.
std::int64_t comparison_run::closeAll(std::int64_t found) {
    for (; !levels_.empty(); levels_.pop_back())
        if (levels_.back().a.is(Kind::Map))
            found = compare_identity(levels_.back().a, levels_.back().b);
    return found;
}

}  // namespace ling::internal
