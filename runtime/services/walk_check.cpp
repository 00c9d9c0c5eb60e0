#include "ling/walk_check.h"

#include "ling/error.h"
#include "ling/indirect_values.h"

namespace ling::internal {

namespace {

enum class walk_end { None, TooDeep, Interrupted };

struct walk_state {
    int checks = 0;
    walk_end end = walk_end::None;
};
thread_local constinit walk_state state;

/// The first reason stays.
void note(walk_end end) noexcept {
    if (state.checks != 0 && state.end == walk_end::None)
        state.end = end;
    note_passing_failure();
}

}  // namespace

Any interrupted_error() { return failure(u"The call was interrupted."); }

walk_check::walk_check() noexcept { ++state.checks; }

walk_check::~walk_check() {
    if (--state.checks == 0)
        state.end = walk_end::None;
}

Any walk_check::problem() const {
    switch (state.end) {
        case walk_end::None:
            break;
        case walk_end::TooDeep:
            return failure(u"The value is nested too deeply.");
        case walk_end::Interrupted:
            return interrupted_error();
    }
    return Any();
}

bool walk_check::isEnded() noexcept { return state.end != walk_end::None; }
bool walk_check::isTooDeep() noexcept { return state.end == walk_end::TooDeep; }
void walk_check::noteTooDeep() noexcept { note(walk_end::TooDeep); }
void walk_check::noteInterrupted() noexcept { note(walk_end::Interrupted); }

}  // namespace ling::internal
