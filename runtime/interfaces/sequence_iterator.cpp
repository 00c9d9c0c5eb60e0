#include "interfaces/sequence_iterator.h"

#include "ling/error.h"

namespace ling::internal {

bool sequence_iterator::step(Any& item) {
    if (ended_.load(std::memory_order_relaxed))
        return false;
    const std::int64_t index = claim();
    const Result<Integer> length = sequence_.length();
    if (!length) {
        item = length.error();
        return true;
    }
    if (index >= length->value())
        return end();
    Any found = sequence_.at(index);
    if (is_error_result(found)) {
        // Between the two questions somebody else may have shortened the sequence: that is its end, not a failure.
        const Result<Integer> present = sequence_.length();
        if (present && index >= present->value())
            return end();
    }
    item = std::move(found);
    return true;
}

Step sequence_iterator::stepAlone(Any& item) {
    if (ended_.load(std::memory_order_relaxed))
        return Step::End;
    // The sequence may have been given members meanwhile.
    if (access_ == nullptr || sequence_access_of(sequence_) != access_)
        return Step::Ask;
    const Step step = access_->step(sequence_, next_, item);
    if (step == Step::End)
        end();
    return step;
}

bool sequence_iterator::end() noexcept {
    ended_.store(true, std::memory_order_relaxed);
    return false;
}

}  // namespace ling::internal
