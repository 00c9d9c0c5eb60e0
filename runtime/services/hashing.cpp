#include "ling/byte_array.h"
#include "ling/comparison.h"
#include "ling/function.h"
#include "ling/interruption.h"
#include "ling/list.h"
#include "ling/stack_room.h"
#include "ling/walk_check.h"
#include "services/class_answer.h"
#include "services/number_order.h"
#include "services/order_group.h"
#include "values/content_hash.h"

#include <unordered_set>
#include <vector>

namespace ling {

namespace {

using internal::has_stack_room;
using internal::order_group;
using internal::walk_check;
using internal::content_hash::mix;

// What nothing else is likely to hash to: these values have no content.
constexpr std::int64_t kHashOfNone = 0x6E6F6E65;
constexpr std::int64_t kHashOfUndefined = 0x756E6465;
constexpr std::int64_t kHashOfFalse = 0x66616C73;
constexpr std::int64_t kHashOfTrue = 0x74727565;

/// The hash of all values without an end. Two of them can be equal however differently they are made, and none equals a
/// value with an end, so what comes before the end that is missing must not count.
constexpr std::int64_t kHashOfEndless = 0x656E646C;
/// As for comparison: how many levels may be open that came out of lazy or external values.
constexpr std::size_t kDeepestMade = 250'000;

constexpr std::uint64_t kTupleStart = 0x9AE16A3B2F90404FULL;
constexpr std::uint64_t kTupleStep = 0xC949C7DEFEB1B2E9ULL;

std::int64_t hashOfIdentity(const Any& value) noexcept {
    return static_cast<std::int64_t>(mix(value.rawBits(), internal::content_hash::kFirst));
}

/// By what compares equal: a bound method by its function and its receiver, each as the very thing it is.
std::int64_t hashOfFunction(const Any& value) noexcept {
    const auto* function = static_cast<const internal::object_value_function*>(value.object());
    const internal::function_identity identity = function->identity();
    std::uint64_t state = mix(reinterpret_cast<std::uintptr_t>(identity.target), internal::content_hash::kFirst);
    for (const Any& argument : identity.leading)
        state = mix(state ^ internal::identity_key(argument).first, kTupleStep);
    return static_cast<std::int64_t>(state);
}

/// A tuple whose items are being hashed. Tuples in tuples are kept in a list, not on the stack.
struct open_tuple {
    Any tuple;
    bool made;  // Came out of a lazy or external value. Only through such can a tuple come to hold itself.
    std::size_t next = 0;
    std::uint64_t state = kTupleStart;

    std::span<const Any> items() const noexcept { return unchecked<Tuple_Generic>(tuple).items(); }
    void add(std::int64_t hash) noexcept { state = mix(state ^ static_cast<std::uint64_t>(hash), kTupleStep) + state; }
};

class hash_run {
public:
    std::int64_t hash(const Any& value) {
        if (!has_stack_room())
            walk_check::noteTooDeep();
        std::int64_t hashed = walk_check::isEnded() ? 0 : enter(value);
        while (!open_.empty()) {
            if (mustStop_())
                walk_check::noteInterrupted();
            if (isEndless_ || walk_check::isEnded())
                return kHashOfEndless;
            open_tuple& innermost = open_.back();
            if (innermost.next < innermost.items().size()) {
                const std::size_t depth = open_.size();
                const std::int64_t itemHash = enter(innermost.items()[innermost.next++]);
                if (open_.size() == depth)
                    open_.back().add(itemHash);
                continue;
            }
            hashed = static_cast<std::int64_t>(mix(innermost.state, innermost.next + kTupleStep));
            if (innermost.made)
                made_.erase(innermost.tuple.object());
            open_.pop_back();
            if (!open_.empty())
                open_.back().add(hashed);
        }
        return hashed;
    }

private:
    /// The hash of a value, or, for a tuple, anything: the tuple is opened instead.
    std::int64_t enter(const Any& value) {
        const internal::resolved_value resolved(value);
        if (const internal::found_member method = internal::class_answer(*resolved, Any::$__hash__)) {
            const Any answer = internal::ask_class(method, {*resolved});
            return answer.is(Kind::Integer) ? answer.asInteger() : hashOfIdentity(*resolved);
        }
        return enterContent(*resolved, resolved.isResolved());
    }

    std::int64_t enterContent(const Any& value, bool made) {
        switch (internal::order_group_of(value)) {
            case order_group::None:
                return kHashOfNone;
            case order_group::Undefined:
                return kHashOfUndefined;
            case order_group::Boolean:
                return value.asBoolean() ? kHashOfTrue : kHashOfFalse;
            case order_group::Number:
                return internal::hash_number(value);
            case order_group::Text:
                return static_cast<std::int64_t>(unchecked<String>(value).hash());
            case order_group::Bytes: {
                const std::string_view bytes = unchecked<ByteArray>(value).view();
                return static_cast<std::int64_t>(internal::hash_bytes(bytes.data(), bytes.size()));
            }
            case order_group::Tuple:
                openTuple(value, made);
                return 0;
            case order_group::Function:
                return hashOfFunction(value);
            case order_group::List:
            case order_group::Map:
            case order_group::Set:
            case order_group::Class:
            case order_group::Object:
                break;
        }
        return hashOfIdentity(value);
    }

    void openTuple(const Any& tuple, bool made) {
        if (made)
            isEndless_ = !made_.insert(tuple.object()).second || made_.size() > kDeepestMade;
        open_.push_back({tuple, made});
    }

    internal::interruption_poll mustStop_;
    std::vector<open_tuple> open_;
    std::unordered_set<const internal::object_value*> made_;  // Those of the open tuples that are.
    bool isEndless_ = false;
};

}  // namespace

std::int64_t hash_of(const Any& value) {
    if (value.is(Kind::Integer))
        return internal::hash_number(value);
    if (value.is(Kind::String) && value.object()->ownClass() == nullptr)
        return static_cast<std::int64_t>(unchecked<String>(value).hash());
    const internal::walk_check check;
    return hash_run().hash(value);
}

Result<std::int64_t> try_hash(const Any& value) {
    const internal::walk_check check;
    const std::int64_t hash = hash_of(value);
    Any problem = check.problem();
    return problem.isNone() ? Result<std::int64_t>(hash) : Result<std::int64_t>::failure(std::move(problem));
}

}  // namespace ling
