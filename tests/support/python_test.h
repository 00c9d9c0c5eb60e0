#pragma once

#include "host/gil_guard.h"
#include "host/py_ref.h"
#include "ling/any.h"
#include "ling/string.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

// The tests are about what is in these, and about little else.
using namespace ling;
using namespace ling::python;

/// A test with a running interpreter, called as a host calls: without the interpreter lock.
///
/// After each test no Python error is pending, the lock is free, and as many `ling` values are alive as before, and no
/// more Python containers and instances. What a test fills for the first time (a cache, an interned name) looks like a
/// leak the first time only, so a test with something left over runs once more, and fails if that happens again.
class PythonTest : public testing::Test {
protected:
    PythonTest();

    void SetUp() override;
    void TearDown() override;
    void TestBody() override = 0;

    /// For a test that makes what stays for the process, such as a module: values may be left over.
    void expectValuesToStay() { valuesMayStay_ = true; }

    /// Under a guard of the caller's: the value of a Python expression in a namespace of its own that has the
    /// builtins and what `run` has defined in this test. A failure of the test, and null, when it raises.
    PyRef eval(const char* expression);
    /// Runs statements in that namespace. A failure of the test when they raise.
    void run(const char* statements);
    /// Binds what `statements` define in that namespace, running them once per process: for classes, which are kept
    /// for good once they went to `ling`. `module` is the name of the module they live in.
    void define(const char* module, const char* statements);
    /// `str()` of the value of an expression. Takes the lock itself.
    std::string text(const char* expression);
    /// Takes the lock itself and runs statements.
    void runLocked(const char* statements);

private:
    PyRef runCode(const char* code, int start);
    /// What is alive on the two sides: the values of `ling`, and the objects that Python's collector knows.
    struct Alive {
        std::size_t values;
        Py_ssize_t objects;
    };

    static Alive alive();
    void forgetNamespace();

    Alive before_{};
    bool isSecondRun_ = false;
    bool valuesMayStay_ = false;
    PyObject* namespace_ = nullptr;  // Owned; dropped in TearDown, under the lock.
};

/// The message of an error result; a failure of the test, and "", for any other value.
std::string messageOf(const Any& value);
/// The text of a string value; a failure of the test, and "", for any other value.
std::string textOf(const Any& value);
