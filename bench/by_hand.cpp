#include "by_hand.h"

#include "measure.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace ling::bench {

namespace {

HandTextRef makeText(std::size_t size) {
    auto* text = static_cast<HandText*>(std::malloc(sizeof(HandText) + size * sizeof(char16_t)));
    text->count = 1;
    text->size = size;
    return HandTextRef(text);
}

void widen(const Py_UCS1* source, std::size_t size, char16_t* target) {
    std::size_t at = 0;
#ifdef __SSE2__
    const __m128i zero = _mm_setzero_si128();
    for (; at + 16 <= size; at += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + at));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + at), _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + at + 8), _mm_unpackhi_epi8(bytes, zero));
    }
#endif
    for (; at < size; ++at)
        target[at] = source[at];
}

void narrow(const char16_t* source, std::size_t size, Py_UCS1* target) {
    std::size_t at = 0;
#ifdef __SSE2__
    for (; at + 16 <= size; at += 16) {
        const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + at));
        const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + at + 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + at), _mm_packus_epi16(first, second));
    }
#endif
    for (; at < size; ++at)
        target[at] = static_cast<Py_UCS1>(source[at]);
}

/// All bits of all units, and whether one of them is a surrogate.
struct Bits {
    unsigned all = 0;
    bool surrogate = false;
};

Bits bitsOf(const char16_t* units, std::size_t size) {
    Bits bits;
    std::size_t at = 0;
#ifdef __SSE2__
    const __m128i mask = _mm_set1_epi16(static_cast<short>(0xF800));
    const __m128i wanted = _mm_set1_epi16(static_cast<short>(0xD800));
    __m128i all = _mm_setzero_si128();
    __m128i found = _mm_setzero_si128();
    for (; at + 8 <= size; at += 8) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + at));
        all = _mm_or_si128(all, block);
        found = _mm_or_si128(found, _mm_cmpeq_epi16(_mm_and_si128(block, mask), wanted));
    }
    std::uint16_t lanes[8];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), all);
    for (const unsigned lane : lanes)
        bits.all |= lane;
    bits.surrogate = _mm_movemask_epi8(found) != 0;
#endif
    for (; at < size; ++at) {
        bits.all |= units[at];
        bits.surrogate |= (units[at] & 0xF800) == 0xD800;
    }
    return bits;
}

// Functions.

std::u16string given;

PyObject* callNothing(PyObject*, PyObject*) { Py_RETURN_NONE; }

PyObject* blockNothing(PyObject*, PyObject*) {
    Py_BEGIN_ALLOW_THREADS;
    Py_END_ALLOW_THREADS;
    Py_RETURN_NONE;
}

PyObject* add(PyObject*, PyObject* const* arguments, Py_ssize_t) {
    return PyLong_FromLongLong(PyLong_AsLongLong(arguments[0]) + PyLong_AsLongLong(arguments[1]));
}

/// A host holds what it is given in a counted value of its own.
struct Held {
    explicit Held(PyObject* taken) : object(Py_NewRef(taken)) {}
    ~Held() { Py_DECREF(object); }
    std::size_t count = 1;
    PyObject* object;
};

PyObject* take(PyObject*, PyObject* object) {
    auto* held = new Held(object);
    keep(held);
    if (--held->count == 0)
        delete held;
    Py_RETURN_NONE;
}

PyObject* fail(PyObject*, PyObject*) {
    PyErr_SetString(PyExc_RuntimeError, "No such thing.");
    return nullptr;
}

PyObject* takeText(PyObject*, PyObject* unicode) {
    const HandTextRef text = textByHand(unicode);
    return PyLong_FromSize_t(text->size);
}

PyObject* giveText(PyObject*, PyObject*) { return textByHand(given); }

PyMethodDef functions[] = {
    {"call0", callNothing, METH_NOARGS, nullptr},
    {"block0", blockNothing, METH_NOARGS, nullptr},
    {"add", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(&add)), METH_FASTCALL, nullptr},
    {"take", take, METH_O, nullptr},
    {"fail", fail, METH_NOARGS, nullptr},
    {"takeText", takeText, METH_O, nullptr},
    {"giveText", giveText, METH_NOARGS, nullptr},
};

// A type with a value of its own, a property and a method.

struct Thing {
    PyObject ob_base;
    std::int64_t* value;
};

PyTypeObject thingType{};

PyObject* makeThing(PyObject*, PyObject* const* arguments, std::size_t, PyObject*) {
    const std::int64_t value = PyLong_AsLongLong(arguments[0]);
    auto* thing = PyObject_New(Thing, &thingType);
    thing->value = new std::int64_t(value);
    return reinterpret_cast<PyObject*>(thing);
}
void dropThing(PyObject* self) {
    delete reinterpret_cast<Thing*>(self)->value;
    PyObject_Free(self);
}
PyObject* getSize(PyObject* self, void*) { return PyLong_FromLongLong(*reinterpret_cast<Thing*>(self)->value); }
int setSize(PyObject* self, PyObject* value, void*) {
    *reinterpret_cast<Thing*>(self)->value = PyLong_AsLongLong(value);
    return 0;
}
PyObject* plus(PyObject* self, PyObject* number) {
    return PyLong_FromLongLong(*reinterpret_cast<Thing*>(self)->value + PyLong_AsLongLong(number));
}
PyGetSetDef thingProperties[] = {{"size", getSize, setSize, nullptr, nullptr},
                                 {nullptr, nullptr, nullptr, nullptr, nullptr}};
PyMethodDef thingMethods[] = {{"plus", plus, METH_O, nullptr}, {nullptr, nullptr, 0, nullptr}};

// A sequence of integers with its iterator.

struct Sequence {
    PyObject ob_base;
    std::vector<std::int64_t>* items;
};
struct SequenceIterator {
    PyObject ob_base;
    Sequence* sequence;
    std::size_t next;
};

PyTypeObject sequenceType{};
PyTypeObject iteratorType{};
PySequenceMethods sequenceMethods{};

Py_ssize_t lengthOf(PyObject* self) {
    return static_cast<Py_ssize_t>(reinterpret_cast<Sequence*>(self)->items->size());
}
PyObject* itemOf(PyObject* self, Py_ssize_t index) {
    const auto& items = *reinterpret_cast<Sequence*>(self)->items;
    if (index < 0 || static_cast<std::size_t>(index) >= items.size()) {
        PyErr_SetString(PyExc_IndexError, "index");
        return nullptr;
    }
    return PyLong_FromLongLong(items[static_cast<std::size_t>(index)]);
}
PyObject* nextOf(PyObject* self) {
    auto* iterator = reinterpret_cast<SequenceIterator*>(self);
    const auto& items = *iterator->sequence->items;
    return iterator->next < items.size() ? PyLong_FromLongLong(items[iterator->next++]) : nullptr;
}
void dropIterator(PyObject* self) {
    Py_DECREF(reinterpret_cast<SequenceIterator*>(self)->sequence);
    PyObject_Free(self);
}
PyObject* iterate(PyObject* self) {
    auto* iterator = PyObject_New(SequenceIterator, &iteratorType);
    iterator->sequence = reinterpret_cast<Sequence*>(Py_NewRef(self));
    iterator->next = 0;
    return reinterpret_cast<PyObject*>(iterator);
}

void readyType(PyTypeObject& type, const char* name, std::size_t size) {
    type.tp_name = name;
    type.tp_basicsize = static_cast<Py_ssize_t>(size);
    type.tp_flags = Py_TPFLAGS_DEFAULT;
    (void)PyType_Ready(&type);
}

void readyTypes() {
    thingType.tp_dealloc = dropThing;
    thingType.tp_getset = thingProperties;
    thingType.tp_methods = thingMethods;
    thingType.tp_vectorcall = makeThing;
    readyType(thingType, "Thing", sizeof(Thing));
    iteratorType.tp_dealloc = dropIterator;
    iteratorType.tp_iter = PyObject_SelfIter;
    iteratorType.tp_iternext = nextOf;
    readyType(iteratorType, "Iterator", sizeof(SequenceIterator));
    sequenceMethods.sq_length = lengthOf;
    sequenceMethods.sq_item = itemOf;
    sequenceType.tp_as_sequence = &sequenceMethods;
    sequenceType.tp_iter = iterate;
    readyType(sequenceType, "Sequence", sizeof(Sequence));
}

PyObject* makeSequence(std::size_t length) {
    auto* sequence = PyObject_New(Sequence, &sequenceType);
    sequence->items = new std::vector<std::int64_t>(length);
    for (std::size_t i = 0; i < length; ++i)
        (*sequence->items)[i] = static_cast<std::int64_t>(i);
    return reinterpret_cast<PyObject*>(sequence);
}

}  // namespace

void FreeText::operator()(HandText* text) const noexcept {
    if (--text->count == 0)
        std::free(text);
}

HandTextRef textByHand(PyObject* unicode) {
    const auto size = static_cast<std::size_t>(PyUnicode_GET_LENGTH(unicode));
    if (PyUnicode_KIND(unicode) == PyUnicode_4BYTE_KIND)
        return nullptr;
    HandTextRef text = makeText(size);
    if (PyUnicode_KIND(unicode) == PyUnicode_1BYTE_KIND) {
        widen(PyUnicode_1BYTE_DATA(unicode), size, text->units);
        return text;
    }
    std::memcpy(text->units, PyUnicode_2BYTE_DATA(unicode), size * sizeof(char16_t));
    return bitsOf(text->units, size).surrogate ? nullptr : std::move(text);
}

PyObject* textByHand(std::u16string_view units) {
    const Bits bits = bitsOf(units.data(), units.size());
    if (bits.surrogate)
        return nullptr;
    PyObject* unicode = PyUnicode_New(static_cast<Py_ssize_t>(units.size()), bits.all);
    if (bits.all < 0x100)
        narrow(units.data(), units.size(), PyUnicode_1BYTE_DATA(unicode));
    else
        std::memcpy(PyUnicode_2BYTE_DATA(unicode), units.data(), units.size() * sizeof(char16_t));
    return unicode;
}

std::u16string TextSample::make() const {
    std::u16string text;
    while (text.size() < size)
        text += word;
    text.resize(size);
    return text;
}

void giveByHand(std::u16string_view units) { given = units; }

void addByHand(PyObject* names, std::size_t listLength) {
    readyTypes();
    auto put = [names](const std::string& name, PyObject* value) {
        (void)PyDict_SetItemString(names, ("hand_" + name).c_str(), value);
        Py_DECREF(value);
    };
    for (PyMethodDef& function : functions)
        put(function.ml_name, PyCFunction_New(&function, nullptr));
    put("Thing", Py_NewRef(reinterpret_cast<PyObject*>(&thingType)));
    PyObject* const argument = PyLong_FromLong(3);
    put("thing", makeThing(nullptr, &argument, 1, nullptr));
    put("list", makeSequence(listLength));
}

}  // namespace ling::bench
