#include "proxies/python_exception.h"

#include "bridge/convert.h"
#include "bridge/errors.h"
#include "host/entry.h"
#include "host/error_scope.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/class_builder.h"
#include "ling/extension.h"
#include "proxies/method_names.h"
#include "proxies/python_proxy.h"

namespace ling::python {

namespace {

/// `object` as text; empty when it has none that `ling` can hold. For use under an `ErrorScope`.
ling::String shownText(PyObject* object) {
    PyRef text = PyRef::steal(object != nullptr ? PyObject_Str(object) : nullptr);
    return ling::String::cast(toLing(text.get())).valueOr(ling::String());
}

ling::String className(const ling::Any& self) {
    PythonEntry entry;
    const ErrorScope scope;
    PyObject* exception = PythonProxy::pythonObject(self);
    PyRef name = PyRef::steal(exception != nullptr ? PyType_GetFullyQualifiedName(Py_TYPE(exception)) : nullptr);
    return name ? shownText(name.get()) : ling::String();
}

ling::String traceback(const ling::Any& self) {
    PythonEntry entry;
    const ErrorScope scope;
    PyObject* exception = PythonProxy::pythonObject(self);
    return exception != nullptr ? formattedException(exception) : ling::String();
}

ling::List_Generic notes(const ling::Any& self) {
    PythonEntry entry;
    const ErrorScope scope;
    ling::List_Generic all = ling::List_Generic::empty();
    PyObject* exception = PythonProxy::pythonObject(self);
    PyRef given = PyRef::steal(exception != nullptr ? attribute(exception, names::notes) : nullptr);
    PyRef items = PyRef::steal(given && PyList_Check(given.get()) ? PyList_AsTuple(given.get()) : nullptr);
    for (Py_ssize_t i = 0; items && i < PyTuple_GET_SIZE(items.get()); ++i) {
        all.append(shownText(PyTuple_GET_ITEM(items.get(), i)));
        forgetError();
    }
    return all;
}

ling::Class_Generic makeClass() {
    using ling::internal::property_builder;
    return ling::internal::defclass_impl("PythonException", "ling.python")
        .parent(PythonProxy::getClass())
        .doc("A Python exception that an error came from.")
        .property("className", property_builder().getter(&className).doc("The qualified name of its Python class."))
        .property("traceback", property_builder().getter(&traceback).doc("The text that Python shows for it."))
        .property("notes", property_builder().getter(&notes).doc("The notes that were added to it, as texts."))
        .build();
}

const bool classIsQueued =
    (ling::internal::add_init_handler(ling::InitLevel::Classes, [] { (void)PythonException::getClass(); }), true);

}  // namespace

const ling::Class_Generic& PythonException::getClass() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(makeClass());
    return cls;
}

}  // namespace ling::python
