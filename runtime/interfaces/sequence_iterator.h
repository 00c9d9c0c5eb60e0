#pragma once

#include "interfaces/native_iterator.h"
#include "ling/sequence.h"

#include <atomic>

namespace ling::internal {

/// Iterates any sequence by `$at` and `$$length`. The length is asked for again at each step, so that a sequence that
/// shrinks during the iteration ends it early; once ended it stays ended.
class sequence_iterator final : public native_iterator {
public:
    explicit sequence_iterator(const I_Sequence_Generic& sequence) : sequence_(sequence) {}
    bool step(Any& item) override;
    bool asksOthers() const noexcept override { return true; }

private:
    /// The end for this step and all later ones.
    bool end() noexcept;

    const I_Sequence_Generic sequence_;
    std::atomic<std::int64_t> next_{0};
    std::atomic<bool> ended_{false};
};

}  // namespace ling::internal
