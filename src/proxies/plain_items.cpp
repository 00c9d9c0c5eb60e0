#include "proxies/plain_items.h"

#include "bridge/convert.h"
#include "bridge/small_integer.h"
#include "host/cached_import.h"
#include "host/interruption.h"
#include "host/py_ref.h"
#include "ling/list.h"

#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

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

/// Fills raw memory of a list with so many items at most, and counts them when it is done.
class Filler {
public:
    Filler(ling::list_builder& items, std::size_t room)
        : items_(items), first_(items.room(room)), next_(first_), end_(first_ + room) {}
    ~Filler() { items_.added(static_cast<std::size_t>(next_ - first_)); }
    Filler(const Filler&) = delete;
    Filler& operator=(const Filler&) = delete;

    /// False for an item that is not plain.
    bool add(PyObject* item) {
        ling::Any value;
        if (next_ == end_ || (!readSmallInteger(item, value) && !toLingPlainly(item, value)))
            return false;
        std::construct_at(next_++, std::move(value));
        return true;
    }
    void addNumber(std::int64_t number) noexcept { std::construct_at(next_++, number); }
    bool isFull() const noexcept { return next_ == end_; }

private:
    ling::list_builder& items_;
    ling::Any* const first_;
    ling::Any* next_;
    ling::Any* const end_;
};

/// The item at a position, as an integer of 64 bits.
bool readInteger(PyObject* sequence, Py_ssize_t position, std::int64_t& value) {
    PyRef item = PyRef::steal(PySequence_GetItem(sequence, position));
    int overflow = 1;
    if (item && PyLong_CheckExact(item.get()))
        value = PyLong_AsLongLongAndOverflow(item.get(), &overflow);
    forgetError();
    return overflow == 0;
}

/// The ends of a `range` and the way between its items, if all are integers of 64 bits.
struct RangeParts {
    std::int64_t first = 0;
    std::int64_t step = 0;
};

std::optional<RangeParts> partsOf(PyObject* range, Py_ssize_t count) {
    RangeParts parts;
    std::int64_t last = 0;
    std::int64_t second = 0;
    if (count == 0)
        return parts;
    if (!readInteger(range, 0, parts.first) || !readInteger(range, count - 1, last))
        return std::nullopt;
    if (count > 1 && (!readInteger(range, 1, second) || __builtin_sub_overflow(second, parts.first, &parts.step)))
        return std::nullopt;
    return parts;
}

bool addRange(ling::list_builder& items, PyObject* range, std::size_t count) {
    const std::optional<RangeParts> parts = partsOf(range, static_cast<Py_ssize_t>(count));
    if (!parts)
        return false;
    Filler filler(items, count);
    auto number = static_cast<std::uint64_t>(parts->first);  // One step past the last may be past the integers.
    for (std::size_t i = 0; i < count; ++i, number += static_cast<std::uint64_t>(parts->step))
        filler.addNumber(static_cast<std::int64_t>(number));
    return true;
}

template <class Number>
void addNumbers(Filler& filler, const Py_buffer& buffer) {
    for (Py_ssize_t at = 0; at < buffer.len; at += static_cast<Py_ssize_t>(sizeof(Number))) {
        Number number;
        std::memcpy(&number, static_cast<const char*>(buffer.buf) + at, sizeof(Number));
        filler.addNumber(number);
    }
}

/// The integers that have a form in any case.
bool addNumbers(Filler& filler, const Py_buffer& buffer) {
    switch (buffer.format[0]) {
        case 'b':
            return addNumbers<signed char>(filler, buffer), true;
        case 'B':
            return addNumbers<unsigned char>(filler, buffer), true;
        case 'h':
            return addNumbers<short>(filler, buffer), true;
        case 'H':
            return addNumbers<unsigned short>(filler, buffer), true;
        case 'i':
            return addNumbers<int>(filler, buffer), true;
        case 'I':
            return addNumbers<unsigned>(filler, buffer), true;
        case 'l':
        case 'q':
            static_assert(sizeof(long) == sizeof(long long));
            return addNumbers<long long>(filler, buffer), true;
        default:
            return false;
    }
}

bool addIterated(ling::list_builder& items, PyObject* container, std::size_t size) {
    Filler filler(items, size);
    PyRef iterator = PyRef::steal(PyObject_GetIter(container));
    const iternextfunc next = iterator ? Py_TYPE(iterator.get())->tp_iternext : nullptr;
    while (PyRef item = PyRef::steal(next != nullptr ? next(iterator.get()) : nullptr))
        if (!filler.add(item.get()))
            return false;
    const bool isWhole = iterator && PyErr_Occurred() == nullptr;
    forgetError();
    return isWhole;
}

/// The entries in use of the table that is the set.
bool addSet(ling::list_builder& items, PyObject* object, std::size_t size) {
    Filler filler(items, size);
    const auto* set = reinterpret_cast<const PySetObject*>(object);
    for (const setentry* entry = set->table; entry <= set->table + set->mask; ++entry)
        if (entry->key != nullptr && entry->hash != -1 && !filler.add(entry->key))
            return false;
    return true;
}

/// Gives `take` the objects that a container shows to the collector of cycles, to which it shows all that it holds, up
/// to the first that `take` refuses, or cannot take for want of memory.
template <class Take>
void forEachReferent(PyObject* container, Take&& take) {
    const auto visit = [](PyObject* object, void* taker) {
        try {
            return (*static_cast<std::remove_reference_t<Take>*>(taker))(object) ? 0 : 1;
        } catch (const std::bad_alloc&) {
            return 1;  // Whoever calls is written in C.
        }
    };
    (void)Py_TYPE(container)->tp_traverse(container, visit, &take);
}

/// A deque shows its items in their order, after its type.
bool addDeque(ling::list_builder& items, PyObject* deque, std::size_t size) {
    Filler filler(items, size);
    bool isTypeShown = false;
    forEachReferent(deque, [&](PyObject* shown) {
        if (!isTypeShown && shown == reinterpret_cast<PyObject*>(Py_TYPE(deque)))
            return isTypeShown = true;
        return filler.add(shown);
    });
    return filler.isFull();
}

bool addArray(ling::list_builder& items, PyObject* array, std::size_t size) {
    bool isDone = false;
    {
        Filler filler(items, size);
        Py_buffer buffer;
        if (PyObject_GetBuffer(array, &buffer, PyBUF_FORMAT | PyBUF_ND) == 0) {
            isDone = addNumbers(filler, buffer);
            PyBuffer_Release(&buffer);
        }
    }
    forgetError();
    return isDone || addIterated(items, array, size);
}

enum class Entries { Keys, Values };

bool addEntries(ling::list_builder& items, PyObject* dict, std::size_t size, Entries wanted) {
    if (dict == nullptr)
        return false;
    Filler filler(items, size);
    PyObject* key = nullptr;
    PyObject* value = nullptr;
    for (Py_ssize_t position = 0; PyDict_Next(dict, &position, &key, &value) != 0;)
        if (!filler.add(wanted == Entries::Keys ? key : value))
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

using Add = bool (*)(ling::list_builder& items, PyObject* object, std::size_t size);

bool addKeys(ling::list_builder& items, PyObject* dict, std::size_t size) {
    return addEntries(items, dict, size, Entries::Keys);
}
bool addValues(ling::list_builder& items, PyObject* dict, std::size_t size) {
    return addEntries(items, dict, size, Entries::Values);
}
bool addKeysOfView(ling::list_builder& items, PyObject* view, std::size_t size) {
    return addKeys(items, dictOf(view), size);
}
bool addValuesOfView(ling::list_builder& items, PyObject* view, std::size_t size) {
    return addValues(items, dictOf(view), size);
}

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
    ling::list_builder items;
    return size >= 0 && add(items, object, static_cast<std::size_t>(size)) ? std::optional<ling::Any>(items.take())
                                                                           : std::nullopt;
}

}  // namespace

std::optional<ling::Any> plainItems(PyObject* object) { return take(object, wayFor(object)); }

std::optional<ling::Any> plainValues(PyObject* dict) { return take(dict, &addValues); }

}  // namespace ling::python
