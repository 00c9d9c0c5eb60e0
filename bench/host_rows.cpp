#include "rows.h"

#include "by_hand.h"

#include "bridge/convert.h"
#include "host/gil_guard.h"
#include "host/py_ref.h"
#include "ling/ling.h"

#include <memory>

namespace ling::bench {

namespace {

using python::GilGuard;
using python::PyRef;

constexpr Py_ssize_t kMillion = 1'000'000;
constexpr std::size_t kBulk = 100'000;

constexpr const char* kCode = R"(
import array, collections
def nothing(): pass
def add(a, b): return a + b
def fail(): raise ValueError("no such thing")
class Thing:
    def plus(self, number): return number + 3
thing = Thing()
table = {"letter": 1234567, "number": 2}
bulk = list(range(100000))
bulk_range, bulk_tuple, bulk_array = range(100000), tuple(bulk), array.array("q", bulk)
bulk_deque, bulk_set, bulk_dict = collections.deque(bulk), set(bulk), dict.fromkeys(bulk)
bulk_keys, bulk_values, bulk_items = bulk_dict.keys(), dict(enumerate(bulk)).values(), bulk_dict.items()
million = list(range(1000000))
)";

/// The objects that the code above defines, kept for the process.
PyObject* object(const char* name) {
    static PyObject* const names = [] {
        PyObject* made = PyDict_New();
        PyDict_SetItemString(made, "__builtins__", PyEval_GetBuiltins());
        if (!PyRef::steal(PyRun_String(kCode, Py_file_input, made, made)))
            PyErr_Print();
        return made;
    }();
    return PyDict_GetItemString(names, name);
}

I_Invokable_Generic function(const char* name) { return unchecked<I_Invokable_Generic>(python::toLing(object(name))); }

std::int64_t integerByHand(PyObject* owned) {
    const std::int64_t number = PyLong_AsLongLong(owned);
    Py_DECREF(owned);
    return number;
}

/// Reads an integer that is not owned, nearly all of them where they stand.
std::int64_t integerInPlace(PyObject* object) {
    auto* number = reinterpret_cast<PyLongObject*>(object);
    return PyLong_CheckExact(object) && PyUnstable_Long_IsCompact(number) ? PyUnstable_Long_CompactValue(number)
                                                                          : PyLong_AsLongLong(object);
}

Figures callNothing() {
    const GilGuard gil;
    PyObject* hand = object("nothing");
    return compare({repeat([f = function("nothing")] { keep(f()); }),
                    repeat([hand] { (void)PyRef::steal(PyObject_CallNoArgs(hand)); })});
}

std::int64_t addByHand(PyObject* add, std::int64_t a, std::int64_t b) {
    PyObject* arguments[] = {nullptr, PyLong_FromLongLong(a), PyLong_FromLongLong(b)};
    const std::int64_t sum =
        integerByHand(PyObject_Vectorcall(add, arguments + 1, 2 | PY_VECTORCALL_ARGUMENTS_OFFSET, nullptr));
    Py_DECREF(arguments[1]);
    Py_DECREF(arguments[2]);
    return sum;
}

Figures callWithIntegers() {
    const GilGuard gil;
    PyObject* hand = object("add");
    return compare({repeat([f = function("add"), i = std::int64_t(0)]() mutable { keep(f(++i, 100'000)); }),
                    repeat([hand, i = std::int64_t(0)]() mutable { keep(addByHand(hand, ++i, 100'000)); })});
}

Figures callFromOutside() {
    PyObject* hand;
    I_Invokable_Generic add;
    {
        const GilGuard gil;
        hand = object("add");
        add = function("add");
    }
    return compare({repeat([add, i = std::int64_t(0)]() mutable { keep(add(++i, 100'000)); }),
                    repeat([hand, i = std::int64_t(0)]() mutable {
                        const PyGILState_STATE state = PyGILState_Ensure();
                        keep(addByHand(hand, ++i, 100'000));
                        PyGILState_Release(state);
                    })});
}

Figures callMethodByName() {
    const GilGuard gil;
    PyObject* hand = object("thing");
    PyObject* name = PyUnicode_InternFromString("plus");
    const method_ident_untyped plus("plus");
    return compare({repeat([thing = python::toLing(hand), &plus] { keep(thing.callMethod(plus, {1234567})); }),
                    repeat([hand, name] {
                        PyObject* arguments[] = {hand, PyLong_FromLongLong(1234567)};
                        keep(integerByHand(
                            PyObject_VectorcallMethod(name, arguments, 2 | PY_VECTORCALL_ARGUMENTS_OFFSET, nullptr)));
                        Py_DECREF(arguments[1]);
                    })});
}

Figures evaluateText() {
    const GilGuard gil;
    const Class_Generic language = find_class(u"ling.python.LanguagePython");
    const String text(u"1+2");
    return compare({repeat([&] { keep(language.callMethod(I_Language::$evaluateExpression, {text})); }), repeat([] {
                        PyRef names = PyRef::steal(PyDict_New());
                        PyDict_SetItemString(names.get(), "__builtins__", PyEval_GetBuiltins());
                        keep(integerByHand(PyRun_String("1+2", Py_eval_input, names.get(), names.get())));
                    })});
}

Figures itemByIndex() {
    const GilGuard gil;
    PyObject* hand = object("bulk");
    const Any list = python::toLing(hand);
    return compare(
        {repeat([&, i = std::size_t(0)]() mutable { keep(unchecked<I_Sequence_Generic>(list).at(++i % kBulk)); }),
         repeat([hand, i = std::size_t(0)]() mutable {
             keep(integerInPlace(PyList_GET_ITEM(hand, static_cast<Py_ssize_t>(++i % kBulk))));
         })});
}

Figures iterateList() {
    const GilGuard gil;
    PyObject* hand = object("million");
    const Any list = python::toLing(hand);
    const auto work = [&] {
        for (iteration walk = unchecked<I_Iterable_Generic>(list).beginImpl(); walk.advance();)
            keep(walk.item());
    };
    const auto yardstick = [hand] {
        PyRef iterator = PyRef::steal(PyObject_GetIter(hand));
        while (PyRef item = PyRef::steal(PyIter_Next(iterator.get())))
            keep(integerInPlace(item.get()));
    };
    return compare({repeat(work), repeat(yardstick), nullptr, kMillion});
}

/// All items at once into a native list. By hand it is the list's, whatever the work collects.
Figures collectAll(const char* name) {
    const GilGuard gil;
    PyObject* list = object("bulk");
    const Any items = python::toLing(object(name));
    const auto yardstick = [list] {
        const auto size = static_cast<std::size_t>(PyList_GET_SIZE(list));
        const std::unique_ptr<HandValue[]> values(new HandValue[size]);
        for (std::size_t i = 0; i < size; ++i)
            values[i] = {1, integerInPlace(PyList_GET_ITEM(list, static_cast<Py_ssize_t>(i)))};
        keep(values[size - 1].payload);
    };
    return compare(
        {repeat([&] { keep(unchecked<I_Iterable_Generic>(items).collectImpl()); }), repeat(yardstick), nullptr, kBulk});
}

/// All entries of a dict at once: each is a tuple, which both sides hold in a counted value of their own.
Figures collectEntries() {
    const GilGuard gil;
    PyObject* hand = object("bulk_items");
    const Any items = python::toLing(hand);
    const auto yardstick = [hand] {
        struct Held {
            std::size_t count;
            PyRef tuple;
        };
        std::vector<std::unique_ptr<Held>> values;
        values.reserve(kBulk);
        PyRef iterator = PyRef::steal(PyObject_GetIter(hand));
        while (PyRef tuple = PyRef::steal(PyIter_Next(iterator.get())))
            values.push_back(std::unique_ptr<Held>(new Held{1, std::move(tuple)}));
        keep(values.size());
    };
    return compare(
        {repeat([&] { keep(unchecked<I_Iterable_Generic>(items).collectImpl()); }), repeat(yardstick), nullptr, kBulk});
}

Figures valueByText() {
    const GilGuard gil;
    PyObject* hand = object("table");
    const Any table = python::toLing(hand);
    return compare({repeat([&] { keep(unchecked<I_Map_Generic>(table).get(String("letter"))); }), repeat([hand] {
                        PyRef key = PyRef::steal(PyUnicode_FromStringAndSize("letter", 6));
                        keep(PyLong_AsLongLong(PyDict_GetItemWithError(hand, key.get())));
                    })});
}

Figures pythonRaises() {
    const GilGuard gil;
    PyObject* hand = object("fail");
    return compare({repeat([f = function("fail")] { keep(f()); }), repeat([hand] {
                        (void)PyRef::steal(PyObject_CallNoArgs(hand));
                        PyRef raised = PyRef::steal(PyErr_GetRaisedException());
                        PyRef text = PyRef::steal(PyObject_Str(raised.get()));
                        keep(textByHand(text.get()));
                    })});
}

Figures textToLing(const std::u16string& units) {
    const GilGuard gil;
    PyRef text = PyRef::steal(textByHand(units));
    return compare({repeat([&] { keep(python::toLing(text.get())); }), repeat([&] { keep(textByHand(text.get())); })});
}

Figures textToPython(const std::u16string& units) {
    const GilGuard gil;
    const String text(units);
    return compare({repeat([&] { (void)PyRef::steal(python::toPython(text)); }),
                    repeat([&] { (void)PyRef::steal(textByHand(units)); })});
}

}  // namespace

std::vector<Row> hostRows() {
    std::vector<Row> rows{
        {"h call, no argument", 1.5, callNothing},
        {"h call, two integers", 1.15, callWithIntegers},
        {"h call, lock taken each time", 1.2, callFromOutside},
        {"h method by name, one integer", 1.4, callMethodByName},
        {"h evaluate 1+2 from text", 1.15, evaluateText},
        {"h item of a list by index", 8, itemByIndex},
        {"h iterate a list, each item", 2, iterateList},
        {"h bulk, list, each item", 1.3, [] { return collectAll("bulk"); }},
    };
    for (const char* kind : {"tuple", "range", "array", "deque", "set", "keys", "values"})
        rows.push_back({std::string("h bulk, ") + kind + ", each item", 2.6,
                        [kind] { return collectAll((std::string("bulk_") + kind).c_str()); }});
    rows.push_back({"h bulk, items, each", 2.6, collectEntries});
    rows.push_back({"h value of a dict by text", 2, valueByText});
    rows.push_back({"h Python raises, host takes the error", 2.5, pythonRaises});
    for (const TextSample& text : kTextSamples)
        rows.push_back({std::string("h text to ling, ") + text.name, 1.5, [&] { return textToLing(text.make()); }});
    for (const TextSample& text : kTextSamples)
        rows.push_back({std::string("h text to Python, ") + text.name, 1.5, [&] { return textToPython(text.make()); }});
    return rows;
}

}  // namespace ling::bench
