#include "travel/exceptions.h"

#include "bridge/contained.h"
#include "bridge/convert.h"
#include "bridge/errors.h"
#include "bridge/text.h"
#include "bridge/travel.h"
#include "host/names.h"
#include "host/py_ref.h"
#include "ling/class.h"
#include "ling/error.h"
#include "lingobject/slot_result.h"
#include "lingobject/wrapper.h"
#include "travel/dotted_name.h"
#include "travel/rebuild.h"

namespace ling::python {

namespace {

constinit const Name kModule{"__module__"};
constinit const Name kName{"__name__"};
constinit const Name kLing{"ling"};
constinit const Name kReduce{"__reduce__"};
constinit const Name kDictionary{"__dict__"};

/// The dotted name of the error class that an exception class stands for; it is the exception class's own.
PyRef errorClassName(PyTypeObject* type) {
    PyObject* object = reinterpret_cast<PyObject*>(type);
    PyRef module = PyRef::steal(attribute(object, kModule));
    PyRef name = PyRef::steal(module ? attribute(object, kName) : nullptr);
    return PyRef::steal(name ? PyUnicode_FromFormat("%S.%S", module.get(), name.get()) : nullptr);
}

/// The Python class of exceptions for the error class of that name, borrowed, or null with the Python error set.
PyObject* exceptionClassNamed(PyObject* name) {
    const ling::Any found = findByDottedName(textFromPython(name));
    const ling::Result<ling::Class_Generic> cls = ling::Class_Generic::cast(found);
    if (cls && cls->isAncestor(ling::Error::getClass()))
        return exceptionClassRaisedFor(*cls);
    PyErr_Format(PyExc_AttributeError, "the host has no error class called '%U'", name);
    return nullptr;
}

/// The text of the error that the exception was raised for, or None for one that a script has made itself.
PyRef messageIn(PyObject* exception) {
    PyRef carried = PyRef::steal(attribute(exception, kLing));
    const ling::Any* held = carried && isLingObject(carried.get()) ? heldValue(carried.get()) : nullptr;
    const bool isError = held != nullptr && ling::internal::is_instance<ling::Error>(*held);
    if (!carried)
        return {};
    return isError ? PyRef::steal(textToPython(messageOf(*held))) : PyRef::borrow(Py_None);
}

/// What else was put on the exception, its notes for one.
PyRef attributesOf(PyObject* exception) {
    PyRef dictionary = PyRef::steal(attribute(exception, kDictionary));
    PyRef copy = PyRef::steal(dictionary && PyDict_Check(dictionary.get()) ? PyDict_Copy(dictionary.get()) : nullptr);
    if (copy && PyDict_Pop(copy.get(), kLing.object(), nullptr) < 0)
        return {};
    return copy;
}

/// One class alone has each name: what derives from it is reduced as Python reduces exceptions.
PyObject* reduceDerived(PyObject* exception) {
    return PyObject_CallMethodOneArg(PyExc_BaseException, kReduce.object(), exception);
}

PyObject* reduce(PyObject*, PyObject* arguments) {
    PyObject* exception = nullptr;
    int protocol = 0;
    if (PyArg_ParseTuple(arguments, "Oi:__reduce_ex__", &exception, &protocol) == 0)
        return nullptr;
    PyRef name = errorClassName(Py_TYPE(exception));
    PyObject* cls = name ? exceptionClassNamed(name.get()) : nullptr;
    if (cls != reinterpret_cast<PyObject*>(Py_TYPE(exception))) {
        if (mustRaiseInterruption())
            return nullptr;
        forgetError();
        return reduceDerived(exception);
    }
    PyRef message = messageIn(exception);
    PyRef attributes = message ? attributesOf(exception) : PyRef();
    PyObject* make = attributes ? exceptionFunction() : nullptr;
    return make != nullptr ? Py_BuildValue("O(OO)O", make, name.get(), message.get(), attributes.get()) : nullptr;
}

PyMethodDef kReduceDefinition = {"__reduce_ex__", contained<reduce>, METH_VARARGS, "By the name of the error class."};

}  // namespace

PyObject* makeExceptionReducer() {
    PyRef function = PyRef::steal(PyCFunction_New(&kReduceDefinition, nullptr));
    return function ? PyInstanceMethod_New(function.get()) : nullptr;
}

PyObject* makeException(PyObject* name, PyObject* message) {
    PyObject* exceptionClass = exceptionClassNamed(name);
    if (exceptionClass == nullptr || message == Py_None)
        return exceptionClass != nullptr ? PyObject_CallNoArgs(exceptionClass) : nullptr;
    const ling::Any cls = findByDottedName(textFromPython(name));
    const ling::String text = PyUnicode_Check(message) ? textFromPython(message) : ling::String();
    Py_XDECREF(toPythonLocked(ling::Error(ling::unchecked<ling::Class_Generic>(cls), text)));  // Raises it.
    return PyErr_GetRaisedException();
}

}  // namespace ling::python
