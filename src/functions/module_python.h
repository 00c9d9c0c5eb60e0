#pragma once

#include <Python.h>

#include "ling/class.h"
#include "ling/module.h"

namespace ling::python {

/// A Python module as a module of the host: an instance of a class of its own, which derives from the registered class
/// `ModulePython` and has the module's public members as class-level properties. Holds the Python module, and keeps it
/// alive, in the field that proxies have for their object.
class ModulePython : public ling::Module {
public:
    /// A module named `name` that holds `module`, of the class `cls`, which is `ModulePython` or derived from it. Not
    /// in the host's tree yet. Needs the interpreter lock.
    static ModulePython make(const ling::Class_Generic& cls, const ling::String& name, PyObject* module);

    /// The Python module, borrowed for as long as the value lives, or null when it holds none or is no `ModulePython`.
    /// Needs no lock.
    static PyObject* pythonModule(const ling::Any& value) noexcept;

    static const ling::Class_Generic& getClass();

private:
    explicit ModulePython(const ling::Module& module) noexcept : ling::Module(module) {}
};

}  // namespace ling::python
