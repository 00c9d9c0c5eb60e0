#pragma once

namespace ling::internal {

/// Counts, for the current thread, how deep answers that classes give for their instances are nested in each other: a
/// comparison that compares parts which compare their parts. Beyond a fixed depth the class is not asked any more, so
/// that no chain of objects can exhaust the stack, however small the thread's stack is.
class nested_call {
public:
    nested_call() noexcept { ++depth_; }
    nested_call(const nested_call&) = delete;
    nested_call& operator=(const nested_call&) = delete;
    ~nested_call() { --depth_; }

    bool isTooDeep() const noexcept { return depth_ > kDeepest; }

    static constexpr int kDeepest = 100;

private:
    static inline thread_local constinit int depth_ = 0;
};

}  // namespace ling::internal
