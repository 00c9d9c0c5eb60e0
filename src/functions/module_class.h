#pragma once

#include <Python.h>

#include "ling/class_record.h"

#include <atomic>

namespace ling::python {

/// Whether a member or a module of this name is shown to the host.
bool isPublicName(const ling::String& name);

/// One line for the host's log about a module that could not be exported; `error` says why.
void reportNotExported(const ling::String& pythonName, const ling::Any& error);

/// The class of one exported Python module, derived from `ModulePython`: the module's documentation, and its public
/// classes and callables as class-level properties with fixed values. It holds the module for good.
///
/// The members are those that the module has when somebody first looks at the class. A module that has not been
/// imported is imported then, so that a host pays for what it uses: the standard modules under "python" are there from
/// the start, and most programs never look at most of them. An import that fails leaves the class without members, with
/// a line in the host's log; the next look tries again.
///
/// Threads that look at the same time each fetch the members, and the first to finish publishes them: none waits for
/// another here, since it may hold the import lock that the other is waiting for.
class ModuleClass final : public ling::internal::object_value_class {
public:
    /// A class with the members of a module that is there. Needs the interpreter lock.
    static ling::Class_Generic make(const ling::String& name, const ling::Class_Generic& parent, PyObject* module);
    /// A class for the module that `pythonName` will import. Needs no lock.
    static ling::Class_Generic makeLate(const ling::String& name, const ling::Class_Generic& parent,
                                        const ling::String& pythonName);

    /// The module, borrowed, imported if need be, or null when it cannot be had. Takes the interpreter lock itself.
    PyObject* module();

protected:
    bool declareMembers() override;
    ~ModuleClass() override;

private:
    ModuleClass(const ling::String& name, const ling::Class_Generic& parent, ling::String pythonName);
    PyObject* import();

    const ling::String pythonName_;
    std::atomic<PyObject*> module_{nullptr};  // Owned.
    bool isPublished_ = false;                // Under the interpreter lock.
};

}  // namespace ling::python
