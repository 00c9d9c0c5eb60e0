#pragma once

#include <Python.h>

#include "ling/class.h"
#include "ling/module.h"

namespace ling::python {

/// A Python module as a module of the host: an instance of a class of its own, which derives from the registered class
/// `ModulePython` and has the module's public members as class-level properties (`ModuleClass`). Holds the Python
/// module, and keeps it alive, in the field that proxies have for their object.
class ModulePython : public ling::Module {
public:
    /// The host's module called `name`, a dotted name, for the Python module. Not in the host's tree yet. Needs the
    /// interpreter lock.
    static ModulePython make(const ling::String& name, PyObject* module);
    /// The same for the Python module that `pythonName` imports when somebody first looks into it. Needs no lock.
    static ModulePython makeLate(const ling::String& name, const ling::String& pythonName);

    /// The Python module, borrowed for as long as the value lives, imported if need be, or null when it holds none or
    /// is no `ModulePython`. Takes the interpreter lock itself where it has to import.
    static PyObject* pythonModule(const ling::Any& value);

    static bool isInstance(const ling::Any& value) noexcept;

    static const ling::Class_Generic& getClass();

private:
    static ModulePython makeInstance(const ling::Class_Generic& cls, const ling::String& name);
    explicit ModulePython(const ling::Module& module) noexcept : ling::Module(module) {}
};

}  // namespace ling::python
