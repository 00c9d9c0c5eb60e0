#pragma once

#include "interfaces/native_value.h"
#include "ling/class_record.h"
#include "ling/iterable.h"
#include "ling/short_ways.h"

namespace ling::internal {

/// The class of all iterators that the runtime makes itself.
const Class_Generic& native_iterator_class();

/// An iterator of the runtime. It is stepped without a look-up, and its end costs no error value.
class native_iterator : public object_value_object {
public:
    native_iterator() : object_value_object(native_iterator_class().record()) {}

    /// Puts the next item, or the error result that came in its place, into `item`. False, with `item` untouched, once
    /// the end was reached, and ever after. Threads that step one iterator at the same time get different items.
    virtual bool step(Any& item) = 0;
    /// A step in which nobody else is asked for the item, who might answer one beside a failure.
    virtual Step stepAlone(Any& item) { return step(item) ? Step::Item : Step::End; }
    /// The same for who has the only reference to the iterator: no other thread steps it.
    virtual Step stepUnshared(Any& item) { return stepAlone(item); }
    Any next();
};

/// The native iterator behind a value, borrowed, or null for any other value.
inline native_iterator* native_iterator_of(const Any& value) noexcept {
    object_value* object = value.object();
    return object != nullptr && object->ownClass() == native_iterator_class().record()
               ? static_cast<native_iterator*>(object)
               : nullptr;
}

/// The same, but null also where a member of the object itself may stand in for `next`.
inline native_iterator* plain_native_iterator(const Any& value) noexcept {
    native_iterator* native = native_iterator_of(value);
    return native != nullptr && !carries_members(*native) ? native : nullptr;
}

}  // namespace ling::internal
