#include "modules/host_module.h"

#include "bridge/contained.h"
#include "bridge/convert.h"
#include "bridge/text.h"
#include "host/cached_import.h"
#include "host/names.h"
#include "host/py_ref.h"
#include "ling/members.h"
#include "lingobject/member_name.h"
#include "lingobject/wrapper.h"
#include "modules/module_members.h"

#include <utility>

namespace ling::python {

namespace {

constinit CachedImport isKeyword{"keyword", "iskeyword"};
constinit CachedImport importModule{"importlib", "import_module"};
constinit const Name kPathName{"__path__"};

/// What an instance has behind the parts of Python's module: the wrapper around the host's module, owned.
struct Parts {
    PyObject* host;
};

Parts& partsOf(PyObject* self) noexcept {
    return *reinterpret_cast<Parts*>(reinterpret_cast<char*>(self) + PyModule_Type.tp_basicsize);
}

const ling::Module& moduleOf(PyObject* self) noexcept {
    return ling::unchecked<ling::Module>(*heldValue(partsOf(self).host));
}

PyRef nameOf(PyObject* self) { return PyRef::steal(textToPython(moduleOf(self).name())); }

// Attributes.

/// Raises an `AttributeError` about one attribute of this module; always null.
PyObject* refuse(PyObject* self, PyObject* attribute, const char* format) {
    PyRef name = nameOf(self);
    if (name)
        PyErr_Format(PyExc_AttributeError, format, name.get(), attribute);
    return nullptr;
}

/// The module below this one as those get it who import it: one object, whichever way it is reached.
PyObject* importChild(PyObject* self, PyObject* name) {
    PyRef parent = nameOf(self);
    PyRef full = PyRef::steal(parent ? PyUnicode_FromFormat("%U.%U", parent.get(), name) : nullptr);
    return full ? PyImport_Import(full.get()) : nullptr;
}

PyObject* readThrough(PyObject* self, PyObject* name) {
    PyObject* found = nullptr;
    if (PyObject_GetOptionalAttr(partsOf(self).host, name, &found) < 0)
        return nullptr;
    if (found == nullptr)
        return refuse(self, name, "module '%U' has no attribute '%U'");
    if (!isLingObject(found) || !isChild(moduleOf(self), textFromPython(name), *heldValue(found)))
        return found;
    Py_DECREF(found);
    return importChild(self, name);
}

PyObject* lookUp(PyObject* self, PyObject* name) {
    if (!isText(name))
        return nullptr;
    if (isPrivateName(name))
        return PyObject_GenericGetAttr(self, name);
    PyObject* own = nullptr;
    if (PyDict_GetItemRef(PyModule_GetDict(self), name, &own) != 0)
        return own;
    return readThrough(self, name);
}

/// -1 with the Python error set.
int isSettable(PyObject* self, PyObject* name) {
    const LookupName id(name);
    if (id.get() == nullptr)
        return -1;
    const ling::Property property = ling::property_of(moduleOf(self), ling::property_ident_untyped(*id.get()));
    if (PyErr_Occurred() != nullptr)
        return -1;
    return !property.isNone() && !property.setter().isNone();
}

int remove(PyObject* self, PyObject* name) {
    const int isOwn = PyDict_Contains(PyModule_GetDict(self), name);
    if (isOwn == 0)
        (void)refuse(self, name, "module '%U' has no attribute '%U' of its own");
    return isOwn <= 0 ? -1 : PyObject_GenericSetAttr(self, name, nullptr);
}

int assign(PyObject* self, PyObject* name, PyObject* value) {
    if (!isText(name))
        return -1;
    if (isPrivateName(name))
        return PyObject_GenericSetAttr(self, name, value);
    if (value == nullptr)
        return remove(self, name);
    const int settable = isSettable(self, name);
    if (settable < 0)
        return -1;
    return settable != 0 ? PyObject_SetAttr(partsOf(self).host, name, value)
                         : PyObject_GenericSetAttr(self, name, value);
}

// What the module says about itself.

/// The names of all members, without repetition: a dictionary. Null with the Python error set.
PyRef memberNames(PyObject* self) {
    PyRef names = PyRef::steal(PyDict_New());
    for (const ling::String& member : memberNamesOf(moduleOf(self))) {
        PyRef name = PyRef::steal(names && !member.startsWith(u"_") ? textToPython(member) : nullptr);
        if (name ? PyDict_SetItem(names.get(), name.get(), Py_None) != 0 : PyErr_Occurred() != nullptr)
            return {};
    }
    return names;
}

PyObject* listBindable(PyObject* self) {
    PyRef names = memberNames(self);
    PyRef bindable = PyRef::steal(names ? PyList_New(0) : nullptr);
    PyObject* name = nullptr;
    for (Py_ssize_t position = 0; bindable && PyDict_Next(names.get(), &position, &name, nullptr) != 0;) {
        const int answer = isBindableName(name);
        if (answer < 0 || (answer > 0 && PyList_Append(bindable.get(), name) != 0))
            return nullptr;
    }
    return bindable.release();
}

/// `dir()`: what the host's module has, and what the Python module itself carries.
PyObject* listAll(PyObject* self, PyObject*) {
    PyRef names = memberNames(self);
    if (!names || PyDict_Merge(names.get(), PyModule_GetDict(self), 1) != 0)
        return nullptr;
    return PyDict_Keys(names.get());
}

PyObject* hostDoc(PyObject* self) { return textToPython(moduleOf(self).doc()); }

/// Where modules below this one are looked for: nowhere but in the host, so the list is empty.
PyObject* emptyPath(PyObject* self) {
    PyObject* name = kPathName.object();
    if (name == nullptr)
        return nullptr;
    if (!hasChildren(moduleOf(self)))
        return refuse(self, name, "module '%U' has no attribute '%U'");
    return PyList_New(0);
}

/// One attribute that the host's module answers as long as nobody has assigned it.
struct Computed {
    const char* name;
    PyObject* (*compute)(PyObject* self);
};

constexpr Computed kDoc{"__doc__", hostDoc};
constexpr Computed kAll{"__all__", listBindable};
constexpr Computed kPath{"__path__", emptyPath};

PyObject* readComputed(PyObject* self, void* closure) {
    const auto& computed = *static_cast<const Computed*>(closure);
    PyObject* own = nullptr;
    if (PyDict_GetItemStringRef(PyModule_GetDict(self), computed.name, &own) < 0)
        return nullptr;
    if (own != nullptr && own != Py_None)  // Every module begins with the documentation `None`.
        return own;
    Py_XDECREF(own);
    return computed.compute(self);
}

int writeComputed(PyObject* self, PyObject* value, void* closure) {
    const auto& computed = *static_cast<const Computed*>(closure);
    PyObject* own = PyModule_GetDict(self);
    return value != nullptr ? PyDict_SetItemString(own, computed.name, value)
                            : PyDict_DelItemString(own, computed.name);
}

constexpr PyGetSetDef rowOf(const Computed& computed, const char* doc) {
    return {computed.name, contained<readComputed>, writeComputed, doc, const_cast<Computed*>(&computed)};
}

PyGetSetDef kComputed[] = {
    rowOf(kDoc, "What the module is for."),
    rowOf(kAll, "The names that `import *` binds."),
    rowOf(kPath, "Present where there are modules below this one."),
    {},
};

/// Copied and pickled by name, as the one object of its name.
PyObject* reduce(PyObject* self, PyObject*) {
    PyRef name = nameOf(self);
    if (!name || importModule.get() == nullptr)
        return PyErr_Occurred() != nullptr ? nullptr : PyErr_NoMemory();
    return Py_BuildValue("O(O)", importModule.get(), name.get());
}

PyMethodDef kMethods[] = {
    {"__dir__", contained<listAll>, METH_NOARGS, "The names of all members."},
    {"__reduce__", contained<reduce>, METH_NOARGS, "By its name."},
    {},
};

// The type.

/// The wrapper goes last: dropping it may run any code.
void deallocate(PyObject* self) {
    PyObject_GC_UnTrack(self);
    PyRef host = PyRef::steal(std::exchange(partsOf(self).host, nullptr));
    PyModule_Type.tp_dealloc(self);
}

PyTypeObject makeTypeObject() {
    PyTypeObject type{};
    Py_SET_REFCNT(reinterpret_cast<PyObject*>(&type), 1);
    type.tp_name = "HostModule";
    type.tp_doc = "A module of the host.";
    type.tp_basicsize = PyModule_Type.tp_basicsize + static_cast<Py_ssize_t>(sizeof(Parts));
    // Made by the import system alone: an instance without a module of the host behind it would be of no use.
    type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION;
    type.tp_base = &PyModule_Type;
    type.tp_dealloc = deallocate;
    type.tp_getattro = contained<lookUp>;
    type.tp_setattro = contained<assign>;
    type.tp_methods = kMethods;
    type.tp_getset = kComputed;
    return type;
}

/// Null with the Python error set. Making it ready runs no Python code, and so does not give the lock up.
PyTypeObject* hostModuleType() {
    static constinit bool isReady = false;
    static PyTypeObject type = makeTypeObject();
    isReady = isReady || PyType_Ready(&type) == 0;
    return isReady ? &type : nullptr;
}

}  // namespace

int isBindableName(PyObject* name) {
    if (PyUnicode_IsIdentifier(name) == 0 || isKeyword.get() == nullptr)
        return 0;
    PyRef keyword = PyRef::steal(PyObject_CallOneArg(isKeyword.get(), name));
    return keyword ? keyword.get() != Py_True : -1;
}

PyObject* makeHostModule(const ling::Module& module) {
    PyTypeObject* type = hostModuleType();
    PyRef host = PyRef::steal(type != nullptr ? wrapValue(module) : nullptr);
    PyRef name = PyRef::steal(host ? textToPython(module.name()) : nullptr);
    PyRef arguments = PyRef::steal(name ? PyTuple_Pack(1, name.get()) : nullptr);
    PyRef made = PyRef::steal(arguments ? PyModule_Type.tp_new(type, arguments.get(), nullptr) : nullptr);
    if (!made)
        return nullptr;
    partsOf(made.get()).host = host.release();
    return PyModule_Type.tp_init(made.get(), arguments.get(), nullptr) == 0 ? made.release() : nullptr;
}

}  // namespace ling::python
