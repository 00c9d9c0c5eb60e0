#pragma once

#include "ling/export.h"
#include "ling/forward.h"
#include "ling/kind.h"
#include "ling/spin_lock.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ling::internal {

struct object_extras;

/// Everything a `ling::Any` can point to: strings, containers, functions, classes, objects.
///
/// The count is intrusive and atomic; an object starts with one reference, which its maker owns, and is deleted
/// on whichever thread drops the last one. Long chains of objects are taken apart without deep recursion. An object
/// that is pinned stays for ever, and counts no more. A value's storage is guarded by `guard()`, one byte, for a few
/// instructions at a time.
class LING_EXPORT object_value {
public:
    /// `klass` is borrowed and kept alive by the new object. Null stands for the native class of the kind, and,
    /// for `Kind::Object`, marks an object that is itself a class.
    explicit object_value(Kind kind, object_value_class* klass = nullptr) noexcept;
    object_value(const object_value&) = delete;
    object_value& operator=(const object_value&) = delete;

    Kind kind() const noexcept { return kind_; }
    /// The class given at construction, borrowed, or null for a native one. See `raw_class_of` for the answer
    /// that is never null.
    object_value_class* ownClass() const noexcept { return class_; }

    void retain() noexcept {
        if (!isPinned())
            count_.fetch_add(1, std::memory_order_relaxed);
    }
    void release() noexcept {
        const std::uint32_t count = count_.load(std::memory_order_relaxed);
        if (count == 1)
            releaseOnlyReference();
        else if (count < kPinned && count_.fetch_sub(1, std::memory_order_release) == 1)
            destroy();
    }
    /// Keeps the object for ever, for what lives as long as the process anyway: threads that use it at the same time do
    /// not meet in its count. The caller has a reference, which is left to the object.
    void pin() noexcept { count_.fetch_or(kPinned, std::memory_order_relaxed); }
    bool isPinned() const noexcept { return count_.load(std::memory_order_relaxed) >= kPinned; }
    /// Whether the caller, who has a reference, has the only one. Nobody else reaches the object then.
    bool isUnshared() const noexcept {
        return count_.load(std::memory_order_acquire) == 1 && extras_.load(std::memory_order_relaxed) == nullptr;
    }
    /// Takes a reference unless the last one is already gone. For weak references, under their own guard.
    bool retainIfAlive() noexcept;

    /// True once the last reference is gone: no weak reference reaches the object any more.
    bool isDying() const noexcept { return dying_; }

    /// True for an error that was built to travel as the result of a failed operation.
    bool isErrorResult() const noexcept { return errorResult_; }

    /// The value itself; a weak reference answers its target, or none when that is gone.
    virtual Any lock();
    /// Calls the value by position. `arguments` are borrowed. An error result when it cannot be called.
    virtual Any invoke(std::span<const Any> arguments);
    /// Calls the value by position and by name. Without an answer of its own the value is called by position, with what
    /// its signature makes of the arguments (see `ParameterMode`).
    virtual Any invokeNamed(std::span<const Any> positional, std::span<const NamedArgument> named);

    spin_lock& guard() const noexcept { return guard_; }
    /// Members of this one object and its weak-reference anchor, made on first use. Null until then for `find`.
    object_extras* findExtras() const noexcept { return extras_.load(std::memory_order_acquire); }
    object_extras& ensureExtras();

protected:
    virtual ~object_value();
    /// Runs once, when the last reference is gone and before any destructor: the object is still whole.
    virtual void aboutToDie() noexcept {}
    void markErrorResult(bool flag) noexcept { errorResult_ = flag; }

private:
    /// So many references that they are not counted any more.
    static constexpr std::uint32_t kPinned = std::uint32_t{1} << 31;

    void releaseOnlyReference() noexcept;
    void destroy() noexcept;
    void dismantle() noexcept;
    void waitBefore(object_value* next) noexcept;
    object_value* takeNext() noexcept;

    std::atomic<std::uint32_t> count_{1};
    const Kind kind_;
    bool errorResult_ = false;
    bool dying_ = false;  // Written by the thread that takes the object apart, before anything of it runs.
    mutable spin_lock guard_;
    object_value_class* const class_;
    std::atomic<object_extras*> extras_{nullptr};
};

/// How many object values are alive in this process. Tests hold it against its value at their start.
LING_EXPORT std::size_t live_object_count() noexcept;

}  // namespace ling::internal
