#include "language/code_wrap.h"
#include "ling/ling.h"
#include "support/host_environment.h"
#include "support/puppets.h"

#include <Python.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#ifndef LING_FUZZING
#include "proof/points.h"
#endif

/// A host for scripts that try what no example shows. As a program:
///
///     ling_proof SCRIPT [ARG…]     calls the script's `main` with the arguments; its answer is the exit status
///
/// Built for fuzzing, the same with the script `fuzz.py`, whose `one` is called for each input; what it raises is a
/// finding. Scripts find the module "proof" below, and the puppets.

namespace {

using ling::Any;
using ling::ByteArray;
using ling::String;

/// Changes a container from threads that Python never saw: each adds `count` numbers of its own, from 100 on. A
/// function is called with them.
Any crowd(const Any& container, std::int64_t threads, std::int64_t count) {
    std::vector<std::thread> running;
    Py_BEGIN_ALLOW_THREADS;
    for (std::int64_t thread = 0; thread < threads; ++thread)
        running.emplace_back([&container, thread, count] {
            for (std::int64_t i = 0; i < count; ++i) {
                const Any number = 100 + thread * count + i;
                if (const auto list = ling::I_MutableSequence_Generic::cast(container))
                    (void)list->append(number);
                else if (const auto set = ling::I_MutableSet_Generic::cast(container))
                    (void)set->insert(number);
                else if (const auto map = ling::I_MutableMap_Generic::cast(container))
                    (void)map->set(number, number);
                else if (const auto function = ling::I_Invokable_Generic::cast(container))
                    (void)function->invoke(std::vector<Any>{number});
            }
        });
    for (std::thread& each : running)
        each.join();
    Py_END_ALLOW_THREADS;
    return Any();
}

/// Text from the bytes of its units, whatever they are, and the bytes of a text's units.
Any textOfUnits(const ByteArray& units) {
    std::u16string text(units.size() / 2, u'\0');
    std::memcpy(text.data(), units.data(), text.size() * 2);
    return ling::Tuple_Generic({String(text)});
}
Any unitsOfText(const String& text) {
    const std::u16string_view units = text.view();
    return ByteArray(std::string_view(reinterpret_cast<const char*>(units.data()), units.size() * 2));
}

std::string wrapMethod(const String& code, const std::vector<std::string>& names) {
    const std::vector<String> variables(names.begin(), names.end());
    return ling::python::wrapMethod(code, variables).toStdString();
}

/// What the loader says of each file of a directory: its name and the problem.
std::vector<std::string> load(const std::string& directory) {
    std::vector<std::string> told;
    for (const ling::ExtensionReport& report : ling::load_extensions(directory))
        told.push_back(report.file.filename().string() + ": " + report.problem.toStdString());
    return told;
}

void defineProof() {
    const auto add = [](const char* name, const char* parameters, auto code) {
        (void)ling::internal::register_function("proof", ling::make_function(name, parameters, code));
    };
    add("crowd", "container, threads, count", &crowd);
    add("text_of_units", "units", &textOfUnits);
    add("units_of_text", "text", &unitsOfText);
    add("wrap_method", "code, names", &wrapMethod);
    add("wrap_body", "code", [](const String& code) { return ling::python::wrapFunctionBody(code).toStdString(); });
    add("load", "directory", &load);
    add("live", "", [] { return static_cast<std::int64_t>(ling::internal::live_object_count()); });
#ifndef LING_FUZZING
    add("fail_at", "nth, oursOnly", [](std::int64_t nth, bool oursOnly) { proof::points::failAt(nth, oursOnly); });
    add("stop", "", [] { return static_cast<std::int64_t>(proof::points::stop()); });
    add("blocks", "", [] { return static_cast<std::int64_t>(proof::points::liveBlocks()); });
#endif
}

/// The function `name` of the script, a new reference. Ends the process when there is none.
PyObject* functionOf(const char* script, const char* name) {
    PyObject* path = PySys_GetObject("path");
    PyObject* folder = PyUnicode_FromStringAndSize(script, std::strrchr(script, '/') - script);
    PyList_Insert(path, 0, folder);
    Py_XDECREF(folder);
    PyObject* runpy = PyImport_ImportModule("runpy");
    PyObject* names = PyObject_CallMethod(runpy, "run_path", "s", script);
    PyObject* function = names != nullptr ? PyMapping_GetItemString(names, name) : nullptr;
    if (function == nullptr) {
        PyErr_Print();
        std::exit(1);
    }
    return function;
}

void start() {
    startHost();
    defineProof();
    definePuppets();
}

}  // namespace

#ifdef LING_FUZZING

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static PyObject* one = nullptr;
    if (one == nullptr) {
        start();
        (void)PyGILState_Ensure();  // For good: this thread is the only one that calls.
        one = functionOf(LING_PROOF_SCRIPTS "/fuzz.py", "one");
    }
    PyObject* done = PyObject_CallFunction(one, "y#", reinterpret_cast<const char*>(data), Py_ssize_t(size));
    if (done == nullptr) {
        PyErr_Print();
        std::abort();
    }
    Py_DECREF(done);
    return 0;
}

#else

int main(int argc, char** argv) {
    if (argc < 2 || std::strchr(argv[1], '/') == nullptr) {
        std::fprintf(stderr, "usage: %s PATH/SCRIPT [ARG…]\n", argv[0]);
        return 2;
    }
    start();
    const PyGILState_STATE state = PyGILState_Ensure();
    proof::points::watchPython();
    PyObject* main = functionOf(argv[1], "main");
    PyObject* arguments = PyTuple_New(argc - 2);
    for (int i = 2; i < argc; ++i)
        PyTuple_SET_ITEM(arguments, i - 2, PyUnicode_DecodeFSDefault(argv[i]));
    PyObject* answer = PyObject_CallObject(main, arguments);
    const long status = answer != nullptr ? PyLong_AsLong(answer) : 1;
    if (PyErr_Occurred() != nullptr)
        PyErr_Print();
    Py_XDECREF(answer);
    Py_XDECREF(arguments);
    Py_XDECREF(main);
    (void)PyRun_SimpleString("import sys; sys.stdout.flush()");
    PyGILState_Release(state);
    return static_cast<int>(status);
}

#endif
