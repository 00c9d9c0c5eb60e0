#include "proxies/comparison_scope.h"

namespace ling::python {

ComparisonScope::State& ComparisonScope::state() noexcept {
    thread_local State state;
    return state;
}

ComparisonScope::ComparisonScope() noexcept : depth_(++state().depth) {}

ComparisonScope::~ComparisonScope() {
    --state().depth;
    if (depth_ > 1 || state().pairs.empty())
        return;
    const Pairs finished = std::exchange(state().pairs, {});  // The end of an object may compare others.
}

std::optional<ling::Any> ComparisonScope::findOrOpen(PyObject* left, PyObject* right) {
    if (isShallow())
        return std::nullopt;
    const auto [found, isNew] = state().pairs.try_emplace({left, right});
    if (!isNew)
        return found->second.order;
    found->second = {PyRef::borrow(left), PyRef::borrow(right), 0};
    return std::nullopt;
}

void ComparisonScope::close(PyObject* left, PyObject* right, const ling::Any& order) {
    if (const auto found = state().pairs.find({left, right}); !isShallow() && found != state().pairs.end())
        found->second.order = order;
}

}  // namespace ling::python
