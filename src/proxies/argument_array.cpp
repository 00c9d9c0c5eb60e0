#include "proxies/argument_array.h"

#include "bridge/convert.h"
#include "host/interruption.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "host/stack_room.h"

namespace ling::python {

ArgumentArray::ArgumentArray(std::size_t capacity)
    : large_(capacity > kSmall ? std::make_unique<PyObject*[]>(capacity + 1) : nullptr),
      items_((large_ == nullptr ? small_ : large_.get()) + 1) {}

ArgumentArray::~ArgumentArray() {
    while (count_ != 0)
        Py_DECREF(items_[--count_]);
}

bool ArgumentArray::add(const ling::Any& value) {
    PyObject* converted = toPythonLocked(value);
    if (converted == nullptr)
        return false;
    items_[count_++] = converted;
    return true;
}

/// False with the Python error set.
bool ArgumentArray::mayCall() {
    if (isInterruptionHeld() && raiseHeldInterruption())
        return false;
    if (hasStackRoom())
        return true;
    PyErr_SetString(PyExc_RecursionError, "The call is nested too deeply.");
    return false;
}

PyObject* ArgumentArray::callWith(PyObject* receiver, PyObject* function) const {
    if (!mayCall())
        return nullptr;
    items_[-1] = receiver;
    return PyObject_Vectorcall(function, items_ - 1, count_ + 1, nullptr);
}

PyObject* ArgumentArray::call(PyObject* callable, PyObject* keywords) const {
    if (!mayCall())
        return nullptr;
    const std::size_t flags = count_ | PY_VECTORCALL_ARGUMENTS_OFFSET;
    return keywords == nullptr ? PyObject_Vectorcall(callable, items_, flags, nullptr)
                               : PyObject_VectorcallDict(callable, items_, flags, keywords);
}

namespace {

/// Whether the argument is given to Python as it is.
bool isSettled(const ling::Any& argument) {
    return !argument.isHeap() ||
           !(argument.object()->isErrorResult() || argument.is(ling::Kind::Lazy) || argument.is(ling::Kind::External));
}

/// The argument as it is given to Python, or the error result that ends the call before it begins.
ling::Any settled(const ling::Any& argument) { return ling::internal::result_unwrap_lazy(argument); }

/// None, or the error that ends the call.
ling::Any addAll(ArgumentArray& converted, std::span<const ling::Any> positional) {
    for (const ling::Any& argument : positional) {
        if (isSettled(argument)) {
            if (!converted.add(argument))
                return cannotConvert(argument);
            continue;
        }
        const ling::Any value = settled(argument);
        if (ling::internal::is_error_result(value))
            return value;
        if (!converted.add(value))
            return cannotConvert(value);
    }
    return {};
}

/// Adds one name. None, or the error that ends the call.
ling::Any addKeyword(PyObject* keywords, const ling::NamedArgument& argument) {
    const ling::Any value = settled(argument.value);
    if (ling::internal::is_error_result(value))
        return value;
    PyRef name = PyRef::steal(toPythonLocked(argument.name));
    PyRef converted = name ? PyRef::steal(toPythonLocked(value)) : PyRef();
    if (!converted)
        return cannotConvert(name ? value : argument.name);
    const Py_ssize_t before = PyDict_GET_SIZE(keywords);
    if (PyDict_SetItem(keywords, name.get(), converted.get()) != 0)
        return takeResult(nullptr);
    if (PyDict_GET_SIZE(keywords) == before)
        return platform::failure(ling::String(u"Repeated argument '{}'.").arg(argument.name));
    return {};
}

/// The keywords of a call, or null with an error in `problem`.
PyRef makeKeywords(std::span<const ling::NamedArgument> named, ling::Any& problem) {
    PyRef keywords = PyRef::steal(PyDict_New());
    if (!keywords)
        problem = takeResult(nullptr);
    for (std::size_t i = 0; keywords && i < named.size(); ++i) {
        problem = addKeyword(keywords.get(), named[i]);
        if (!problem.isNone())
            return {};
    }
    return keywords;
}

}  // namespace

ling::Any callPython(PyObject* callable, std::span<const ling::Any> positional,
                     std::span<const ling::NamedArgument> named) {
    ArgumentArray converted(positional.size());
    ling::Any problem = addAll(converted, positional);
    if (!problem.isNone())
        return problem;
    if (named.empty())
        return takeResult(converted.call(callable));
    PyRef keywords = makeKeywords(named, problem);
    return problem.isNone() ? takeResult(converted.call(callable, keywords.get())) : problem;
}

ling::Any callPythonWith(PyObject* receiver, PyObject* function, std::span<const ling::Any> positional) {
    ArgumentArray converted(positional.size());
    ling::Any problem = addAll(converted, positional);
    return problem.isNone() ? takeResult(converted.callWith(receiver, function)) : problem;
}

ling::Any cannotConvert(const ling::Any& argument) {
    forgetError();
    return platform::failure(ling::String(u"Unable to convert an argument: {}.").arg(argument));
}

}  // namespace ling::python
