#include "language/scope.h"

#include "bridge/convert.h"
#include "host/py_ref.h"
#include "language/builtins.h"
#include "language/evaluation.h"
#include "language/namespace.h"
#include "language/variables.h"

namespace ling::python {

namespace {

/// The name of a module that is run and not imported, so that what is defined in a scope has one.
constexpr const char* kModuleName = "__main__";

ling::Any runIn(const ling::Any& scope, const Name& function, const ling::String& code) {
    PyRef names = PyRef::steal(toPython(scope));
    if (!names)
        return takePythonError();
    if (!PyDict_Check(names.get()))
        return platform::failure(
            ling::String(u"A scope is a dictionary of Python, not {}.").arg(platform::brief(scope)));
    return takeResult(callBuiltin(function, code, names.get(), names.get()).release());
}

}  // namespace

ling::Any makeScope() {
    if (ling::Any problem = prepareEvaluation(); !problem.isNone())
        return problem;
    const PythonEntry entry;
    PyRef names = PyRef::steal(PyDict_New());
    if (!names)
        return takePythonError();
    ling::Any problem = mergeNamespace(names.get());
    if (problem.isNone())
        problem = bindVariable(names.get(), u"__name__", ling::String(kModuleName));
    return problem.isNone() ? takeResult(names.release()) : problem;
}

ling::Any evaluateIn(const ling::Any& scope, const ling::String& code, double limit) {
    return evaluateWith(limit, [&] { return runIn(scope, names::exec, code); });
}

ling::Any evaluateExpressionIn(const ling::Any& scope, const ling::String& code, double limit) {
    return evaluateWith(limit, [&] { return runIn(scope, names::eval, code); });
}

}  // namespace ling::python
