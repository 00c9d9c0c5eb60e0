#pragma once

#include <Python.h>

#include "host/py_ref.h"
#include "ling/any.h"

#include <map>
#include <optional>
#include <utility>

namespace ling::python {

/// One comparison of two Python objects that is under way on this thread, inside of others or outermost.
///
/// Comparing two containers of Python compares their items, up to three times, once for each operator that is asked;
/// items that hold `ling` containers with Python containers in them come back here. So a pair would be compared three
/// times at each level: for ever, with containers in themselves, and practically for ever from twenty levels on.
/// Deeper than a few levels each pair is therefore compared once for each outermost comparison. One that is met inside
/// of itself counts as equal there, as the runtime has it for its own containers.
///
/// Needs the interpreter lock, for as long as it lives.
class ComparisonScope {
public:
    ComparisonScope() noexcept;
    ~ComparisonScope();
    ComparisonScope(const ComparisonScope&) = delete;
    ComparisonScope& operator=(const ComparisonScope&) = delete;

    /// What comparing the two gave before, or equality for two that are being compared. No value for a new pair, which
    /// then counts as being compared.
    std::optional<ling::Any> findOrOpen(PyObject* left, PyObject* right);
    /// Notes the outcome for the pair.
    void close(PyObject* left, PyObject* right, const ling::Any& order);

private:
    struct Entry {
        PyRef left;  // Kept alive: the address of an object that is gone may become that of another.
        PyRef right;
        ling::Any order;
    };
    using Pairs = std::map<std::pair<PyObject*, PyObject*>, Entry>;
    struct State {
        int depth = 0;
        Pairs pairs;
    };
    static State& state() noexcept;

    bool isShallow() const noexcept { return depth_ <= kShallow; }

    static constexpr int kShallow = 3;
    const int depth_;
};

}  // namespace ling::python
