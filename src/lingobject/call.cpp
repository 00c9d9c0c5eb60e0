#include "lingobject/call.h"

#include "host/py_ref.h"
#include "ling/comparison.h"
#include "ling/function.h"
#include "ling/hash_containers.h"
#include "lingobject/instance.h"
#include "lingobject/slot_result.h"

#include <vector>

namespace ling::python {

namespace {

/// Positional arguments, converted: on the stack when they are few.
class PositionalArguments {
public:
    /// False with the Python error set when one leaves an error pending.
    bool take(PyObject* tuple) {
        count_ = static_cast<std::size_t>(PyTuple_GET_SIZE(tuple));
        if (count_ > kSmall)
            large_.resize(count_);
        for (std::size_t i = 0; i < count_; ++i)
            if (!takeArgument(PyTuple_GET_ITEM(tuple, static_cast<Py_ssize_t>(i)), items()[i]))
                return false;
        return true;
    }
    std::span<const ling::Any> view() { return {items(), count_}; }

private:
    static constexpr std::size_t kSmall = 4;
    ling::Any* items() { return count_ > kSmall ? large_.data() : small_; }

    ling::Any small_[kSmall];
    std::vector<ling::Any> large_;
    std::size_t count_ = 0;
};

using NamedArguments = std::vector<std::pair<ling::Any, ling::Any>>;

/// Gathers the pairs that the keyword mapping's `items` gives, in its order.
bool takeKeywords(PyObject* keywords, NamedArguments& named) {
    PyRef items = PyRef::steal(PyMapping_Items(keywords));
    if (!items)
        return false;
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(items.get()); ++i) {
        PyObject* pair = PyList_GET_ITEM(items.get(), i);
        ling::Any key;
        ling::Any value;
        if (!takeArgument(PyTuple_GET_ITEM(pair, 0), key) || !takeArgument(PyTuple_GET_ITEM(pair, 1), value))
            return false;
        named.emplace_back(std::move(key), std::move(value));
    }
    return true;
}

}  // namespace

// The interpreter lock is held by the caller, as in every slot. Code that the call runs may take it again.
PyObject* call(PyObject* self, PyObject* arguments, PyObject* keywords) {
    const Receiver receiver(self);  // The caller keeps the wrapper alive, and that its value.
    const ling::Any& value = *receiver;
    if (raisesItself(value))
        return nullptr;
    if (!value.is(ling::Kind::Function) && !ling::internal::is_instance<ling::I_Invokable_Generic>(value)) {
        const ling::String shown = ling::display(value);
        return raise(PyExc_RuntimeError, ling::String(u"Non-callable object: ") + shown);
    }
    const auto& invokable = ling::unchecked<ling::I_Invokable_Generic>(value);
    NamedArguments named;
    PositionalArguments positional;
    if ((keywords != nullptr && !takeKeywords(keywords, named)) || !positional.take(arguments))
        return nullptr;
    if (named.empty())
        return giveResult(invokable.invoke(positional.view()));
    // Positions come first; names fill what they leave open.
    return giveResult(invokable.invokeWith(positional.view(), ling::Map_Generic(named)));
}

}  // namespace ling::python
