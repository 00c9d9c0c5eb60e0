#pragma once

#include "host/py_ref.h"
#include "ling/any.h"
#include "ling/map_interface.h"

namespace ling::python {

/// What one run of a method collects: its result, and the variables that it hands back.
///
/// Python code reaches it through two functions, which stay valid for as long as anybody keeps them. Once the run is
/// over they refuse. All needs the interpreter lock.
class CallState {
public:
    explicit CallState(const ling::I_Map_Generic& outLocals) : outLocals_(outLocals) {}

    /// The two functions, stored by their names in the dictionary `target`, which then own a new state; null, with the
    /// Python error set, when there is no memory. The state is borrowed from the functions' `capsule`.
    static CallState* install(PyObject* target, const ling::I_Map_Generic& outLocals, PyRef& capsule);

    /// Ends the run and answers what it collected.
    ling::Any close();

    bool isOpen() const noexcept { return isOpen_; }
    /// Keeps the result, in place of one from before.
    void setResult(ling::Any result) { result_.swap(result); }
    /// Stores a variable. None, or an error result: the map cannot be written to, or refuses.
    ling::Any setLocal(const ling::Any& name, const ling::Any& value);

private:
    ling::Any outLocals_;
    ling::Any result_;
    bool isOpen_ = true;
};

}  // namespace ling::python
