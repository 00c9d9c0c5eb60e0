#include "ling/depth_check.h"

#include "ling/error.h"

namespace ling::internal {

namespace {

struct depth_state {
    int checks = 0;
    bool exceeded = false;
};
thread_local constinit depth_state state;

}  // namespace

depth_check::depth_check() noexcept { ++state.checks; }

depth_check::~depth_check() {
    if (--state.checks == 0)
        state.exceeded = false;
}

Any depth_check::problem() const { return state.exceeded ? failure(u"The value is nested too deeply.") : Any(); }
bool depth_check::isExceeded() noexcept { return state.exceeded; }

void depth_check::noteExceeded() noexcept {
    if (state.checks != 0)
        state.exceeded = true;
}

}  // namespace ling::internal
