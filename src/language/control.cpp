#include "language/control.h"

#include "language/call_forms.h"
#include "language/evaluation.h"
#include "language/output.h"
#include "language/scope.h"
#include "ling/list.h"

#include <optional>

namespace ling::python {

namespace {

double limitOf(std::optional<double> seconds) { return seconds.value_or(kNoLimit); }

/// The function may be anybody's: the interpreter lock is held before and after it, not while it runs.
ling::Any callWithin(double seconds, const ling::I_Invokable_Generic& function, const ling::List_Generic& arguments) {
    const Run::Time start = std::chrono::steady_clock::now();
    if (ling::Any problem = prepareEvaluation(); !problem.isNone())
        return problem;
    std::optional<Run> run;
    {
        const PythonEntry entry;
        run.emplace(seconds, start);
    }
    ling::Any outcome = function.invoke(platform::itemsOf(arguments));
    const PythonEntry entry;
    return run->finish(std::move(outcome));
}

void addStopping(ling::internal::class_builder& builder) {
    builder
        .classMethod(
            "interrupt", "", [] { return interruptRuns(); },
            "Ends the evaluations that are running, and answers on how many threads they are.")
        .classMethod(ling::method_ident_untyped("evaluateWithin"), makeEvaluateWithin("evaluateWithin"))
        .classMethod("callWithin", {"seconds", "function", {"arguments", ling::List_Generic::empty()}}, &callWithin,
                     "Calls a function, and ends its Python code after so many seconds.");
}

void addScopes(ling::internal::class_builder& builder) {
    const auto run = [](const ling::Any& scope, const ling::String& code, std::optional<double> seconds) {
        return evaluateIn(scope, code, limitOf(seconds));
    };
    const auto look = [](const ling::Any& scope, const ling::String& code, std::optional<double> seconds) {
        return evaluateExpressionIn(scope, code, limitOf(seconds));
    };
    builder.classMethod("makeScope", "", &makeScope, "Makes a scope that lasts: a dictionary of names.")
        .classMethod("evaluateIn", {"scope", "code", {"seconds", ling::None()}}, run,
                     "Evaluates statements in a scope.")
        .classMethod("evaluateExpressionIn", {"scope", "code", {"seconds", ling::None()}}, look,
                     "Evaluates an expression in a scope.");
}

}  // namespace

void addControl(ling::internal::class_builder& builder) {
    addStopping(builder);
    addScopes(builder);
    builder
        .classMethod("takeOutput", "output", &takeOutput,
                     "Has what is printed given to a function of the text and the name of the stream, or to none.")
        .classMethod(
            "finish", "", &finish,
            "Waits for threads, runs exit functions and writes out what was printed, before the process ends.");
}

}  // namespace ling::python
