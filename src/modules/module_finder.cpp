#include "modules/module_finder.h"

#include "bridge/contained.h"
#include "bridge/text.h"
#include "host/cached_import.h"
#include "host/gil_guard.h"
#include "host/interruption.h"
#include "host/names.h"
#include "host/py_ref.h"
#include "ling/module.h"
#include "modules/host_module.h"
#include "modules/module_members.h"
#include "travel/rebuild.h"

#include <Python.h>

namespace ling::python {

namespace {

constinit CachedImport moduleSpec{"_frozen_importlib", "ModuleSpec"};
constinit const Name kName{"name"};
constexpr std::u16string_view kLanguageModule = u"ling.python";

/// The host's module of a Python name; none for what is no text.
ling::Module findModule(PyObject* name) {
    const ling::String text = PyUnicode_Check(name) ? textFromPython(name) : ling::String();
    forgetError();
    return ling::find_module(text);
}

/// The keywords of a module specification. "host" is where the modules are said to be from.
PyRef makeSpecKeywords(const ling::Module& module) {
    return PyRef::steal(
        Py_BuildValue("{s:s,s:O}", "origin", "host", "is_package", hasChildren(module) ? Py_True : Py_False));
}

PyObject* findSpec(PyObject* self, PyObject* arguments, PyObject* keywords) {
    static const char* const kKeywords[] = {"fullname", "path", "target", nullptr};
    PyObject* name = nullptr;
    PyObject* unused = nullptr;
    if (PyArg_ParseTupleAndKeywords(arguments, keywords, "O|OO:find_spec", const_cast<char**>(kKeywords), &name,
                                    &unused, &unused) == 0)
        return nullptr;
    const ling::Module module = findModule(name);
    if (module.isNone() || moduleSpec.get() == nullptr)
        Py_RETURN_NONE;
    PyRef positional = PyRef::steal(PyTuple_Pack(2, name, self));
    PyRef named = positional ? makeSpecKeywords(module) : PyRef();
    return named ? PyObject_Call(moduleSpec.get(), positional.get(), named.get()) : nullptr;
}

/// The language's own module has what pickles name, besides what it reads through to.
PyObject* makeModule(const ling::Module& module) {
    PyRef made = PyRef::steal(makeHostModule(module));
    const bool isComplete =
        made && (module.name().view() != kLanguageModule || addRebuilding(PyModule_GetDict(made.get())));
    return isComplete ? made.release() : nullptr;
}

PyObject* createModule(PyObject*, PyObject* spec) {
    PyRef name = PyRef::steal(attribute(spec, kName));
    if (!name)
        return nullptr;
    const ling::Module module = findModule(name.get());
    if (!module.isNone())
        return makeModule(module);
    PyRef message = PyRef::steal(PyUnicode_FromFormat("the host has no module %R", name.get()));
    if (message)
        PyErr_SetImportError(message.get(), name.get(), nullptr);
    return nullptr;
}

/// Nothing is left to do after a module was made, nor when it is reloaded; and there is no code to look at.
PyObject* doNothing(PyObject*, PyObject*) { Py_RETURN_NONE; }

PyObject* isPackage(PyObject*, PyObject* name) {
    const ling::Module module = findModule(name);
    return PyBool_FromLong(!module.isNone() && hasChildren(module));
}

PyCFunction withKeywords(PyCFunctionWithKeywords function) {
    return reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(function));
}

PyMethodDef kMethods[] = {
    {"find_spec", withKeywords(contained<findSpec>), METH_VARARGS | METH_KEYWORDS,
     "Finds a module of the host by its name."},
    {"create_module", contained<createModule>, METH_O, "Makes the Python module that reads through to the host's."},
    {"exec_module", doNothing, METH_O, "Does nothing: a module of the host is complete when it is made."},
    {"get_code", doNothing, METH_O, "None: there is no Python code."},
    {"get_source", doNothing, METH_O, "None: there is no Python source."},
    {"is_package", contained<isPackage>, METH_O, "Whether there are modules below the host's module."},
    {},
};

PyTypeObject makeTypeObject() {
    PyTypeObject type{};
    Py_SET_REFCNT(reinterpret_cast<PyObject*>(&type), 1);
    type.tp_name = "HostModuleFinder";
    type.tp_doc = "Finds and loads the modules of the host.";
    type.tp_basicsize = sizeof(PyObject);
    type.tp_flags = Py_TPFLAGS_DEFAULT;
    type.tp_methods = kMethods;
    return type;
}

}  // namespace

void installModuleFinder() {
    static PyTypeObject type = makeTypeObject();
    const GilGuard gil = GilGuard::ifAlive();
    PyObject* finders = gil ? PySys_GetObject("meta_path") : nullptr;
    if (finders == nullptr || !PyList_Check(finders) || PyType_Ready(&type) != 0)
        return;
    PyRef finder = PyRef::steal(PyObject_New(PyObject, &type));
    if (!finder || PyList_Append(finders, finder.get()) != 0)
        forgetError();
}

}  // namespace ling::python
