#include "ling/indirect_values.h"

#include "library/define.h"
#include "ling/class_builder.h"
#include "values/weak_reference.h"

#include <mutex>

namespace ling {

using internal::object_value_external;
using internal::object_value_lazy;

namespace internal {

namespace {

// A value that stands for another that stands for another: more steps than this are a circle.
constexpr int kLongestChain = 100'000;

Any endlessChain() { return failure(u"The value stands for itself."); }

/// One lazy value that this thread is computing. They form a chain, innermost first.
class computation {
public:
    explicit computation(const object_value_lazy& value) noexcept : value_(&value), outer_(innermost) {
        innermost = this;
    }
    computation(const computation&) = delete;
    computation& operator=(const computation&) = delete;
    ~computation() { innermost = outer_; }

    /// Whether this thread is computing the value. Those computations that it needed on the way from there to here have
    /// seen an error that passes with that of the value: what they give is not for good.
    static bool meets(const object_value_lazy& value) noexcept {
        computation* met = innermost;
        while (met != nullptr && met->value_ != &value)
            met = met->outer_;
        for (computation* between = innermost; met != nullptr && between != met; between = between->outer_)
            between->isComplete_ = false;
        return met != nullptr;
    }
    static void meetPassingFailure() noexcept {
        for (computation* each = innermost; each != nullptr; each = each->outer_)
            each->metPassingFailure_ = true;
    }
    /// Whether `computed` is what it will always be.
    bool isFinal(const Any& computed) const noexcept {
        return isComplete_ && !(metPassingFailure_ && is_error_result(computed));
    }

private:
    static thread_local computation* innermost;

    const object_value_lazy* const value_;
    computation* const outer_;
    bool isComplete_ = true;
    bool metPassingFailure_ = false;
};

thread_local computation* computation::innermost = nullptr;

}  // namespace

namespace {

/// An error that is kept for good lets go of what it came from: that may hold the frames of those who asked for the
/// value, which hold the value in turn.
void forgetOrigin(const Any& computed) {
    if (is_error_result(computed) && !unchecked<Error>(computed).origin().isNone())
        unchecked<Error>(computed).setOrigin(Any());
}

}  // namespace

void note_passing_failure() noexcept { computation::meetPassingFailure(); }

object_value_lazy::object_value_lazy(std::function<Any()> compute)
    : object_value(Kind::Lazy), compute_(std::make_shared<const std::function<Any()>>(std::move(compute))) {}

Any object_value_lazy::evaluate() { return result_unwrap_lazy(Any::share(this)); }

/// What the computation gave, which may be another lazy value.
object_value_lazy::outcome object_value_lazy::computeOnce() {
    std::shared_ptr<const std::function<Any()>> compute;
    {
        std::lock_guard hold(guard());
        if (compute_ == nullptr)
            return {value_};
        compute = compute_;
    }
    if (computation::meets(*this))
        return {failure(u"The lazy value needs itself to be computed."), false};
    Any computed;
    {
        computation running(*this);
        computed = contain(*compute);
        if (computed.object() == this)
            computed = endlessChain();
        if (!running.isFinal(computed))
            return {std::move(computed), false};
    }
    forgetOrigin(computed);
    std::lock_guard hold(guard());
    if (compute_ != nullptr) {
        value_.swap(computed);
        compute_.reset();  // Not the last reference: `compute` is one, and is dropped after the guard.
    }
    return {value_};
}

/// Stands for `value` from now on, in the place of another lazy value that leads there.
void object_value_lazy::settle(const Any& value) {
    Any settled = value;
    std::lock_guard hold(guard());
    if (compute_ == nullptr)
        value_.swap(settled);
}

object_value_external::object_value_external(std::function<Any()> load, std::function<Any(const Any&)> store)
    : object_value(Kind::External), load_(std::move(load)), store_(std::move(store)) {}

Any object_value_external::load() const { return contain(load_); }

Any object_value_external::store(const Any& value) const {
    return contain([&] { return store_ == nullptr ? failure(u"The external value is read-only.") : store_(value); });
}

Any result_unwrap_lazy(Any value) {
    if (!value.is(Kind::Lazy) && !value.is(Kind::External))
        return value;
    const Any first = value;
    bool isKept = true;
    int steps = 0;
    for (; value.is(Kind::Lazy) || value.is(Kind::External); ++steps) {
        if (steps == kLongestChain) {
            value = endlessChain();
        } else if (value.is(Kind::Lazy)) {
            auto computed = static_cast<object_value_lazy*>(value.object())->computeOnce();
            isKept = isKept && computed.isKept;
            value = std::move(computed.value);
        } else {
            value = static_cast<object_value_external*>(value.object())->load();
        }
    }
    // The next one to ask need not go the whole way; and lazy values that led to each other no longer do.
    if (steps > 1 && isKept && first.is(Kind::Lazy))
        static_cast<object_value_lazy*>(first.object())->settle(value);
    return value;
}

Any unwrap(const Any& value) {
    Any result = result_unwrap_lazy(value);
    for (int steps = 0; result.is(Kind::Weak); ++steps) {
        if (steps == kLongestChain)
            return endlessChain();
        result = result_unwrap_lazy(result.object()->lock());
    }
    return result;
}

}  // namespace internal

Lazy_Generic::Lazy_Generic(std::function<Any()> compute) : Any(Any::adopt(new object_value_lazy(std::move(compute)))) {}

Any Lazy_Generic::evaluate() const { return static_cast<object_value_lazy*>(object())->evaluate(); }

Result<Lazy_Generic> Lazy_Generic::cast(const Any& value) {
    if (value.is(Kind::Lazy))
        return unchecked<Lazy_Generic>(value);
    return Result<Lazy_Generic>::failure(internal::cast_error(value, getClass()));
}

namespace {

/// A class whose values only the runtime makes: calling it makes none.
Class_Generic indirectClass(const char* name) {
    Class_Generic cls = internal::native_class(name, {});
    cls.record()->set_interface_unsafe();
    return cls;
}

}  // namespace

const Class_Generic& Lazy_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(indirectClass("Lazy"));
    return cls;
}

Type Lazy_Generic::getType() { return Type(getClass()); }

External_Generic::External_Generic(std::function<Any()> load, std::function<Any(const Any&)> store)
    : Any(Any::adopt(new object_value_external(std::move(load), std::move(store)))) {}

const Class_Generic& External_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(indirectClass("External"));
    return cls;
}

namespace {

Any weakTo(const Any& target) {
    if (!target.isHeap() || target.is(Kind::Weak))
        return target;
    return Any::adopt(internal::make_weak(target.object()));
}

}  // namespace

Weak_Generic::Weak_Generic(const Any& target) : Any(weakTo(target)) {}

Any Weak_Generic::lock() const { return is(Kind::Weak) ? heapObject()->lock() : Any(*this); }

Result<Weak_Generic> Weak_Generic::cast(const Any& value) {
    if (value.is(Kind::Weak))
        return unchecked<Weak_Generic>(value);
    return Result<Weak_Generic>::failure(internal::cast_error(value, getClass()));
}

const Class_Generic& Weak_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(indirectClass("Weak"));
    return cls;
}

Type Weak_Generic::getType() { return Type(getClass()); }

namespace internal {

namespace {

Any loadExternal(const Any& self) {
    if (!self.is(Kind::External))
        return cast_error(self, External_Generic::getClass());
    return static_cast<object_value_external*>(self.object())->load();
}

Any storeExternal(const Any& self, const Any& value) {
    if (!self.is(Kind::External))
        return cast_error(self, External_Generic::getClass());
    return static_cast<object_value_external*>(self.object())->store(value);
}

}  // namespace

void define_indirect_value_members() {
    extend_class(Lazy_Generic::getClass())
        .doc("A value that is computed when it is needed, once.")
        .method(
            "evaluate", "", [](const Lazy_Generic& self) { return self.evaluate(); },
            "The value, computed now if it was not before.")
        .build();
    extend_class(External_Generic::getClass())
        .doc("A value that lives elsewhere and is read anew each time.")
        .method("load", "", &loadExternal, "The value as it is now.")
        .method("store", "value", &storeExternal, "Writes the value.")
        .build();
    extend_class(Weak_Generic::getClass())
        .doc("A reference that does not keep its target alive.")
        .method(
            "lock", "", [](const Weak_Generic& self) { return self.lock(); }, "The target, or none when it is gone.")
        .build();
}

}  // namespace internal

}  // namespace ling
