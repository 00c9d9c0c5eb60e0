#include "language/namespace.h"

#include "bridge/convert.h"
#include "functions/module_python.h"
#include "host/platform.h"
#include "language/variables.h"

namespace ling::python {

namespace {

/// Asks for the property first: reading one that is not there would make an error each time. A Python module has
/// nothing registered in it to be bound, and asking it would import it.
bool bindsMembers(const ling::Module& module) {
    if (ModulePython::isInstance(module))
        return false;
    const ling::Property mark = ling::property_of(module, ling::Module::$$bindMembers);
    if (mark.isNone())
        return false;
    const ling::Any answer = mark.get(module);
    return answer.is(ling::Kind::Boolean) && answer.asBoolean();
}

ling::Any bindMembers(PyObject* target, const ling::Module& module) {
    for (const ling::Class_Generic& cls : module.classes()) {
        if (ling::Any problem = bindVariable(target, cls.name(), cls); !problem.isNone())
            return problem;
    }
    for (const auto& function : module.functions()) {
        if (ling::Any problem = bindVariable(target, function.id.name(), function.member); !problem.isNone())
            return problem;
    }
    return {};
}

}  // namespace

ling::Any bindModules(PyObject* target) {
    for (const ling::Module& module : platform::topLevelModules()) {
        if (ling::Any problem = bindVariable(target, module.name(), module); !problem.isNone())
            return problem;
    }
    return {};
}

ling::Any mergeNamespace(PyObject* target) {
    PyRef fresh = PyRef::steal(PyDict_New());
    if (!fresh)
        return takePythonError();
    for (const ling::Module& module : platform::bindingModules()) {
        if (!bindsMembers(module))
            continue;
        if (ling::Any problem = bindMembers(fresh.get(), module); !problem.isNone())
            return problem;
    }
    ling::Any problem = bindModules(fresh.get());
    if (problem.isNone() && PyDict_Merge(target, fresh.get(), 1) != 0)
        problem = takePythonError();
    return problem;
}

}  // namespace ling::python
