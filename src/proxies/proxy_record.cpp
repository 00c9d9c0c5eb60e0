#include "proxies/proxy_record.h"

#include "host/boxed_object.h"
#include "host/error_scope.h"
#include "host/gil_guard.h"
#include "proxies/python_proxy.h"

namespace ling::python {

void dropOnAnyThread(PyObject* owned) {
    if (owned == nullptr)
        return;
    if (GilGuard gil = GilGuard::ifAlive()) {
        const ErrorScope scope;
        Py_DECREF(owned);
    }
}

void ProxyRecord::hold(PyObject* object) { Py_XDECREF(object_.exchange(Py_XNewRef(object))); }

bool ProxyRecord::isObjectField(std::size_t position) const {
    return static_cast<std::int64_t>(position) == ownClass()->findField(PythonProxy::$_pyobj);
}

ling::Any ProxyRecord::field(std::size_t position) const {
    if (!isObjectField(position))
        return object_value_object::field(position);
    PyObject* held = pythonObject();
    return held == nullptr ? ling::Any() : ling::Any(BoxedObject(held));
}

void ProxyRecord::setField(std::size_t position, ling::Any value) {
    if (!isObjectField(position))
        return object_value_object::setField(position, std::move(value));
    if (GilGuard gil = GilGuard::ifAlive()) {
        const ErrorScope scope;  // What was held before may end.
        hold(boxedObject(value));
    }
}

}  // namespace ling::python
