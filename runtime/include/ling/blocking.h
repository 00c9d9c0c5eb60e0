#pragma once

#include "ling/export.h"

#include <array>
#include <cstddef>
#include <type_traits>
#include <utility>

/// Native code that waits or computes for long.
///
/// Some languages run their code under a lock, one thread at a time, and hold it while the code calls a native
/// function. `blocking` marks code that does not need it:
///
///     make_function("pause", "seconds", blocking(&pause), "Waits.")
///     native_class<Station>("Station", "station").method("measure", blocking(&Station::measure))
///
/// Each such language lets its lock go while the code runs, whichever way it is called, so that other threads of the
/// language go on. Arguments are converted before and the result after that, with the lock held. Without such a
/// language in the process, and on a thread that holds no lock, the mark changes nothing.
///
/// The arguments live as long as the call. The code may use values of any language, and call back: what needs the lock
/// takes it by itself. But two threads may now run the code at once, also on one object: it guards its data.

namespace ling {

namespace internal {

/// A lock of a language. Both functions run on the thread that calls native code.
struct guest_lock {
    /// Lets the lock go if this thread holds it. What `enter` is to be given, or null when it was not held.
    void* (*leave)() noexcept;
    /// Takes the lock again. Not called for null.
    void (*enter)(void* left) noexcept;
};
/// For languages: from now on blocking code runs without this lock. There is room for `kMostGuestLocks` in a process;
/// false when they are taken. The record stays for the life of the process.
LING_EXPORT bool add_guest_lock(const guest_lock& lock) noexcept;
inline constexpr std::size_t kMostGuestLocks = 4;

/// Holds no lock of any language for as long as it lives.
class LING_EXPORT guest_locks_left {
public:
    guest_locks_left() noexcept;
    ~guest_locks_left();
    guest_locks_left(const guest_locks_left&) = delete;
    guest_locks_left& operator=(const guest_locks_left&) = delete;

private:
    std::array<void*, kMostGuestLocks> left_;
    std::size_t count_ = 0;
};

template <class F>
struct blocking_code {
    F code;
};

}  // namespace internal

/// The mark: what it gives is code like any other wherever native code is taken, as a function, method, accessor,
/// constructor function or range.
template <class F>
internal::blocking_code<std::decay_t<F>> blocking(F&& code) {
    return {std::forward<F>(code)};
}

}  // namespace ling
