// What crossing between Python and `ling` costs, beside the same work written by hand against CPython's C interface in
// the same process: the ratio of the two is the figure that matters.

#include "bridge/convert.h"
#include "host/gil_guard.h"
#include "host/interpreter.h"
#include "host/py_ref.h"
#include "host/search_paths.h"
#include "ling/ling.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace {

using ling::Any;
using ling::python::GilGuard;
using ling::python::PyRef;

constexpr std::int64_t kMillion = 1'000'000;
constexpr int kTurns = 10'000;

void startHost() {
    static const bool started = [] {
        ling::python::addOwnSearchPaths();
        (void)ling::run_init_handlers();
        return true;
    }();
    benchmark::DoNotOptimize(started);
}

// By hand: a function, a type with a property, and a sequence of integers with its iterator.

PyObject* addByHand(PyObject*, PyObject* const* arguments, Py_ssize_t) {
    const long long sum = PyLong_AsLongLong(arguments[0]) + PyLong_AsLongLong(arguments[1]);
    return PyLong_FromLongLong(sum);
}
PyMethodDef addDefinition{"add", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(&addByHand)), METH_FASTCALL,
                          nullptr};

struct Sequence {
    PyObject ob_base;
    std::vector<std::int64_t>* items;
};
struct SequenceIterator {
    PyObject ob_base;
    Sequence* sequence;
    std::size_t next;
};

PyObject* sizeByHand(PyObject*, void*) { return PyLong_FromLong(3); }
Py_ssize_t lengthByHand(PyObject* self) {
    return static_cast<Py_ssize_t>(reinterpret_cast<Sequence*>(self)->items->size());
}
PyObject* itemByHand(PyObject* self, Py_ssize_t index) {
    const auto& items = *reinterpret_cast<Sequence*>(self)->items;
    if (index < 0 || static_cast<std::size_t>(index) >= items.size()) {
        PyErr_SetString(PyExc_IndexError, "index");
        return nullptr;
    }
    return PyLong_FromLongLong(items[static_cast<std::size_t>(index)]);
}
PyObject* nextByHand(PyObject* self) {
    auto* iterator = reinterpret_cast<SequenceIterator*>(self);
    const auto& items = *iterator->sequence->items;
    return iterator->next < items.size() ? PyLong_FromLongLong(items[iterator->next++]) : nullptr;
}
void iteratorDealloc(PyObject* self) {
    Py_DECREF(reinterpret_cast<SequenceIterator*>(self)->sequence);
    PyObject_Free(self);
}

PyTypeObject iteratorType{};
PyTypeObject sequenceType{};
PySequenceMethods sequenceMethods{};
PyGetSetDef sequenceProperties[] = {{"size", sizeByHand, nullptr, nullptr, nullptr},
                                    {nullptr, nullptr, nullptr, nullptr, nullptr}};

PyObject* iterateByHand(PyObject* self) {
    auto* iterator = PyObject_New(SequenceIterator, &iteratorType);
    iterator->sequence = reinterpret_cast<Sequence*>(Py_NewRef(self));
    iterator->next = 0;
    return reinterpret_cast<PyObject*>(iterator);
}

void readyTypes() {
    iteratorType.tp_name = "Iterator";
    iteratorType.tp_basicsize = sizeof(SequenceIterator);
    iteratorType.tp_flags = Py_TPFLAGS_DEFAULT;
    iteratorType.tp_dealloc = iteratorDealloc;
    iteratorType.tp_iter = PyObject_SelfIter;
    iteratorType.tp_iternext = nextByHand;
    sequenceMethods.sq_length = lengthByHand;
    sequenceMethods.sq_item = itemByHand;
    sequenceType.tp_name = "Sequence";
    sequenceType.tp_basicsize = sizeof(Sequence);
    sequenceType.tp_flags = Py_TPFLAGS_DEFAULT;
    sequenceType.tp_as_sequence = &sequenceMethods;
    sequenceType.tp_getset = sequenceProperties;
    sequenceType.tp_iter = iterateByHand;
    (void)PyType_Ready(&iteratorType);
    (void)PyType_Ready(&sequenceType);
}

PyObject* sequenceByHand() {
    auto* sequence = PyObject_New(Sequence, &sequenceType);
    sequence->items = new std::vector<std::int64_t>(kMillion);
    for (std::int64_t i = 0; i < kMillion; ++i)
        (*sequence->items)[static_cast<std::size_t>(i)] = i;
    return reinterpret_cast<PyObject*>(sequence);
}

Any nativeList() {
    std::vector<Any> items;
    for (std::int64_t i = 0; i < kMillion; ++i)
        items.emplace_back(i);
    return ling::List_Generic(std::move(items));
}

Any nativeThing() {
    static const ling::Class_Generic& cls = *new ling::Class_Generic(
        ling::internal::defclass_impl("Thing", "")
            .property("size", ling::internal::property_builder().getter([](const Any&) { return 3; }))
            .build());
    return cls.allocateInstance();
}

/// The names that the loops below use: each twice, by way of `ling` and by hand.
PyObject* makeNamespace() {
    readyTypes();
    PyObject* names = PyDict_New();
    auto put = [names](const char* name, PyObject* value) {
        PyDict_SetItemString(names, name, value);
        Py_DECREF(value);
    };
    PyDict_SetItemString(names, "__builtins__", PyEval_GetBuiltins());
    put("ling_add", ling::python::toPython(
                        ling::make_function("add", "a, b", [](std::int64_t a, std::int64_t b) { return a + b; })));
    put("hand_add", PyCFunction_New(&addDefinition, nullptr));
    put("ling_thing", ling::python::toPython(nativeThing()));
    put("ling_list", ling::python::toPython(nativeList()));
    put("hand_list", sequenceByHand());
    PyDict_SetItemString(names, "hand_thing", PyDict_GetItemString(names, "hand_list"));
    put("turns", PyLong_FromLong(kTurns));
    return names;
}

/// Runs a loop of Python; `%` stands for "ling" or "hand".
void runLoop(benchmark::State& state, std::string code, const char* way) {
    startHost();
    GilGuard gil;
    static PyObject* const names = makeNamespace();
    for (std::size_t at; (at = code.find('%')) != std::string::npos;)
        code.replace(at, 1, way);
    PyRef compiled = PyRef::steal(Py_CompileString(("def loop():\n " + code).c_str(), "loop", Py_file_input));
    PyRef defined = PyRef::steal(PyEval_EvalCode(compiled.get(), names, names));
    PyRef loop = PyRef::borrow(PyDict_GetItemString(names, "loop"));
    for (auto _ : state) {
        PyRef result = PyRef::steal(PyObject_CallNoArgs(loop.get()));
        if (!result) {
            PyErr_Print();
            state.SkipWithError("The loop raised.");
            return;
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

#define LOOP(name, code)                                                         \
    void name##ByLing(benchmark::State& state) { runLoop(state, code, "ling"); } \
    void name##ByHand(benchmark::State& state) { runLoop(state, code, "hand"); } \
    BENCHMARK(name##ByLing)->Unit(benchmark::kMicrosecond);                      \
    BENCHMARK(name##ByHand)->Unit(benchmark::kMicrosecond)

LOOP(CallFunction, "f = %_add\n for i in range(turns): f(i, 2)");
LOOP(ReadProperty, "t = %_thing\n for i in range(turns): t.size");
LOOP(TakeLength, "l = %_list\n for i in range(turns): len(l)");
LOOP(IndexList, "l = %_list\n for i in range(turns): l[i]");
LOOP(IterateMillion, "for i in %_list: pass");

PyRef millionIntegers() {
    PyRef list = PyRef::steal(PyList_New(kMillion));
    for (Py_ssize_t i = 0; i < kMillion; ++i)
        PyList_SET_ITEM(list.get(), i, PyLong_FromLongLong(i));
    return list;
}

void CollectMillionByLing(benchmark::State& state) {
    startHost();
    Any proxy;
    {
        GilGuard gil;
        PyRef list = millionIntegers();
        proxy = ling::python::toLing(list.get());
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(ling::unchecked<ling::I_Iterable_Generic>(proxy).collectImpl());
}
BENCHMARK(CollectMillionByLing)->Unit(benchmark::kMillisecond);

struct SixteenBytes {
    std::uint64_t tag;
    std::int64_t payload;
};

void CollectMillionByHand(benchmark::State& state) {
    startHost();
    GilGuard gil;
    PyRef list = millionIntegers();
    for (auto _ : state) {
        std::vector<SixteenBytes> items;
        items.reserve(static_cast<std::size_t>(PyList_GET_SIZE(list.get())));
        for (Py_ssize_t i = 0; i < PyList_GET_SIZE(list.get()); ++i)
            items.push_back({1, PyLong_AsLongLong(PyList_GET_ITEM(list.get(), i))});
        benchmark::DoNotOptimize(items.data());
    }
}
BENCHMARK(CollectMillionByHand)->Unit(benchmark::kMillisecond);

}  // namespace
