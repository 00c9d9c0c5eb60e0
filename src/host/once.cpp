#include "host/once.h"

#include <Python.h>

namespace ling::python {

namespace {

/// An address that no other living thread has.
const void* thisThread() noexcept {
    thread_local const char mark = 0;
    return &mark;
}

}  // namespace

void Once::runAction(bool (*action)(void*), void* context) {
    for (;;) {
        State seen = State::Idle;
        if (state_.compare_exchange_strong(seen, State::Running, std::memory_order_acquire))
            return runAsOwner(action, context);
        if (seen == State::Done || owner_.load(std::memory_order_relaxed) == thisThread())
            return;
        wait();
    }
}

void Once::runAsOwner(bool (*action)(void*), void* context) {
    struct Finish {
        Once& once;
        State state = State::Idle;
        ~Finish() { once.finish(state); }
    } finish{*this};
    owner_.store(thisThread(), std::memory_order_relaxed);
    finish.state = action(context) ? State::Done : State::Idle;
}

void Once::finish(State state) noexcept {
    owner_.store(nullptr, std::memory_order_relaxed);
    state_.store(state, std::memory_order_release);
    state_.notify_all();
}

void Once::wait() noexcept {
    // Not PyGILState_Check: that one answers "yes" everywhere once the process has had a sub-interpreter.
    PyThreadState* held = PyThreadState_GetUnchecked() != nullptr ? PyEval_SaveThread() : nullptr;
    state_.wait(State::Running, std::memory_order_acquire);
    if (held != nullptr)
        PyEval_RestoreThread(held);
}

}  // namespace ling::python
