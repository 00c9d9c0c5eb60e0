#include "lingobject/type_members.h"

#include "bridge/contained.h"
#include "bridge/convert.h"
#include "bridge/travel.h"
#include "host/names.h"
#include "host/py_ref.h"
#include "ling/class.h"
#include "ling/list.h"
#include "ling/members.h"
#include "lingobject/instance.h"
#include "lingobject/signature_object.h"
#include "lingobject/special_names.h"

namespace ling::python {

namespace {

constinit const Name kDirectory{"__dir__"};

/// Names to be listed, each once. Its functions answer false with the Python error set.
class NameList {
public:
    /// Starts with what is in `listed`, which it takes over.
    explicit NameList(PyObject* listed) : known_(PyRef::steal(PySet_New(listed))), names_(PyRef::steal(listed)) {}
    explicit operator bool() const noexcept { return static_cast<bool>(known_); }

    /// Adds a name that Python can see.
    bool add(const ling::String& name) {
        if (name.startsWith(u"_"))
            return true;
        PyRef text = PyRef::steal(toPythonLocked(name));
        const Py_ssize_t before = PySet_GET_SIZE(known_.get());
        if (!text || PySet_Add(known_.get(), text.get()) != 0)
            return false;
        return PySet_GET_SIZE(known_.get()) == before || PyList_Append(names_.get(), text.get()) == 0;
    }
    PyObject* release() noexcept { return names_.release(); }

private:
    PyRef known_;
    PyRef names_;
};

bool addNames(NameList& names, const ling::List_Generic& added) {
    for (const ling::Any& name : added.copyItems())
        if (!names.add(ling::unchecked<ling::String>(name)))
            return false;
    return true;
}

template <class Members>
bool addNamesOf(NameList& names, const Members& members) {
    for (const auto& member : members)
        if (!names.add(member.id.name()))
            return false;
    return true;
}

/// A class answers its own class-level members.
bool addClassLevelNames(NameList& names, const ling::Any& value) {
    if (!ling::internal::is_instance<ling::Class_Generic>(value))
        return true;
    const auto& cls = ling::unchecked<ling::Class_Generic>(value);
    return addNamesOf(names, cls.classMethods(ling::Inherited::Yes)) &&
           addNamesOf(names, cls.classProperties(ling::Inherited::Yes));
}

PyObject* listMembers(PyObject* self, PyObject*) {
    PyObject* key = kDirectory.object();
    PyObject* object = reinterpret_cast<PyObject*>(&PyBaseObject_Type);
    PyRef listed = PyRef::steal(key != nullptr ? PyObject_CallMethodOneArg(object, key, self) : nullptr);
    if (!listed)
        return nullptr;
    NameList names(listed.release());
    if (!names)
        return nullptr;
    const Receiver receiver(self);
    const bool done = addNames(names, ling::own_methods_of(*receiver)) &&
                      addNames(names, ling::own_properties_of(*receiver)) && addClassLevelNames(names, *receiver);
    return done ? names.release() : nullptr;
}

PyObject* readDocumentation(PyObject* self, void*) {
    PyObject* text = nullptr;
    PyObject* name = names::doc.object();
    return name != nullptr && answerSpecialName(*Receiver(self), name, text) ? text : nullptr;
}

PyObject* copy(PyObject* self, PyObject*) { return copyWrapper(self); }
PyObject* reduce(PyObject* self, PyObject*) { return reduceWrapper(self); }

PyGetSetDef kSignature{"__signature__", contained<readSignature>, nullptr,
                       "The parameters and the result, for the module inspect.", nullptr};
PyGetSetDef kDocumentation{"__doc__", contained<readDocumentation>, nullptr, "The text of the value.", nullptr};
PyMethodDef kCopying{"__copy__", contained<copy>, METH_NOARGS, "A copy of the value, with the same contents."};
PyMethodDef kReducing{"__reduce_ex__", contained<reduce>, METH_O, "How deep copies and pickles take the value apart."};
PyMethodDef kListing{"__dir__", contained<listMembers>, METH_NOARGS, "The names of all members."};

/// Takes the descriptor over; null stands for a failure.
bool put(PyTypeObject* type, const char* name, PyObject* descriptor) {
    PyRef owned = PyRef::steal(descriptor);
    PyRef members = PyRef::steal(owned ? PyType_GetDict(type) : nullptr);
    if (!members || PyDict_SetItemString(members.get(), name, owned.get()) != 0)
        return false;
    PyType_Modified(type);
    return true;
}

bool put(PyTypeObject* type, PyGetSetDef& definition) {
    return put(type, definition.name, PyDescr_NewGetSet(type, &definition));
}

bool put(PyTypeObject* type, PyMethodDef& definition) {
    return put(type, definition.ml_name, PyDescr_NewMethod(type, &definition));
}

}  // namespace

bool addSharedMembers(PyTypeObject* type) {
    return put(type, kSignature) && put(type, kListing) && put(type, kCopying) && put(type, kReducing);
}

bool addDocumentation(PyTypeObject* type) { return put(type, kDocumentation); }

}  // namespace ling::python
