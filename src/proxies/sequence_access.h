#pragma once

#include <Python.h>

#include "host/platform.h"
#include "ling/any.h"

#include <optional>

namespace ling::python {

/// The short ways of sequence proxies: for an exact `list` or `tuple`, whose methods nobody can have replaced, and
/// arguments for which the named method could do nothing else. Each answers nothing where the named method has to be
/// asked, errors included.
namespace exact {

std::optional<ling::Any> at(const ling::Any& self, const ling::Any& index);
std::optional<ling::Any> length(const ling::Any& self);
std::optional<ling::Any> append(const ling::Any& self, const ling::Any& value);
std::optional<ling::Any> set(const ling::Any& self, const ling::Any& index, const ling::Any& value);
/// All items under one acquisition of the lock. The list is asked for its length at each step, since converting an item
/// may run code that changes it.
std::optional<ling::Any> collect(const ling::Any& self);

}  // namespace exact

/// What `$at` and `$$length` of a sequence proxy do, whichever way.
ling::Any itemAt(const ling::Any& self, const ling::Any& index);
ling::Any sequenceLength(const ling::Any& self);

/// What both offer: the small integers of an exact `list` or `tuple` are read where they stand.
const platform::ItemWays& sequenceAccess();

}  // namespace ling::python
