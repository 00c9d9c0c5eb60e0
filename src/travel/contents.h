#pragma once

#include "ling/any.h"

#include <utility>
#include <vector>

namespace ling::python {

/// What native containers hold, and what single objects carry beyond their classes, without conversion.

/// The items of a native list or set as they are now, in order.
std::vector<ling::Any> itemsIn(const ling::Any& container);

/// Adds to a native list or set. None, or an error result, also for what is neither.
ling::Any addItem(const ling::Any& container, const ling::Any& item);
/// Sets in a native map. None, or an error result, also for what is none.
ling::Any setItem(const ling::Any& container, const ling::Any& key, const ling::Any& value);

/// The properties that the single object carries, by name and with their present values, or an error result: one that
/// cannot be read, or methods of its own, which have no form outside of the object.
ling::Any readOwnProperties(const ling::Any& object, std::vector<std::pair<ling::String, ling::Any>>& properties);
/// None, or an error result.
ling::Any writeOwnProperty(const ling::Any& object, const ling::String& name, const ling::Any& value);

}  // namespace ling::python
