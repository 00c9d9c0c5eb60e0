#pragma once

#include <atomic>
#include <cstdint>
#include <type_traits>

namespace ling::python {

/// One-time initialisation that may run Python.
///
/// A function-local `static` of C++ cannot do that: its guard is a hidden mutex. A thread that waits for it with the
/// interpreter lock held, while the initialiser wants that lock, waits for ever. Here a waiter gives the lock up for as
/// long as it waits. An initialiser that comes back to its own `Once`, on the same thread, finds it done.
///
/// Construction costs nothing at run time, and nothing is left to destroy.
class Once {
public:
    constexpr Once() noexcept = default;
    Once(const Once&) = delete;
    Once& operator=(const Once&) = delete;

    /// Runs `action` if no call before has finished it; returns when it is finished, or at once when called from
    /// within the action. If the action throws, or answers false, the next caller runs it. The lock may be held or not:
    /// it is in the same state afterwards, but may have been given up in between.
    template <class Action>
    void run(Action&& action) {
        if (isDone())
            return;
        auto call = [&action] {
            if constexpr (std::is_same_v<std::invoke_result_t<Action&>, bool>)
                return action();
            else
                return action(), true;
        };
        runAction([](void* context) { return (*static_cast<decltype(call)*>(context))(); }, &call);
    }
    bool isDone() const noexcept { return state_.load(std::memory_order_acquire) == State::Done; }

private:
    enum class State : std::uint32_t { Idle, Running, Done };

    void runAction(bool (*action)(void*), void* context);
    void runAsOwner(bool (*action)(void*), void* context);
    void finish(State state) noexcept;
    void wait() noexcept;

    std::atomic<State> state_{State::Idle};
    std::atomic<const void*> owner_{nullptr};  // Which thread runs the action.
};

}  // namespace ling::python
