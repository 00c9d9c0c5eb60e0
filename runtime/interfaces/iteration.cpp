#include "interfaces/native_iterator.h"
#include "ling/error.h"
#include "ling/failure_beside.h"
#include "ling/iterable.h"

#include <utility>

namespace ling {

namespace {

/// The iterator, unless a member of its own may stand in for `next`.
internal::native_iterator* plain(internal::native_iterator* native) noexcept {
    return native != nullptr && !internal::carries_members(*native) ? native : nullptr;
}

/// The next item of somebody else's iterator, or the error result that came in its place or was beside it.
Any askForNext(const Any& iterator, internal::native_iterator* native) {
    if (internal::is_error_result(iterator))
        return iterator;
    return internal::answer_or_failure([&] {
        return plain(native) != nullptr ? native->next() : iterator.callMethod(I_Iterator_Generic::$next);
    });
}

/// Puts the next item, or the error result that came in its place, into `item`. False at the end. A native iterator is
/// stepped directly: no look-up, and no error value to say that the end is reached.
bool step(const Any& iterator, internal::native_iterator* native, Any& item) {
    const internal::Step alone = plain(native) == nullptr ? internal::Step::Ask : native->stepAlone(item);
    if (alone != internal::Step::Ask)
        return alone == internal::Step::Item;
    item = askForNext(iterator, native);
    return !internal::is_error_result(item) || internal::cast_object(item, StopIteration::getClass()) == nullptr;
}

}  // namespace

iteration::iteration(Any iterator) noexcept
    : iterator_(std::move(iterator)), native_(internal::native_iterator_of(iterator_)) {}

bool iteration::advance() {
    if (iterator_.isNone())
        return false;  // An iteration that ended stays ended.
    if (step(iterator_, native_, item_)) {
        if (!item_.isHeap())
            return true;  // Neither lazy nor an error.
        item_ = internal::result_unwrap_lazy(std::move(item_));
        if (!internal::is_error_result(item_))
            return true;
        error_ = std::move(item_);
    }
    item_ = Any();
    iterator_ = Any();
    return false;
}

}  // namespace ling
