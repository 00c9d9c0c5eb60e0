#include "proxies/plain_items.h"

#include "bridge/convert.h"
#include "bridge/small_integer.h"
#include "host/cached_import.h"
#include "host/interruption.h"
#include "host/py_ref.h"
#include "ling/list.h"

#include <cstring>
#include <type_traits>

namespace ling::python {

namespace {

constinit CachedImport arrayType{"array", "array"};
constinit CachedImport dequeType{"collections", "deque"};

/// Whether the object is exactly of the type that `import` names. Nothing is imported for any other object.
bool isExactly(PyObject* object, const char* name, CachedImport& import) {
    const PyTypeObject* type = Py_TYPE(object);
    return PyType_HasFeature(Py_TYPE(object), Py_TPFLAGS_IMMUTABLETYPE) && std::strcmp(type->tp_name, name) == 0 &&
           reinterpret_cast<PyObject*>(Py_TYPE(object)) == import.get();
}

bool add(ling::list_builder& items, PyObject* item) {
    ling::Any value;
    if (!readSmallInteger(item, value) && !toLingPlainly(item, value))
        return false;
    items.add(std::move(value));
    return true;
}

/// The item at a position, as an integer of 64 bits.
bool readInteger(PyObject* sequence, Py_ssize_t position, std::int64_t& value) {
    PyRef item = PyRef::steal(PySequence_GetItem(sequence, position));
    int overflow = 1;
    if (item && PyLong_CheckExact(item.get()))
        value = PyLong_AsLongLongAndOverflow(item.get(), &overflow);
    forgetError();
    return overflow == 0;
}

/// The first and the last item say what is between them.
bool addRange(ling::list_builder& items, PyObject* range) {
    const Py_ssize_t count = PyObject_Size(range);
    if (count <= 1) {
        forgetError();  // Longer than a `Py_ssize_t`.
        std::int64_t only = 0;
        if (count < 0 || (count == 1 && !readInteger(range, 0, only)))
            return false;
        if (count == 1)
            items.add(only);
        return true;
    }
    std::int64_t first = 0;
    std::int64_t second = 0;
    std::int64_t last = 0;
    std::int64_t step = 0;
    if (!readInteger(range, 0, first) || !readInteger(range, 1, second) || !readInteger(range, count - 1, last) ||
        __builtin_sub_overflow(second, first, &step))
        return false;
    ling::Any* place = items.room(static_cast<std::size_t>(count));
    for (Py_ssize_t i = 0; i < count; ++i)
        std::construct_at(place + i, first + i * step);
    items.added(static_cast<std::size_t>(count));
    return true;
}

template <class Number>
void addNumbers(ling::list_builder& items, const Py_buffer& buffer) {
    const auto count = static_cast<std::size_t>(buffer.len) / sizeof(Number);
    ling::Any* place = items.room(count);
    for (std::size_t i = 0; i < count; ++i) {
        Number number;
        std::memcpy(&number, static_cast<const char*>(buffer.buf) + i * sizeof(Number), sizeof(Number));
        std::construct_at(place + i, number);
    }
    items.added(count);
}

/// The integers that have a form in any case.
bool addNumbers(ling::list_builder& items, const Py_buffer& buffer) {
    switch (buffer.format[0]) {
        case 'b':
            return addNumbers<signed char>(items, buffer), true;
        case 'B':
            return addNumbers<unsigned char>(items, buffer), true;
        case 'h':
            return addNumbers<short>(items, buffer), true;
        case 'H':
            return addNumbers<unsigned short>(items, buffer), true;
        case 'i':
            return addNumbers<int>(items, buffer), true;
        case 'I':
            return addNumbers<unsigned>(items, buffer), true;
        case 'l':
        case 'q':
            static_assert(sizeof(long) == sizeof(long long));
            return addNumbers<long long>(items, buffer), true;
        default:
            return false;
    }
}

bool addIterated(ling::list_builder& items, PyObject* container) {
    PyRef iterator = PyRef::steal(PyObject_GetIter(container));
    const iternextfunc next = iterator ? Py_TYPE(iterator.get())->tp_iternext : nullptr;
    while (PyRef item = PyRef::steal(next != nullptr ? next(iterator.get()) : nullptr))
        if (!add(items, item.get()))
            return false;
    const bool isWhole = iterator && PyErr_Occurred() == nullptr;
    forgetError();
    return isWhole;
}

/// The entries in use of the table that is the set.
bool addSet(ling::list_builder& items, PyObject* object) {
    const auto* set = reinterpret_cast<const PySetObject*>(object);
    for (const setentry* entry = set->table; entry <= set->table + set->mask; ++entry)
        if (entry->key != nullptr && entry->hash != -1 && !add(items, entry->key))
            return false;
    return true;
}

/// Gives `take` the objects that a container shows to the collector of cycles, to which it shows all that it holds, up
/// to the first that `take` refuses.
template <class Take>
void forEachReferent(PyObject* container, Take&& take) {
    const auto visit = [](PyObject* object, void* taker) {
        return (*static_cast<std::remove_reference_t<Take>*>(taker))(object) ? 0 : 1;
    };
    (void)Py_TYPE(container)->tp_traverse(container, visit, &take);
}

/// A deque shows its items in their order, besides its type.
bool addDeque(ling::list_builder& items, PyObject* deque) {
    const Py_ssize_t size = PyObject_Size(deque);
    PyObject* const type = reinterpret_cast<PyObject*>(Py_TYPE(deque));
    Py_ssize_t count = 0;
    forEachReferent(deque, [&](PyObject* item) {
        if (item == type && count == 0)
            return true;
        const bool isAdded = add(items, item);
        count += isAdded ? 1 : 0;
        return isAdded;
    });
    return count == size;
}

bool addArray(ling::list_builder& items, PyObject* array) {
    Py_buffer buffer;
    if (PyObject_GetBuffer(array, &buffer, PyBUF_FORMAT | PyBUF_ND) != 0) {
        forgetError();
        return false;
    }
    const bool isDone = addNumbers(items, buffer);
    PyBuffer_Release(&buffer);
    return isDone || addIterated(items, array);
}

enum class Entries { Keys, Values };

bool addEntries(ling::list_builder& items, PyObject* dict, Entries wanted) {
    if (dict == nullptr)
        return false;
    PyObject* key = nullptr;
    PyObject* value = nullptr;
    for (Py_ssize_t position = 0; PyDict_Next(dict, &position, &key, &value) != 0;)
        if (!add(items, wanted == Entries::Keys ? key : value))
            return false;
    return true;
}

/// The dictionary behind a view, borrowed.
PyObject* dictOf(PyObject* view) {
    PyObject* dict = nullptr;
    forEachReferent(view, [&dict](PyObject* held) {
        dict = held;
        return false;
    });
    return dict;
}

using Add = bool (*)(ling::list_builder& items, PyObject* object);

bool addKeys(ling::list_builder& items, PyObject* dict) { return addEntries(items, dict, Entries::Keys); }
bool addValues(ling::list_builder& items, PyObject* dict) { return addEntries(items, dict, Entries::Values); }
bool addKeysOfView(ling::list_builder& items, PyObject* view) { return addKeys(items, dictOf(view)); }
bool addValuesOfView(ling::list_builder& items, PyObject* view) { return addValues(items, dictOf(view)); }

/// How the items of an object are taken, or null.
Add wayFor(PyObject* object) {
    if (PyDict_CheckExact(object))
        return &addKeys;
    if (Py_IS_TYPE(object, &PyDictKeys_Type))
        return &addKeysOfView;
    if (Py_IS_TYPE(object, &PyDictValues_Type))
        return &addValuesOfView;
    if (Py_IS_TYPE(object, &PyDictItems_Type))
        return &addIterated;
    if (PyAnySet_CheckExact(object))
        return &addSet;
    if (PyRange_Check(object))
        return &addRange;
    if (isExactly(object, "array.array", arrayType))
        return &addArray;
    return isExactly(object, "collections.deque", dequeType) ? &addDeque : nullptr;
}

std::optional<ling::Any> take(PyObject* object, Add add) {
    if (add == nullptr || isInterruptionHeld())
        return std::nullopt;
    const Py_ssize_t size = PyObject_Size(object);
    forgetError();  // Of a `range` longer than a `Py_ssize_t`.
    ling::list_builder items(size > 0 && add != &addRange && add != &addArray ? static_cast<std::size_t>(size) : 0);
    return add(items, object) ? std::optional<ling::Any>(items.take()) : std::nullopt;
}

}  // namespace

std::optional<ling::Any> plainItems(PyObject* object) { return take(object, wayFor(object)); }

std::optional<ling::Any> plainValues(PyObject* dict) { return take(dict, &addValues); }

}  // namespace ling::python
