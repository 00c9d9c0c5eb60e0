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
    return internal::answer_or_failure(
        [&] { return plain(native) != nullptr ? native->next() : iterator.callMethod(I_Iterator_Generic::$next); });
}

/// Puts what somebody else answers for the next item into `item`. False at the end.
[[gnu::noinline]] bool ask(const Any& iterator, internal::native_iterator* native, Any& item) {
    item = askForNext(iterator, native);
    return !internal::is_error_result(item) || internal::cast_object(item, StopIteration::getClass()) == nullptr;
}

}  // namespace

iteration::iteration(Any iterator) noexcept
    : iterator_(std::move(iterator)), native_(internal::native_iterator_of(iterator_)) {}

/// A native iterator is stepped directly: no look-up, and no error value to say that the end is reached.
bool iteration::advance() {
    if (iterator_.isNone())
        return false;  // An iteration that ended stays ended.
    internal::native_iterator* native = plain(native_);
    const internal::Step alone = native == nullptr      ? internal::Step::Ask
                                 : native->isUnshared() ? native->stepUnshared(item_)
                                                        : native->stepAlone(item_);
    if (alone == internal::Step::Item && !item_.isHeap())
        return true;  // Neither lazy nor an error.
    return finish(alone == internal::Step::Ask ? ask(iterator_, native_, item_) : alone == internal::Step::Item);
}

bool iteration::finish(bool hasItem) {
    if (hasItem) {
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
