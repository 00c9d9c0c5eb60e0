#include "language/call_forms.h"

#include "host/platform.h"
#include "language/evaluate.h"
#include "ling/comparison.h"

namespace ling::python {

namespace {

/// The value of maps that are left out. One for all, so it must stay empty: it is never written to.
const ling::Map_Generic& noVariables() {
    static const ling::Map_Generic& map = *new ling::Map_Generic;
    return map;
}

/// The map to write to: a new one in the place of the default.
ling::I_Map_Generic writable(const ling::I_Map_Generic& outLocals) {
    const ling::Any map = ling::is_same(outLocals, noVariables()) ? platform::makeMap() : outLocals;
    return ling::unchecked<ling::I_Map_Generic>(map);
}

ling::FunctionCL_Generic withDefaults(const ling::FunctionCL_Generic& function, std::size_t count) {
    const std::vector<ling::Any> defaults(count, noVariables());
    (void)function.setParameterDefaults(defaults);
    return function;
}

}  // namespace

ling::FunctionCL_Generic makeEvaluate(const char* name) {
    const auto code = [](const ling::String& source, const ling::I_Map_Generic& locals,
                         const ling::I_Map_Generic& globals, const ling::I_Map_Generic& outLocals) {
        return evaluate(source, locals, globals, writable(outLocals));
    };
    return withDefaults(
        platform::makeFunction(name, "code, locals, globals, outLocals", code, "Evaluates Python code."), 3);
}

ling::FunctionCL_Generic makeEvaluateWithin(const char* name) {
    const auto code = [](double seconds, const ling::String& source, const ling::I_Map_Generic& locals,
                         const ling::I_Map_Generic& globals, const ling::I_Map_Generic& outLocals) {
        return evaluate(source, locals, globals, writable(outLocals), seconds);
    };
    return withDefaults(platform::makeFunction(name, "seconds, code, locals, globals, outLocals", code,
                                               "Evaluates Python code, and ends it after so many seconds."),
                        3);
}

ling::FunctionCL_Generic makeEvaluateExpression(const char* name) {
    return withDefaults(
        platform::makeFunction(name, "code, locals, globals", &evaluateExpression, "Evaluates Python expression."), 2);
}

ling::FunctionCL_Generic makeEvaluateMethod(const char* name) {
    const auto code = [](const ling::Any& self, const ling::String& source, const ling::I_Map_Generic& locals,
                         const ling::I_Map_Generic& globals, const ling::I_Map_Generic& outLocals) {
        return evaluateMethod(self, source, locals, globals, writable(outLocals));
    };
    return withDefaults(
        platform::makeFunction(name, "self, code, locals, globals, outLocals", code, "Evaluates Python method."), 3);
}

}  // namespace ling::python
