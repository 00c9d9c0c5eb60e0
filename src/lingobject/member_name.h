#pragma once

#include <Python.h>

#include "host/platform.h"
#include "ling/identifier.h"

#include <optional>

namespace ling::python {

/// The `ling` identifier of a Python attribute name, borrowed for ever, or null with the Python error set when the name
/// is no text or cannot be encoded. Attribute names are interned strings, so a name that was used before is found by
/// its address. The interpreter lock must be held.
const ling::internal::identifier_data* memberName(PyObject* name);

/// The same for a name that was used before and does not begin with "_". Null for all others, with nothing pending.
const ling::internal::identifier_data* knownPublicName(PyObject* name) noexcept;

/// The same for a look-up alone. A name that nobody declared is none of the identifiers, and does not become one: what
/// this gives for it is good as long as it lives.
class LookupName {
public:
    explicit LookupName(PyObject* name);
    /// Null with the Python error set, as above.
    const ling::internal::identifier_data* get() const noexcept { return data_; }

private:
    std::optional<platform::LookupName> unknown_;
    const ling::internal::identifier_data* data_;
};

/// Whether the name is a text at all, as slots that are called by hand may find that it is not. False with Python's own
/// error set.
bool isText(PyObject* name) noexcept;

/// Whether the name begins with "_".
bool isPrivateName(PyObject* name) noexcept;

}  // namespace ling::python
