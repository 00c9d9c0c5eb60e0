#pragma once

#include "interfaces/native_iterator.h"
#include "ling/sequence.h"

#include <atomic>

namespace ling::internal {

/// Iterates any sequence by `$at` and `$$length`. The length is asked for again at each step, so that a sequence that
/// shrinks during the iteration ends it early; once ended it stays ended.
class sequence_iterator final : public native_iterator {
public:
    explicit sequence_iterator(const I_Sequence_Generic& sequence)
        : sequence_(sequence), access_(sequence_access_of(sequence)) {}
    bool step(Any& item) override;
    Step stepAlone(Any& item) override;

private:
    /// The end for this step and all later ones.
    bool end() noexcept;
    std::int64_t claim() {
        return access_ == nullptr ? next_.fetch_add(1, std::memory_order_relaxed) : access_->claim(next_);
    }

    const I_Sequence_Generic sequence_;
    const sequence_access* const access_;  // Counts the positions from the first step to the last, or nobody does.
    std::atomic<std::int64_t> next_{0};
    std::atomic<bool> ended_{false};
};

}  // namespace ling::internal
