#include "proxies/sequence_access.h"

#include "bridge/convert.h"
#include "bridge/small_integer.h"
#include "host/entry.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "ling/list.h"
#include "proxies/argument_array.h"
#include "proxies/iteration.h"
#include "proxies/method_names.h"
#include "proxies/plain_items.h"
#include "proxies/proxy_record.h"
#include "proxies/python_proxy.h"

#include <atomic>

namespace ling::python {

namespace {

bool isSequence(PyObject* object) { return PyList_CheckExact(object) || PyTuple_CheckExact(object); }

/// The position meant by an index, if it is inside.
std::optional<Py_ssize_t> position(PyObject* sequence, const ling::Any& index) {
    if (!index.is(ling::Kind::Integer))
        return std::nullopt;
    const Py_ssize_t size = Py_SIZE(sequence);
    const std::int64_t wanted = index.asInteger() + (index.asInteger() < 0 ? size : 0);
    return wanted >= 0 && wanted < size ? std::optional<Py_ssize_t>(wanted) : std::nullopt;
}

/// Borrowed.
PyObject* itemOf(PyObject* sequence, Py_ssize_t at) {
    return PyList_CheckExact(sequence) ? PyList_GET_ITEM(sequence, at) : PyTuple_GET_ITEM(sequence, at);
}

/// Whether nobody can have replaced the methods of the object's class, and the object has none of its own: what
/// `__getitem__` and `__len__` do is then what the class's slots do.
bool hasFixedMethods(PyObject* object) {
    const PyTypeObject* type = Py_TYPE(object);
    return PyType_HasFeature(Py_TYPE(object), Py_TPFLAGS_IMMUTABLETYPE) &&
           type->tp_getattro == PyObject_GenericGetAttr && type->tp_dictoffset == 0 &&
           !PyType_HasFeature(Py_TYPE(object), Py_TPFLAGS_MANAGED_DICT);
}

/// An item is kept alive while it is converted, unless nothing can happen meanwhile.
ling::Any convertItem(PyObject* item) {
    ling::Any value;
    return readSmallInteger(item, value) ? value : takeResult(Py_NewRef(item));
}

/// The item of a `range`, an `array`, a `deque` and their like.
std::optional<ling::Any> itemBySlot(PyObject* object, const ling::Any& index) {
    PythonEntry entry;
    PyRef key = PyRef::steal(toPython(index));
    return takeResult(key ? PyObject_GetItem(object, key.get()) : nullptr);
}

bool hasLengthSlot(const PyTypeObject* type) {
    return (type->tp_as_sequence != nullptr && type->tp_as_sequence->sq_length != nullptr) ||
           (type->tp_as_mapping != nullptr && type->tp_as_mapping->mp_length != nullptr);
}

}  // namespace

namespace exact {

std::optional<ling::Any> at(const ling::Any& self, const ling::Any& index) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr || !index.is(ling::Kind::Integer))
        return std::nullopt;
    if (!isSequence(object))
        return hasFixedMethods(object) ? itemBySlot(object, index) : std::nullopt;
    PythonEntry entry;
    const std::optional<Py_ssize_t> where = position(object, index);
    if (!where)
        return std::nullopt;
    return convertItem(itemOf(object, *where));
}

std::optional<ling::Any> length(const ling::Any& self) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr)
        return std::nullopt;
    PythonEntry entry;  // Another thread may be about to change the list.
    if (isSequence(object))
        return ling::Any(Py_SIZE(object));
    if (!hasFixedMethods(object) || !hasLengthSlot(Py_TYPE(object)))
        return std::nullopt;
    const Py_ssize_t size = PyObject_Size(object);
    return size >= 0 ? ling::Any(size) : takeResult(nullptr);
}

std::optional<ling::Any> append(const ling::Any& self, const ling::Any& value) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr || !PyList_CheckExact(object))
        return std::nullopt;
    PythonEntry entry;
    PyRef item = PyRef::steal(toPython(value));
    if (!item)
        return cannotConvert(value);
    return PyList_Append(object, item.get()) == 0 ? ling::Any() : takeResult(nullptr);
}

std::optional<ling::Any> set(const ling::Any& self, const ling::Any& index, const ling::Any& value) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr || !PyList_CheckExact(object))
        return std::nullopt;
    PythonEntry entry;
    PyRef item = PyRef::steal(toPython(value));
    if (!item)
        return cannotConvert(value);
    const std::optional<Py_ssize_t> where = position(object, index);  // Only now: the conversion may run code.
    if (!where)
        return std::nullopt;
    return PyList_SetItem(object, *where, item.release()) == 0 ? ling::Any() : takeResult(nullptr);
}

namespace {

/// Adds the small integers that `sequence` has from a position on, as far as nothing else stands between them. Answers
/// the position behind them.
Py_ssize_t addSmallIntegers(ling::list_builder& items, PyObject* sequence, Py_ssize_t from) {
    const Py_ssize_t size = Py_SIZE(sequence);
    if (from >= size)
        return from;
    PyObject* const* source = PyList_CheckExact(sequence) ? reinterpret_cast<PyListObject*>(sequence)->ob_item
                                                          : reinterpret_cast<PyTupleObject*>(sequence)->ob_item;
    ling::Any* place = items.room(static_cast<std::size_t>(size - from));
    Py_ssize_t at = from;
    ling::Any value;
    for (; at < size && readSmallInteger(source[at], value); ++at)
        std::construct_at(place++, value.asInteger());
    items.added(static_cast<std::size_t>(at - from));
    return at;
}

}  // namespace

std::optional<ling::Any> collect(const ling::Any& self) {
    PyObject* object = PythonProxy::pythonObject(self);
    if (object == nullptr)
        return std::nullopt;
    PythonEntry entry;
    if (!isSequence(object))
        return plainItems(object);
    ling::list_builder items(static_cast<std::size_t>(Py_SIZE(object)));
    platform::InterruptionPoll mustStop;
    for (Py_ssize_t i = addSmallIntegers(items, object, 0); i < Py_SIZE(object);
         i = addSmallIntegers(items, object, i + 1)) {
        items.add(takeResult(Py_NewRef(itemOf(object, i))));
        if (PyErr_Occurred() != nullptr)
            return takeConversionError();
        if (mustStop())
            return platform::interruptedError();
    }
    return items.take();
}

}  // namespace exact

ling::Any itemAt(const ling::Any& self, const ling::Any& index) {
    if (std::optional<ling::Any> item = exact::at(self, index))
        return *std::move(item);
    return PythonProxy::callPythonMethod(self, names::dunderGetitem, {index});
}

ling::Any sequenceLength(const ling::Any& self) {
    if (std::optional<ling::Any> known = exact::length(self))
        return *std::move(known);
    return lengthOf(self);
}

namespace {

/// The items of what a sequence proxy holds, if that is a `list` or a `tuple`; no first one for any other value. Good
/// until other code runs.
struct HeldItems {
    PyObject* const* first = nullptr;
    Py_ssize_t count = 0;
};

[[gnu::always_inline]] inline HeldItems heldItems(const ling::Any& self) noexcept {
    // Found once, without a call.
    static constinit std::atomic<const ling::internal::object_value_class*> sequences{nullptr};
    const ling::internal::object_value_class* cls = sequences.load(std::memory_order_relaxed);
    if (cls == nullptr)
        sequences.store(cls = PythonProxySequence::getClass().record(), std::memory_order_relaxed);
    PyObject* object = exactlyHeld(self, cls);
    if (object != nullptr && PyList_CheckExact(object))
        return {reinterpret_cast<PyListObject*>(object)->ob_item, Py_SIZE(object)};
    if (object != nullptr && PyTuple_CheckExact(object))
        return {reinterpret_cast<PyTupleObject*>(object)->ob_item, Py_SIZE(object)};
    return {};
}

/// What is not done at once may run code, which may drop the caller's reference.
[[gnu::noinline]] ling::Any askAt(const ling::Any& self, const ling::Any& index) {
    const ling::Any held = self;
    return itemAt(held, index);
}

[[gnu::noinline]] ling::Any askLength(const ling::Any& self) {
    const ling::Any held = self;
    return sequenceLength(held);
}

class Access final : public platform::ItemWays {
public:
    ling::Any at(const ling::Any& self, const ling::Any& index) const override {
        if (!PythonEntry::isNeedless() || !index.is(ling::Kind::Integer))
            return askAt(self, index);
        const HeldItems items = heldItems(self);
        const std::int64_t wanted = index.asInteger();
        const std::int64_t position = wanted < 0 ? wanted + items.count : wanted;
        ling::Any item;
        if (position < 0 || position >= items.count || !readSmallInteger(items.first[position], item))
            return askAt(self, index);
        return item;
    }

    ling::Any length(const ling::Any& self) const override {
        const HeldItems items = PythonEntry::isNeedless() ? heldItems(self) : HeldItems{};
        return items.count != 0 ? ling::Any(items.count) : askLength(self);
    }

    platform::Step step(const ling::Any& self, std::atomic<std::int64_t>& next, ling::Any& item) const override {
        return PythonEntry::isNeedless() ? stepLocked(self, next, item) : stepFromOutside(self, next, item);
    }

    std::int64_t claim(std::atomic<std::int64_t>& next) const override {
        const GilGuard gil;
        const std::int64_t position = next.load(std::memory_order_relaxed);
        next.store(position + 1, std::memory_order_relaxed);
        return position;
    }

private:
    [[gnu::noinline]] static platform::Step stepFromOutside(const ling::Any& self, std::atomic<std::int64_t>& next,
                                                            ling::Any& item) {
        const GilGuard gil;
        return PythonEntry::isNeedless() ? stepLocked(self, next, item) : platform::Step::Ask;
    }

    /// An item that is not plain is asked for by whoever looks at what its conversion leaves pending. So is the end of
    /// what holds no items: it may be no list.
    [[gnu::always_inline]] static platform::Step stepLocked(const ling::Any& self, std::atomic<std::int64_t>& next,
                                                            ling::Any& item) {
        const HeldItems items = heldItems(self);
        const std::int64_t position = next.load(std::memory_order_relaxed);
        if (position >= items.count)
            return items.count != 0 ? platform::Step::End : platform::Step::Ask;
        PyObject* found = items.first[position];
        ling::Any value;
        if (!readSmallInteger(found, value) && !toLingPlainly(found, value))
            return platform::Step::Ask;
        next.store(position + 1, std::memory_order_relaxed);
        item = std::move(value);  // The end of what was there before may run any code.
        return platform::Step::Item;
    }
};

}  // namespace

const platform::ItemWays& sequenceAccess() {
    static const Access& access = *new Access;
    return access;
}

}  // namespace ling::python
