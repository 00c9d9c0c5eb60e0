#include "language/namespace.h"

#include "bridge/convert.h"
#include "functions/module_python.h"
#include "host/platform.h"
#include "language/variables.h"

#include <algorithm>

namespace ling::python {

namespace {

bool isTopLevel(const ling::Module& module) { return module.name().view().find(u'.') == std::u16string_view::npos; }

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

/// Calls `bind` with each module of the host until one has a problem.
template <class Bind>
ling::Any forEachModule(Bind&& bind) {
    for (const ling::Any& item : platform::itemsOf(ling::modules())) {
        const ling::Result<ling::Module> module = ling::Module::cast(item);
        if (!module)
            continue;
        if (ling::Any problem = bind(*module); !problem.isNone())
            return problem;
    }
    return {};
}

}  // namespace

ling::Any bindModules(PyObject* target) {
    return forEachModule([target](const ling::Module& module) {
        return isTopLevel(module) ? bindVariable(target, module.name(), module) : ling::Any();
    });
}

ling::Any mergeNamespace(PyObject* target) {
    PyRef fresh = PyRef::steal(PyDict_New());
    if (!fresh)
        return takePythonError();
    ling::Any problem = forEachModule([&fresh](const ling::Module& module) {
        return bindsMembers(module) ? bindMembers(fresh.get(), module) : ling::Any();
    });
    if (problem.isNone())
        problem = bindModules(fresh.get());
    if (problem.isNone() && PyDict_Merge(target, fresh.get(), 1) != 0)
        problem = takePythonError();
    return problem;
}

}  // namespace ling::python
