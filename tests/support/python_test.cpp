#include "support/python_test.h"

#include "ling/class.h"
#include "ling/error.h"
#include "ling/object_value.h"
#include "support/host_environment.h"

namespace {

void expectNoPendingError() {
    GilGuard gil;
    if (PyErr_Occurred() == nullptr)
        return;
    ADD_FAILURE() << "A Python error is pending after the test:";
    PyErr_Print();
}

}  // namespace

PythonTest::PythonTest() { startHost(); }

void PythonTest::SetUp() { before_ = alive(); }

void PythonTest::TearDown() {
    EXPECT_EQ(PyThreadState_GetUnchecked(), nullptr) << "The test ends with the interpreter lock held.";
    expectNoPendingError();
    forgetNamespace();
    if (HasFailure() || IsSkipped() || valuesMayStay_)
        return;
    const Alive now = alive();
    // Fewer objects are no leak: what ran before this test may only now be collected.
    if (now.values == before_.values && now.objects <= before_.objects)
        return;
    if (isSecondRun_) {
        ADD_FAILURE() << now.values << " values and " << now.objects << " objects are alive, " << before_.values
                      << " and " << before_.objects << " were before the second run.";
        return;
    }
    isSecondRun_ = true;
    SetUp();
    TestBody();
    TearDown();
}

PythonTest::Alive PythonTest::alive() {
    GilGuard gil;
    PyGC_Collect();  // Cycles are no leak.
    PyRef gc = PyRef::steal(PyImport_ImportModule("gc"));
    PyRef objects = PyRef::steal(PyObject_CallMethod(gc.get(), "get_objects", nullptr));
    return {internal::live_object_count(), PyList_GET_SIZE(objects.get())};
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

std::string messageOf(const Any& value) {
    const Result<Error> error = Error::cast(value);
    if (!error || !internal::is_error_result(value)) {
        ADD_FAILURE() << "Not an error result, but a value of the class " << qualname(value).toStdString();
        return {};
    }
    return error->message().toStdString();
}

std::string textOf(const Any& value) {
    const Result<String> string = String::cast(value);
    if (!string) {
        ADD_FAILURE() << "Not a string, but a value of the class " << qualname(value).toStdString();
        return {};
    }
    return string->toStdString();
}
