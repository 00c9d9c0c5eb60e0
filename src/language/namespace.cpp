#include "language/namespace.h"

#include "bridge/convert.h"
#include "functions/module_python.h"
#include "host/platform.h"
#include "language/variables.h"

#include <cstdint>
#include <utility>

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

/// The top-level modules as they were when the tree of modules had this version. Under the interpreter lock.
struct BoundModules {
    std::uint64_t version = 0;
    PyRef dictionary;  // Never changed once it is here: nobody else knows it.
};

BoundModules& boundModules() {
    static BoundModules& modules = *new BoundModules;
    return modules;
}

/// Makes sure that the modules of now are bound, and gives them in `dictionary`. None, or an error result.
ling::Any ensureModules(PyRef& dictionary) {
    const std::uint64_t version = platform::moduleTreeVersion();  // Before the modules: more of them may come.
    BoundModules& bound = boundModules();
    if (bound.dictionary && bound.version == version) {
        dictionary = bound.dictionary;
        return {};
    }
    dictionary = PyRef::steal(PyDict_New());
    if (!dictionary)
        return takePythonError();
    for (const ling::Module& module : platform::topLevelModules()) {
        if (ling::Any problem = bindVariable(dictionary.get(), module.name(), module); !problem.isNone())
            return problem;
    }
    bound.version = version;
    PyRef before = std::exchange(bound.dictionary, dictionary);  // Goes last.
    return {};
}

}  // namespace

ling::Any bindModules(PyObject* target) {
    PyRef modules;
    ling::Any problem = ensureModules(modules);
    if (problem.isNone() && PyDict_Update(target, modules.get()) != 0)
        problem = takePythonError();
    return problem;
}

ling::Any mergeNamespace(PyObject* target) {
    for (const ling::Module& module : platform::bindingModules()) {
        if (!bindsMembers(module))
            continue;
        if (ling::Any problem = bindMembers(target, module); !problem.isNone())
            return problem;
    }
    return bindModules(target);
}

}  // namespace ling::python
