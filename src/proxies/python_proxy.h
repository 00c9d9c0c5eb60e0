#pragma once

#include <Python.h>

#include "ling/any.h"
#include "ling/class.h"
#include "ling/string.h"

#include <cstdint>
#include <span>

namespace ling::python {

/// Which class of proxy an object gets: what `ling` code can do with it.
enum class ProxyClass : std::uint8_t {
    Object,    ///< `PythonProxy`: members, calls, comparison.
    Iterator,  ///< `PythonProxyIterator`: what `PyIter_Next` accepts.
    Iterable,  ///< `PythonProxyIterable`: anything with `__iter__`.
    Sequence,  ///< `PythonProxySequence`
    Mapping,   ///< `PythonProxyMapping`
    Set,       ///< `PythonProxySet`
};

/// The `ling` object that stands for a Python object. It keeps the object alive, and gives it back as the same object.
/// Every specialisation derives from it and holds its object in the same field.
class PythonProxy : public ling::Any {
public:
    /// A new proxy that holds a reference of its own to `object`, or an error result. The class of each kind is built
    /// on first use. Does not look at the object, runs no Python code and leaves a pending error alone. Needs the
    /// interpreter lock.
    static ling::Any create(ProxyClass kind, PyObject* object);

    /// The held object, borrowed for as long as the proxy lives, or null when it holds none or `proxy` is no proxy.
    /// Needs no lock.
    static PyObject* pythonObject(const ling::Any& proxy) noexcept;

    /// Calls the method `methodName` of the held object by position.
    ///
    /// Returns  the result as a `ling` value, or an error result: "The object is null.", "The method is missing: {},
    ///          target object: {}.", "Unable to convert an argument: {}.", or what the call raised.
    /// Lock     takes the interpreter lock itself.
    static ling::Any callPythonMethod(const ling::Any& self, const char* methodName,
                                      std::span<const ling::Any> arguments);

    static const ling::Class_Generic& getClass();
    static ling::Type getType();
};

/// The value is a proxy of any of the classes above, or of one derived from them. Needs no lock.
bool isPythonProxy(const ling::Any& value) noexcept;

}  // namespace ling::python
