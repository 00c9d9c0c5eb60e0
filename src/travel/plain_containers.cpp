#include "travel/plain_containers.h"

#include "bridge/convert.h"
#include "host/entry.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "host/stack_room.h"
#include "lingobject/instance.h"
#include "lingobject/slot_result.h"
#include "lingobject/wrapper.h"
#include "travel/contents.h"

#include <optional>
#include <unordered_map>
#include <utility>

namespace ling::python {

namespace {

enum class Shape { None, List, Dict, Set, FrozenSet, Tuple };

/// Containers of derived classes are what they are.
Shape shapeOfPython(PyObject* object) {
    if (PyList_CheckExact(object))
        return Shape::List;
    if (PyDict_CheckExact(object))
        return Shape::Dict;
    if (PyTuple_CheckExact(object))
        return Shape::Tuple;
    if (PySet_CheckExact(object))
        return Shape::Set;
    return PyFrozenSet_CheckExact(object) ? Shape::FrozenSet : Shape::None;
}

Shape shapeOfValue(const ling::Any& value) {
    if (value.is(ling::Kind::List))
        return Shape::List;
    if (value.is(ling::Kind::Map))
        return Shape::Dict;
    return value.is(ling::Kind::Set) ? Shape::Set : Shape::None;
}

/// A container as it is now: converting an item may run code that changes it. The items are in a list, those of a
/// dictionary as pairs.
struct Source {
    Shape shape = Shape::None;
    const void* identity = nullptr;
    PyRef items = PyRef();
};

PyRef itemsOfPython(PyObject* object) {
    return PyRef::steal(PyDict_CheckExact(object) ? PyDict_Items(object) : PySequence_List(object));
}

PyRef pairOf(const ling::Any& key, const ling::Any& value) {
    PyRef first = PyRef::steal(giveResult(key));
    PyRef second = PyRef::steal(first ? giveResult(value) : nullptr);
    return PyRef::steal(second ? PyTuple_Pack(2, first.get(), second.get()) : nullptr);
}

PyRef itemsOfValue(const ling::Any& value) {
    PyRef list = PyRef::steal(PyList_New(0));
    const auto add = [&list](PyRef item) {
        if (!item || PyList_Append(list.get(), item.get()) != 0)
            list = PyRef();
    };
    if (value.is(ling::Kind::Map)) {
        for (const auto& [key, item] : platform::pairsOf(value))
            if (list)
                add(pairOf(key, item));
        return list;
    }
    for (const ling::Any& item : itemsIn(value))
        if (list)
            add(PyRef::steal(giveResult(item)));
    return list;
}

/// A wrapper around a native container, or a container of Python's own; any other object has no shape. Without items,
/// with the Python error set, when one of them does not convert.
Source readContainer(PyObject* object) {
    if (!isLingObject(object)) {
        const Shape shape = shapeOfPython(object);
        return {shape, object, shape == Shape::None ? PyRef() : itemsOfPython(object)};
    }
    const Receiver receiver(object);
    const Shape shape = shapeOfValue(*receiver);
    return {shape, receiver->object(), shape == Shape::None ? PyRef() : itemsOfValue(*receiver)};
}

/// False with the Python error set.
bool hasRoom() {
    if (!hasStackRoom())
        PyErr_SetString(PyExc_RecursionError, "The value is nested too deeply.");
    return PyErr_Occurred() == nullptr;
}

/// What each container has become so far, so that what is shared stays so. Keeps the originals alive: their addresses
/// must not come to stand for others.
template <class Made>
class Memo {
public:
    const Made* find(const void* identity) const {
        const auto known = entries_.find(identity);
        return known == entries_.end() ? nullptr : &known->second.second;
    }
    void remember(const void* identity, PyObject* original, const Made& made) {
        entries_.try_emplace(identity, PyRef::borrow(original), made);
    }

private:
    std::unordered_map<const void*, std::pair<PyRef, Made>> entries_;
};

/// Null, or no value, stands for a failure with the Python error set in all that follows.
class ToPython {
public:
    PyRef convert(PyObject* object) {
        const Source source = readContainer(object);
        if (source.shape == Shape::None)
            return PyErr_Occurred() == nullptr ? PyRef::borrow(object) : PyRef();
        if (const PyRef* known = memo_.find(source.identity))
            return *known;
        return source.items && hasRoom() ? make(object, source) : PyRef();
    }

private:
    PyRef make(PyObject* original, const Source& source) {
        if (source.shape == Shape::Tuple || source.shape == Shape::FrozenSet)
            return makeFixed(original, source);
        PyRef made = makeEmpty(source.shape);
        if (!made)
            return {};
        memo_.remember(source.identity, original, made);
        for (Py_ssize_t i = 0; i < PyList_GET_SIZE(source.items.get()); ++i)
            if (!add(made, source.shape, PyList_GET_ITEM(source.items.get(), i)))
                return {};
        return made;
    }

    static PyRef makeEmpty(Shape shape) {
        if (shape == Shape::List)
            return PyRef::steal(PyList_New(0));
        return PyRef::steal(shape == Shape::Dict ? PyDict_New() : PySet_New(nullptr));
    }

    bool add(const PyRef& made, Shape shape, PyObject* item) {
        if (shape == Shape::Dict) {
            PyRef key = convert(PyTuple_GET_ITEM(item, 0));
            PyRef value = key ? convert(PyTuple_GET_ITEM(item, 1)) : PyRef();
            return value && PyDict_SetItem(made.get(), key.get(), value.get()) == 0;
        }
        PyRef converted = convert(item);
        if (!converted)
            return false;
        return (shape == Shape::List ? PyList_Append(made.get(), converted.get())
                                     : PySet_Add(made.get(), converted.get())) == 0;
    }

    /// It can only be made when its items are there. One that comes back to itself through a list is made twice.
    PyRef makeFixed(PyObject* original, const Source& source) {
        PyRef items = PyRef::steal(PyList_New(0));
        for (Py_ssize_t i = 0; items && i < PyList_GET_SIZE(source.items.get()); ++i)
            if (!add(items, Shape::List, PyList_GET_ITEM(source.items.get(), i)))
                return {};
        PyRef made = PyRef::steal(!items                         ? nullptr
                                  : source.shape == Shape::Tuple ? PyList_AsTuple(items.get())
                                                                 : PyFrozenSet_New(items.get()));
        if (made)
            memo_.remember(source.identity, original, made);
        return made;
    }

    Memo<PyRef> memo_;
};

class ToNative {
public:
    std::optional<ling::Any> convert(PyObject* object) {
        const Shape shape = isLingObject(object) ? Shape::None : shapeOfPython(object);
        if (shape == Shape::None)
            return convertOther(object);
        if (const ling::Any* known = memo_.find(object))
            return *known;
        PyRef items = hasRoom() ? itemsOfPython(object) : PyRef();
        if (!items)
            return std::nullopt;
        return shape == Shape::Tuple ? makeTuple(object, items) : fill(object, items, makeEmpty(shape));
    }

private:
    static std::optional<ling::Any> convertOther(PyObject* object) {
        ling::Any value;
        return takeArgument(object, value) ? std::optional(std::move(value)) : std::nullopt;
    }

    static ling::Any makeEmpty(Shape shape) {
        if (shape == Shape::List)
            return ling::List_Generic();
        return shape == Shape::Dict ? ling::Any(ling::Map_Generic()) : ling::Any(ling::Set_Generic());
    }

    std::optional<ling::Any> fill(PyObject* original, const PyRef& items, const ling::Any& made) {
        memo_.remember(original, original, made);
        for (Py_ssize_t i = 0; i < PyList_GET_SIZE(items.get()); ++i) {
            const std::optional<ling::Any> outcome = add(made, PyList_GET_ITEM(items.get(), i));
            if (!outcome || giveOutcome(*outcome) != 0)
                return std::nullopt;
        }
        return made;
    }

    /// The outcome of adding the item.
    std::optional<ling::Any> add(const ling::Any& made, PyObject* item) {
        if (!made.is(ling::Kind::Map)) {
            const std::optional<ling::Any> value = convert(item);
            return value ? std::optional(addItem(made, *value)) : std::nullopt;
        }
        const std::optional<ling::Any> key = convert(PyTuple_GET_ITEM(item, 0));
        const std::optional<ling::Any> value = key ? convert(PyTuple_GET_ITEM(item, 1)) : std::nullopt;
        return value ? std::optional(setItem(made, *key, *value)) : std::nullopt;
    }

    std::optional<ling::Any> makeTuple(PyObject* original, const PyRef& items) {
        std::vector<ling::Any> values;
        for (Py_ssize_t i = 0; i < PyList_GET_SIZE(items.get()); ++i) {
            std::optional<ling::Any> value = convert(PyList_GET_ITEM(items.get(), i));
            if (!value)
                return std::nullopt;
            values.push_back(*std::move(value));
        }
        const ling::Tuple_Generic made(std::move(values));
        memo_.remember(original, original, made);
        return made;
    }

    Memo<ling::Any> memo_;
};

ling::Any failed() {
    ling::Any error = takeConversionError();
    return error.isNone() ? platform::failure(u"Unable to convert a container.") : error;
}

}  // namespace

ling::Any withPythonContainers(const ling::Any& value) {
    const PythonEntry entry;
    PyRef object = PyRef::steal(toPythonLocked(ling::internal::unwrap(value)));
    ToPython conversion;
    PyRef converted = object ? conversion.convert(object.get()) : PyRef();
    return converted ? toLingLocked(converted.get()) : failed();
}

ling::Any withNativeContainers(const ling::Any& value) {
    const PythonEntry entry;
    PyRef object = PyRef::steal(toPythonLocked(ling::internal::unwrap(value)));
    ToNative conversion;
    std::optional<ling::Any> converted = object ? conversion.convert(object.get()) : std::nullopt;
    return converted ? *std::move(converted) : failed();
}

void registerContainerFunctions() {
    (void)ling::internal::register_function(
        "ling.python",
        platform::makeFunction("to_python", "value", &withPythonContainers,
                               "Copies nested containers into Python's own; any other value is answered as it is."));
    (void)ling::internal::register_function(
        "ling.python",
        platform::makeFunction("from_python", "value", &withNativeContainers,
                               "Copies Python's nested containers into native ones; any other value is answered as it "
                               "is."));
}

}  // namespace ling::python
