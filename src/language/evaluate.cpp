#include "language/evaluate.h"

#include "bridge/convert.h"
#include "host/platform.h"
#include "language/builtins.h"
#include "language/call_state.h"
#include "language/code_wrap.h"
#include "language/evaluation.h"
#include "language/namespace.h"
#include "language/variables.h"

namespace ling::python {

namespace {

/// The first problem that reading maps met.
ling::Any problemOf(std::initializer_list<const ling::Result<Variables>*> maps) {
    for (const ling::Result<Variables>* map : maps) {
        if (!*map)
            return map->error();
    }
    return {};
}

/// The dictionaries that code runs in. The variables of the caller are among the globals: functions that the code
/// defines see them there.
struct Dictionaries {
    PyRef globals = PyRef::steal(PyDict_New());
    PyRef locals = PyRef::steal(PyDict_New());
};

/// None, or an error result.
ling::Any fill(const Dictionaries& in, std::initializer_list<const Variables*> layers) {
    if (!in.globals || !in.locals)
        return takePythonError();
    ling::Any problem = mergeNamespace(in.globals.get());
    for (const Variables* layer : layers) {
        if (!problem.isNone())
            return problem;
        problem = bindVariables(in.globals.get(), *layer);
    }
    return problem;
}

/// Runs the wrapped code, and answers what it returned.
ling::Any runMethod(const ling::String& text, const Dictionaries& in, const ling::I_Map_Generic& outLocals) {
    PyRef capsule;
    CallState* state = CallState::install(in.locals.get(), outLocals, capsule);
    if (state == nullptr)
        return takePythonError();
    const bool hasRun = static_cast<bool>(callBuiltin(names::exec, text, in.globals.get(), in.locals.get()));
    const ling::Any error = hasRun ? ling::Any() : takePythonError();
    const ling::Any result = state->close();
    return hasRun ? result : error;
}

/// The method with its variables, within a run.
ling::Any readAndRunMethod(const ling::Any& self, const ling::String& code, const ling::I_Map_Generic& locals,
                           const ling::I_Map_Generic& globals, const ling::I_Map_Generic& outLocals) {
    const ling::Result<Variables> local = readVariables(locals);
    const ling::Result<Variables> global = readVariables(globals);
    const ling::Result<Variables> out = readVariables(outLocals);
    if (ling::Any problem = problemOf({&local, &global, &out}); !problem.isNone())
        return problem;
    const Dictionaries dictionaries;
    if (ling::Any problem = fill(dictionaries, {&*global, &*out, &*local}); !problem.isNone())
        return problem;
    if (ling::Any problem = bindVariable(dictionaries.globals.get(), ling::String(u"self"), self); !problem.isNone())
        return problem;
    return runMethod(wrapMethod(code, local->names), dictionaries, outLocals);
}

ling::Any readAndRunExpression(const ling::String& code, const ling::I_Map_Generic& locals,
                               const ling::I_Map_Generic& globals) {
    const ling::Result<Variables> global = readVariables(globals);
    const ling::Result<Variables> local = readVariables(locals);
    if (ling::Any problem = problemOf({&global, &local}); !problem.isNone())
        return problem;
    const Dictionaries dictionaries;
    if (ling::Any problem = fill(dictionaries, {&*global, &*local}); !problem.isNone())
        return problem;
    PyRef result = callBuiltin(names::eval, code, dictionaries.globals.get(), dictionaries.locals.get());
    return takeResult(result.release());
}

}  // namespace

ling::Any evaluate(const ling::String& code, const ling::I_Map_Generic& locals, const ling::I_Map_Generic& globals,
                   const ling::I_Map_Generic& outLocals, double limit) {
    return evaluateMethod(ling::Any(), code, locals, globals, outLocals, limit);
}

ling::Any evaluateMethod(const ling::Any& self, const ling::String& code, const ling::I_Map_Generic& locals,
                         const ling::I_Map_Generic& globals, const ling::I_Map_Generic& outLocals, double limit) {
    return evaluateWith(limit, [&] { return readAndRunMethod(self, code, locals, globals, outLocals); });
}

ling::Any evaluateExpression(const ling::String& code, const ling::I_Map_Generic& locals,
                             const ling::I_Map_Generic& globals) {
    return evaluateWith(kNoLimit, [&] { return readAndRunExpression(code, locals, globals); });
}

}  // namespace ling::python
