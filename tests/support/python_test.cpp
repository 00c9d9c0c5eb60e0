#include "support/python_test.h"

#include "ling/class.h"
#include "ling/error.h"
#include "ling/object_value.h"
#include "support/host_environment.h"

using ling::python::GilGuard;
using ling::python::PyRef;

namespace {

/// Cycles that hold values are no leak: they go with the next collection.
void collectGarbage() {
    GilGuard gil;
    PyGC_Collect();
}

void expectNoPendingError() {
    GilGuard gil;
    if (PyErr_Occurred() == nullptr)
        return;
    ADD_FAILURE() << "A Python error is pending after the test:";
    PyErr_Print();
}

}  // namespace

PythonTest::PythonTest() { startHost(); }

void PythonTest::SetUp() {
    collectGarbage();
    before_ = ling::internal::live_object_count();
}

void PythonTest::TearDown() {
    EXPECT_EQ(PyThreadState_GetUnchecked(), nullptr) << "The test ends with the interpreter lock held.";
    expectNoPendingError();
    if (HasFailure() || IsSkipped() || valuesMayStay_ || isBalanced(before_)) {
        forgetNamespace();
        return;
    }
    const std::size_t again = ling::internal::live_object_count();
    TestBody();
    EXPECT_TRUE(isBalanced(again)) << ling::internal::live_object_count() << " values are alive, " << again
                                   << " were before the second run.";
    expectNoPendingError();
}

bool PythonTest::isBalanced(std::size_t before) {
    forgetNamespace();
    collectGarbage();
    return ling::internal::live_object_count() == before;
}

void PythonTest::forgetNamespace() {
    if (namespace_ == nullptr)
        return;
    GilGuard gil;
    PyDict_Clear(namespace_);
    Py_CLEAR(namespace_);
}

PyRef PythonTest::runCode(const char* code, int start) {
    if (namespace_ == nullptr) {
        namespace_ = PyDict_New();
        PyDict_SetItemString(namespace_, "__builtins__", PyEval_GetBuiltins());
    }
    PyRef result = PyRef::steal(PyRun_String(code, start, namespace_, namespace_));
    if (!result) {
        ADD_FAILURE() << code;
        PyErr_Print();
    }
    return result;
}

PyRef PythonTest::eval(const char* expression) { return runCode(expression, Py_eval_input); }

void PythonTest::run(const char* statements) { (void)runCode(statements, Py_file_input); }

void PythonTest::runLocked(const char* statements) {
    GilGuard gil;
    run(statements);
}

void PythonTest::define(const char* module, const char* statements) {
    PyRef name = PyRef::steal(PyUnicode_FromString(module));
    PyRef known = PyRef::steal(PyImport_GetModule(name.get()));
    PyObject* made = known ? known.get() : PyImport_AddModule(module);
    PyObject* dictionary = PyModule_GetDict(made);
    if (!known) {
        PyDict_SetItemString(dictionary, "__builtins__", PyEval_GetBuiltins());
        PyRef result = PyRef::steal(PyRun_String(statements, Py_file_input, dictionary, dictionary));
        EXPECT_TRUE(result) << statements;
    }
    run((std::string("from ") + module + " import *").c_str());
}

std::string PythonTest::text(const char* expression) {
    GilGuard gil;
    PyRef value = eval(expression);
    PyRef shown = PyRef::steal(value ? PyObject_Str(value.get()) : nullptr);
    const char* utf8 = shown ? PyUnicode_AsUTF8(shown.get()) : nullptr;
    PyErr_Clear();
    return utf8 != nullptr ? utf8 : "";
}

std::string messageOf(const ling::Any& value) {
    const ling::Result<ling::Error> error = ling::Error::cast(value);
    if (!error || !ling::internal::is_error_result(value)) {
        ADD_FAILURE() << "Not an error result, but a value of the class " << ling::qualname(value).toStdString();
        return {};
    }
    return error->message().toStdString();
}

std::string textOf(const ling::Any& value) {
    const ling::Result<ling::String> string = ling::String::cast(value);
    if (!string) {
        ADD_FAILURE() << "Not a string, but a value of the class " << ling::qualname(value).toStdString();
        return {};
    }
    return string->toStdString();
}
