#include "lingobject/call.h"

#include "host/py_ref.h"
#include "ling/comparison.h"
#include "ling/function.h"
#include "ling/hash_containers.h"
#include "lingobject/instance.h"
#include "lingobject/slot_result.h"

#include <cstring>
#include <memory>
#include <vector>

namespace ling::python {

namespace {

/// Positional arguments, converted: on the stack when they are few. A receiver may go in front, which the caller keeps:
/// it is not counted.
class PositionalArguments {
public:
    explicit PositionalArguments(PyObject* tuple, const ling::Any* receiver = nullptr)
        : tuple_(tuple), first_(receiver != nullptr ? 1 : 0) {
        const std::size_t count = given() + first_;
        if (count > kSmall)
            large_ = std::make_unique<Place[]>(count);
        if (receiver != nullptr)
            std::memcpy(static_cast<void*>(items()), receiver, sizeof *receiver);
        count_ = first_;
    }
    PositionalArguments(const PositionalArguments&) = delete;
    PositionalArguments& operator=(const PositionalArguments&) = delete;
    ~PositionalArguments() { std::destroy(items() + first_, items() + count_); }

    /// False with the Python error set when one leaves an error pending.
    bool take() {
        for (std::size_t i = 0, given = this->given(); i < given; ++i) {
            PyObject* item = PyTuple_GET_ITEM(tuple_, static_cast<Py_ssize_t>(i));
            ling::Any* place = std::construct_at(items() + count_++);
            if (!takeArgument(item, *place))
                return false;
        }
        return true;
    }
    std::span<const ling::Any> view() noexcept { return {items(), count_}; }

private:
    struct alignas(ling::Any) Place {
        unsigned char bytes[sizeof(ling::Any)];
    };
    static constexpr std::size_t kSmall = 6;

    std::size_t given() const noexcept { return static_cast<std::size_t>(PyTuple_GET_SIZE(tuple_)); }
    ling::Any* items() noexcept { return reinterpret_cast<ling::Any*>(large_ ? large_.get() : small_); }

    PyObject* const tuple_;
    const std::size_t first_;
    std::size_t count_;
    std::unique_ptr<Place[]> large_;
    Place small_[kSmall];
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

bool isEmpty(PyObject* keywords) noexcept {
    return keywords == nullptr || (PyDict_CheckExact(keywords) && PyDict_GET_SIZE(keywords) == 0);
}

/// Calls a method that is bound to a wrapper. That is kept alive by the one that is called, and keeps its value.
PyObject* callMethod(const WrapperBlock::BoundMethod& bound, PyObject* arguments) {
    const ling::Any& receiver = valueOf(bound.receiver);
    ling::internal::object_value* const method = bound.method;
    PositionalArguments positional(arguments, &receiver);
    return positional.take() ? giveResult(method->invoke(positional.view())) : nullptr;
}

PyObject* callByPosition(const ling::I_Invokable_Generic& value, PyObject* arguments) {
    PositionalArguments positional(arguments);
    return positional.take() ? giveResult(value.invoke(positional.view())) : nullptr;
}

/// Positions come first; names fill what they leave open.
PyObject* callByName(const ling::I_Invokable_Generic& value, PyObject* arguments, PyObject* keywords) {
    NamedArguments named;
    PositionalArguments positional(arguments);
    if (!takeKeywords(keywords, named) || !positional.take())
        return nullptr;
    return giveResult(named.empty() ? value.invoke(positional.view())
                                    : value.invokeWith(positional.view(), ling::Map_Generic(named)));
}

}  // namespace

// The interpreter lock is held by the caller, as in every slot. Code that the call runs may take it again.
PyObject* call(PyObject* self, PyObject* arguments, PyObject* keywords) {
    const bool isByPosition = isEmpty(keywords);
    const WrapperBlock::BoundMethod* bound = boundMethodOf(self);
    if (bound != nullptr && isByPosition)
        return callMethod(*bound, arguments);
    const Receiver receiver(self);  // The caller keeps the wrapper alive, and that its value.
    const ling::Any& value = *receiver;
    if (receiver.isResolved() || !blockOf(self).facts->isPlainlyInvokable()) {
        if (raisesItself(value))
            return nullptr;
        if (!ling::internal::is_instance<ling::I_Invokable_Generic>(value)) {
            const ling::String shown = ling::display(value);
            return raise(PyExc_RuntimeError, ling::String(u"Non-callable object: ") + shown);
        }
    }
    const auto& invokable = ling::unchecked<ling::I_Invokable_Generic>(value);
    return isByPosition ? callByPosition(invokable, arguments) : callByName(invokable, arguments, keywords);
}

}  // namespace ling::python
