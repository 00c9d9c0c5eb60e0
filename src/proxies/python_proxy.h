#pragma once

#include <Python.h>

#include "host/names.h"
#include "ling/any.h"
#include "ling/class.h"

#include <cstdint>
#include <initializer_list>
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
/// Every specialisation derives from it and holds its object in the same field. Many proxies may hold one object; none
/// is ever pointed at another.
class PythonProxy : public ling::Any {
public:
    /// A new proxy that holds a reference of its own to `object`; throws `std::bad_alloc`. The class of each kind is
    /// built on first use. Does not look at the object, runs no Python code and leaves a pending error alone. Needs the
    /// interpreter lock.
    static ling::Any create(ProxyClass kind, PyObject* object);
    /// The same for a class of its own that derives from `PythonProxy`.
    static ling::Any create(const ling::Class_Generic& cls, PyObject* object);

    /// The held object, borrowed for as long as the proxy lives, or null when it holds none or `proxy` is no proxy.
    /// Needs no lock.
    static PyObject* pythonObject(const ling::Any& proxy) noexcept;

    /// Calls the method `name` of the held object by position; the one place that does so.
    ///
    /// Returns  the result as a `ling` value, or an error result: "The object is null.", "The method is missing: {},
    ///          target object: {}.", "Unable to convert an argument: {}.", or what the call raised.
    /// Lock     takes the interpreter lock itself, for the whole call.
    static ling::Any callPythonMethod(const ling::Any& self, const Name& name, std::span<const ling::Any> arguments);
    static ling::Any callPythonMethod(const ling::Any& self, const Name& name,
                                      std::initializer_list<ling::Any> arguments = {}) {
        return callPythonMethod(self, name, std::span<const ling::Any>(arguments.begin(), arguments.size()));
    }

    static const ling::Class_Generic& getClass();
    static ling::Type getType();

    /// The field that holds the object, as a boxed pointer: the box owns no reference, the proxy does.
    static const ling::field_ident_untyped $_pyobj;
};

/// The classes of the specialisations. Made on first use, kept for the process; making one runs no Python.
struct PythonProxyIterator {
    static const ling::Class_Generic& getClass();
};
struct PythonProxyIterable {
    static const ling::Class_Generic& getClass();
};
struct PythonProxySequence {
    static const ling::Class_Generic& getClass();
};
struct PythonProxyMapping {
    static const ling::Class_Generic& getClass();
};
struct PythonProxySet {
    static const ling::Class_Generic& getClass();
};

/// The value is a proxy of any of the classes above, or of one derived from them. Needs no lock.
bool isPythonProxy(const ling::Any& value) noexcept;

}  // namespace ling::python
