#include "travel/traveller.h"

#include "bridge/contained.h"
#include "lingobject/slot_result.h"
#include "travel/contents.h"
#include "travel/form.h"
#include "travel/rebuild.h"
#include "travel/reduce.h"

#include <memory>
#include <unordered_map>
#include <utility>

namespace ling::python {

namespace {

struct Traveller {
    PyObject ob_base;
    ling::Any* value;
};

/// The travellers that live, borrowed. Under the interpreter lock, which no operation on it gives up.
using Travellers = std::unordered_map<const ling::internal::object_value*, PyObject*>;

Travellers& travellers() {
    static Travellers& all = *new Travellers;
    return all;
}

const ling::Any& valueIn(PyObject* self) noexcept { return *reinterpret_cast<Traveller*>(self)->value; }

/// The value's end may run any code; nobody finds the traveller any more by then.
void deallocate(PyObject* self) {
    ling::Any* cell = std::exchange(reinterpret_cast<Traveller*>(self)->value, nullptr);
    if (const auto entry = travellers().find(cell->object()); entry != travellers().end() && entry->second == self)
        travellers().erase(entry);
    PyObject* pending = PyErr_GetRaisedException();
    delete cell;
    PyErr_SetRaisedException(pending);
    PyObject_Free(self);
}

PyObject* finish(const ling::Any& outcome) {
    if (ling::internal::is_error_result(outcome))
        return raiseMessage(outcome);
    Py_RETURN_NONE;
}

PyObject* append(PyObject* self, PyObject* item) {
    ling::Any value;
    return valueOfTraveller(item, value) ? finish(addItem(valueIn(self), value)) : nullptr;
}

int assignItem(PyObject* self, PyObject* key, PyObject* item) {
    ling::Any keyValue;
    ling::Any value;
    if (item == nullptr || !valueOfTraveller(key, keyValue) || !valueOfTraveller(item, value))
        return -1;
    return giveOutcome(setItem(valueIn(self), keyValue, value));
}

PyObject* setState(PyObject* self, PyObject* state) {
    return takeState(valueIn(self), state) ? Py_NewRef(Py_None) : nullptr;
}

PyObject* reduce(PyObject* self, PyObject*) { return reduceValue(valueIn(self)); }

PyMethodDef kMethods[] = {
    {"append", contained<append>, METH_O, "Adds to a list or set."},
    {"__setstate__", contained<setState>, METH_O, "Gives an object its state, and what it carries beyond its class."},
    {"__reduce_ex__", contained<reduce>, METH_O, "How the value is taken apart."},
    {},
};

PyTypeObject makeTypeObject() {
    static PyMappingMethods mapping{nullptr, nullptr, contained<assignItem>};
    PyTypeObject type{};
    Py_SET_REFCNT(reinterpret_cast<PyObject*>(&type), 1);
    type.tp_name = "LingTraveller";
    type.tp_doc = "Stands for a value of the host while it is copied or pickled.";
    type.tp_basicsize = sizeof(Traveller);
    type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION;
    type.tp_dealloc = deallocate;
    type.tp_methods = kMethods;
    type.tp_as_mapping = &mapping;
    return type;
}

/// Null with the Python error set. Making it ready runs no Python code.
PyTypeObject* travellerType() {
    static PyTypeObject type = makeTypeObject();
    return PyType_Ready(&type) == 0 ? &type : nullptr;
}

}  // namespace

bool isTraveller(PyObject* object) noexcept { return Py_TYPE(object)->tp_dealloc == deallocate; }

PyRef travellerFor(const ling::Any& value) {
    if (const auto known = travellers().find(value.object()); value.isHeap() && known != travellers().end())
        return PyRef::borrow(known->second);
    auto cell = std::make_unique<ling::Any>(value);  // First: the end of a traveller expects it.
    PyTypeObject* type = travellerType();
    PyRef made = PyRef::steal(type != nullptr ? PyObject_New(PyObject, type) : nullptr);
    if (!made)
        return {};
    reinterpret_cast<Traveller*>(made.get())->value = cell.release();
    if (value.isHeap())
        travellers().emplace(value.object(), made.get());
    return made;
}

PyRef travellerOrObject(const ling::Any& item) {
    const ling::Any value = ling::internal::unwrap(item);
    if (ling::internal::is_error_result(value))
        return PyRef::steal(giveResult(value));
    switch (formOf(value)) {
        case Form::AsItIs:
            return PyRef::steal(giveResult(value));
        case Form::None:
            return PyRef::steal(raise(PyExc_TypeError, refusalOf(value)));
        default:
            return travellerFor(value);
    }
}

bool valueOfTraveller(PyObject* object, ling::Any& value) {
    if (!isTraveller(object))
        return takeArgument(object, value);
    value = valueIn(object);
    return true;
}

}  // namespace ling::python
