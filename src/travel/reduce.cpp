#include "travel/reduce.h"

#include "bridge/text.h"
#include "bridge/travel.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "host/stack_room.h"
#include "ling/class.h"
#include "ling/date_time.h"
#include "lingobject/instance.h"
#include "lingobject/slot_result.h"
#include "travel/contents.h"
#include "travel/dotted_name.h"
#include "travel/form.h"
#include "travel/rebuild.h"
#include "travel/traveller.h"

namespace ling::python {

namespace {

PyRef none() { return PyRef::borrow(Py_None); }

/// What stands for each of some values, in a list.
PyRef travellersOf(std::span<const ling::Any> values) {
    PyRef list = PyRef::steal(PyList_New(0));
    for (const ling::Any& value : values) {
        PyRef item = list ? travellerOrObject(value) : PyRef();
        if (!item || PyList_Append(list.get(), item.get()) != 0)
            return {};
    }
    return list;
}

PyRef reduceTime(const ling::Time& time) {
    const int hour = time.hour();
    const int minute = time.minute();
    const int second = time.second();
    if (!time.hasOffset())
        return PyRef::steal(Py_BuildValue("(iiiI)", hour, minute, second, time.nanoSeconds()));
    return PyRef::steal(Py_BuildValue("(iiiILNi)", hour, minute, second, time.nanoSeconds(),
                                      static_cast<long long>(time.offset()), textToPython(time.zoneName()),
                                      static_cast<int>(time.fold())));
}

PyRef reduceDateTime(const ling::DateTime& dateTime) {
    const ling::Date date = dateTime.date();
    PyRef time = reduceTime(dateTime.time());
    if (!time)
        return {};
    return PyRef::steal(Py_BuildValue("((iii)O)", date.year(), date.month(), date.day(), time.get()));
}

PyRef reduceTuple(const ling::Any& tuple) {
    PyRef items = travellersOf(static_cast<const ling::internal::object_value_tuple*>(tuple.object())->items());
    return PyRef::steal(items ? PyList_AsTuple(items.get()) : nullptr);
}

PyRef classNameOf(const ling::Any& value) {
    return PyRef::steal(textToPython(ling::qualname(ling::raw_class_of(value))));
}

PyRef reduceMethod(const ling::Any& method) {
    PyRef receiver = travellerOrObject(receiverOf(method));
    const auto& function = *static_cast<const ling::internal::object_value_function*>(method.object());
    return PyRef::steal(receiver ? Py_BuildValue("(ON)", receiver.get(), textToPython(function.name())) : nullptr);
}

/// The argument from which a value of this form is made again.
PyRef argumentOf(const ling::Any& value, Form form) {
    switch (form) {
        case Form::Float:
            return PyRef::steal(PyFloat_FromDouble(value.asFloat()));
        case Form::Time:
            return reduceTime(ling::unchecked<ling::Time>(value));
        case Form::DateTime:
            return reduceDateTime(ling::unchecked<ling::DateTime>(value));
        case Form::Tuple:
            return reduceTuple(value);
        case Form::Method:
            return reduceMethod(value);
        case Form::Name:
            return PyRef::steal(textToPython(dottedNameOf(value)));
        default:
            return form == Form::Container && isOfNativeClass(value) ? none() : classNameOf(value);
    }
}

// The state.

bool addProperty(const PyRef& properties, const ling::String& name, const ling::Any& value) {
    PyRef key = PyRef::steal(properties ? textToPython(name) : nullptr);
    PyRef item = key ? travellerOrObject(value) : PyRef();
    return item && PyDict_SetItem(properties.get(), key.get(), item.get()) == 0;
}

/// A dictionary of what the object carries beyond its class.
PyRef ownPropertiesOf(const ling::Any& value) {
    std::vector<std::pair<ling::String, ling::Any>> properties;
    if (const ling::Any problem = readOwnProperties(value, properties); ling::internal::is_error_result(problem))
        return PyRef::steal(raise(PyExc_TypeError, messageOf(problem)));
    PyRef dictionary = PyRef::steal(PyDict_New());
    for (const auto& [name, property] : properties)
        if (!addProperty(dictionary, name, property))
            return {};
    return dictionary;
}

/// None, a tuple of what the single object carries, or, for an object, that and the state that it tells.
PyRef stateTuple(const ling::Any& value, Form form) {
    if (form != Form::Container && form != Form::Object)
        return none();
    PyRef own = ownPropertiesOf(value);
    if (!own)
        return {};
    if (form == Form::Container)
        return PyDict_GET_SIZE(own.get()) == 0 ? none() : PyRef::steal(PyTuple_Pack(1, own.get()));
    const ling::Any state = stateOf(value);
    PyRef told = ling::internal::is_error_result(state) ? PyRef::steal(giveResult(state)) : travellerOrObject(state);
    return PyRef::steal(told ? PyTuple_Pack(2, own.get(), told.get()) : nullptr);
}

/// Walks a copy: converting a value can run code that changes the dictionary.
bool takeOwnProperties(const ling::Any& value, PyObject* dictionary) {
    PyRef properties = PyRef::steal(PyDict_Copy(dictionary));
    PyObject* key = nullptr;
    PyObject* item = nullptr;
    for (Py_ssize_t position = 0; properties && PyDict_Next(properties.get(), &position, &key, &item) != 0;) {
        ling::Any name;
        ling::Any property;
        if (!takeArgument(key, name) || !valueOfTraveller(item, property))
            return false;
        const ling::Result<ling::String> text = ling::String::cast(name);
        if (giveOutcome(text ? writeOwnProperty(value, *text, property) : text.error()) != 0)
            return false;
    }
    return static_cast<bool>(properties);
}

bool takeToldState(const ling::Any& value, PyObject* state) {
    ling::Any told;
    if (!valueOfTraveller(state, told))
        return false;
    return static_cast<bool>(PyRef::steal(giveResult(restoreState(value, told))));
}

// The items.

PyRef iteratorOver(const PyRef& list) { return PyRef::steal(list ? PyObject_GetIter(list.get()) : nullptr); }

PyRef itemsOf(const ling::Any& value, Form form) {
    const bool hasItems = form == Form::Container && !value.is(ling::Kind::Map);
    return hasItems ? iteratorOver(travellersOf(itemsIn(value))) : none();
}

PyRef pairOf(const ling::Any& key, const ling::Any& value) {
    PyRef first = travellerOrObject(key);
    PyRef second = first ? travellerOrObject(value) : PyRef();
    return PyRef::steal(second ? PyTuple_Pack(2, first.get(), second.get()) : nullptr);
}

PyRef pairsOf(const ling::Any& value, Form form) {
    if (form != Form::Container || !value.is(ling::Kind::Map))
        return none();
    PyRef list = PyRef::steal(PyList_New(0));
    for (const auto& [key, item] : platform::pairsOf(value)) {
        PyRef pair = list ? pairOf(key, item) : PyRef();
        if (!pair || PyList_Append(list.get(), pair.get()) != 0)
            return {};
    }
    return iteratorOver(list);
}

bool hasRoom() {
    if (!hasStackRoom())
        PyErr_SetString(PyExc_RecursionError, "The value is nested too deeply.");
    return PyErr_Occurred() == nullptr;
}

}  // namespace

PyObject* reduceValue(const ling::Any& value) {
    const Form form = formOf(value);
    PyRef argument = hasRoom() ? argumentOf(value, form) : PyRef();
    PyRef call = PyRef::steal(argument ? Py_BuildValue("(sO)", kindNameOf(value, form), argument.get()) : nullptr);
    PyRef state = call ? stateTuple(value, form) : PyRef();
    PyRef items = state ? itemsOf(value, form) : PyRef();
    PyRef pairs = items ? pairsOf(value, form) : PyRef();
    PyObject* rebuild = pairs ? rebuildFunction() : nullptr;
    return rebuild == nullptr ? nullptr : PyTuple_Pack(5, rebuild, call.get(), state.get(), items.get(), pairs.get());
}

bool takeState(const ling::Any& value, PyObject* state) {
    const Py_ssize_t size = PyTuple_Check(state) ? PyTuple_GET_SIZE(state) : 0;
    if (size < 1 || size > 2 || !PyDict_Check(PyTuple_GET_ITEM(state, 0))) {
        PyErr_Format(PyExc_TypeError, "%R is no state of a value of the host", state);
        return false;
    }
    return (size == 1 || takeToldState(value, PyTuple_GET_ITEM(state, 1))) &&
           takeOwnProperties(value, PyTuple_GET_ITEM(state, 0));
}

PyObject* reduceWrapper(PyObject* wrapper) {
    PyRef traveller = travellerOrObject(valueOf(wrapper));
    PyObject* open = traveller ? openFunction() : nullptr;
    return open != nullptr ? Py_BuildValue("O(O)", open, traveller.get()) : nullptr;
}

}  // namespace ling::python
