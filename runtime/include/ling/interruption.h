#pragma once

#include "ling/export.h"

#include <cstdint>

namespace ling::internal {

/// Whether the work that this thread is at should end, because somebody wants the program or the call to stop. What
/// says so keeps the wish itself: whoever asked for the work learns of it in a way of his own.
///
/// It is called from time to time while native code is at work on its own, with nothing locked and nothing half done,
/// so it may run any code. It should cost little on a thread that nobody wants to stop.
using interruption_check = bool (*)();

/// Makes `check` the one that is called. A language sets it once, from any thread.
LING_EXPORT void set_interruption_check(interruption_check check) noexcept;
/// Asks it. False as long as none is set.
LING_EXPORT bool is_interruption_due();

/// Asks at one of every few thousand steps of a walk or a loop that could go on for long.
class interruption_poll {
public:
    /// One step more: whether to stop here.
    bool operator()() { return (++steps_ % kInterval) == 0 && is_interruption_due(); }

private:
    static constexpr std::uint32_t kInterval = 4096;
    std::uint32_t steps_ = 0;
};

}  // namespace ling::internal
