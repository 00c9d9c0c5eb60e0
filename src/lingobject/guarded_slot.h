#pragma once

#include <Python.h>

#include "bridge/contained.h"
#include "host/stack_room.h"

#include <type_traits>

namespace ling::python {

template <auto Slot, class Result, class... Arguments>
constexpr auto guardSlot(Result (*)(Arguments...)) {
    return +[](Arguments... arguments) -> Result {
        if (hasStackRoom())
            return Slot(arguments...);
        PyErr_SetString(PyExc_RecursionError, "The call is nested too deeply.");
        if constexpr (std::is_pointer_v<Result>)
            return nullptr;
        else
            return -1;
    };
}

/// The slot function `Slot`, contained, which raises `RecursionError` instead where the stack is used up. Python code
/// that goes round through `ling` comes by a slot each time, so none of these rounds goes on for ever.
///
/// Slots that have an answer of their own for values that are nested too deeply (text, comparison, hash) go without.
template <auto Slot>
inline constexpr auto guarded = guardSlot<contained<Slot>>(contained<Slot>);

}  // namespace ling::python
