#include "bridge/errors.h"

#include "bridge/convert.h"
#include "ling/class_builder.h"
#include "ling/comparison.h"
#include "support/describe.h"
#include "support/python_test.h"

namespace {

Class_Generic makeErrorClass(const char* name, const char* module = "") {
    return internal::defclass_impl(name, module).parent(Error::getClass()).build();
}

/// Classes are made once: the Python classes that stand for them are kept for the process.
const Class_Generic& myError() {
    static const Class_Generic& cls = *new Class_Generic(makeErrorClass("MyError"));
    return cls;
}
const Class_Generic& deepError() {
    static const Class_Generic& cls = *new Class_Generic(makeErrorClass("DeepError", "errors_test.deep"));
    return cls;
}

// Defined once: a class that went to `ling` is kept there.
constexpr const char* kRaisedClasses = R"(
class Base(BaseException): pass
class NoText(Exception):
    def __str__(self): raise KeyError
class BadText(Exception):
    def __str__(self): return '\ud800'
class NumberText(Exception):
    def __str__(self): return 5
class Unreadable(Exception):
    @property
    def ling(self): raise KeyError
class Empty(Exception):
    ling = None
class Number(Exception):
    ling = 5
class Endless(Exception):
    @property
    def ling(self): return Endless('again')
class Stop(StopIteration): pass
)";

class ErrorsTest : public PythonTest {
protected:
    /// Runs statements that raise.
    void raise(const char* statements) {
        define("errors_test_raised", kRaisedClasses);
        PyRef dictionary = PyRef::steal(PyDict_New());
        PyDict_SetItemString(dictionary.get(), "__builtins__", PyEval_GetBuiltins());
        const std::string source = std::string("from errors_test_raised import *\n") + statements;
        PyRef result = PyRef::steal(PyRun_String(source.c_str(), Py_file_input, dictionary.get(), dictionary.get()));
        EXPECT_FALSE(result);
    }
    /// What the pending exception becomes; "none" where it is no error.
    static std::string fetched() {
        const std::optional<Error> fetchedError = fetchPythonError();
        const std::string error = describe(fetchedError ? Any(*fetchedError) : Any());
        EXPECT_EQ(PyErr_Occurred(), nullptr);
        return error;
    }
    PyRef raised() {
        EXPECT_NE(PyErr_Occurred(), nullptr);
        return PyRef::steal(PyErr_GetRaisedException());
    }
};

struct Row {
    const char* statements;
    const char* expected;
};

constexpr Row kRaised[] = {
    {"raise ValueError('bad value')", "error: bad value"},
    {"raise ValueError('a\\0b')", "error: a"},  // Shown up to the zero by the table.
    {"raise KeyError('k')", "error: 'k'"},
    {"raise StopIteration(5)", "error: 5"},
    {"raise KeyboardInterrupt", "none"},
    {"raise Base('x')", "none"},
    {"raise NoText", "error: "},
    {"raise BadText", "error: "},
    {"raise Unreadable('seen')", "error: seen"},
    {"raise Empty('x')", "none"},
    {"raise Number('x')", "none"},
    {"e = ValueError('inner')\nf = KeyError('outer')\nf.ling = e\nraise f", "error: inner"},
    {"e = ValueError('itself')\ne.ling = e\nraise e", "error: itself"},
    {"raise Endless('first')", "error: again"},
    {"e = ValueError('huge')\ne.ling = 2 ** 70\nraise e", "none"},
};

TEST_F(ErrorsTest, APendingExceptionBecomesAnErrorAndIsTakenAway) {
    GilGuard gil;
    for (const Row& row : kRaised) {
        SCOPED_TRACE(row.statements);
        raise(row.statements);
        const std::string text = fetched();
        EXPECT_EQ(std::string(text.c_str()), row.expected);
    }
}

TEST_F(ErrorsTest, AnErrorCanBeAskedForItsException) {
    GilGuard gil;
    raise(
        "import errors_test_raised, weakref\n"
        "error = NoText('x')\nerror.add_note('first')\nerror.__notes__.append(5)\n"
        "errors_test_raised.alive = weakref.ref(error)\n"
        "def deep(): raise error\ndeep()");
    PyRef alive;
    {
        const Any result = takePythonError();
        alive = eval("__import__('errors_test_raised').alive");
        const auto error = Error::cast(result);
        ASSERT_TRUE(error);
        EXPECT_TRUE(error->exception().isNone());
        const Any origin = error->propertyValue("origin");
        const auto read = [&](const char* name) {
            return display(origin.propertyValue(property_ident_untyped(name))).toStdString();
        };
        EXPECT_EQ(read("className"), "errors_test_raised.NoText");
        EXPECT_EQ(read("notes"), "['first', '5']");
        EXPECT_NE(read("traceback").find("in deep\nerrors_test_raised.NoText: <exception str() failed>\nfirst\n5"),
                  std::string::npos)
            << read("traceback");
        PyRef exception = PyRef::steal(PyObject_CallNoArgs(alive.get()));
        PyRef back = PyRef::steal(toPython(origin));
        EXPECT_EQ(back.get(), exception.get());
    }
    run("import gc\ngc.collect()");  // The exception is also among the names of the statements that raised it.
    PyRef gone = PyRef::steal(PyObject_CallNoArgs(alive.get()));
    EXPECT_EQ(gone.get(), Py_None);
}

TEST_F(ErrorsTest, WhatOnlyCallsItselfAnExceptionHasNoOrigin) {
    GilGuard gil;
    PyRef mock = eval("__import__('unittest.mock').mock.Mock(spec=ValueError('x'))");
    const auto error = Error::cast(toLing(mock.get()));
    ASSERT_TRUE(error);
    EXPECT_TRUE(error->origin().isNone());
}

TEST_F(ErrorsTest, TextsAreKeptWhole) {
    GilGuard gil;
    raise("raise ValueError('a\\0b\\U0001f600')");
    const Any error = takePythonError();
    EXPECT_EQ(Error::cast(error)->message().view(), std::u16string_view(u"a\0b\U0001F600", 5));
    EXPECT_EQ(toPython(error), nullptr);
    PyRef exception = raised();
    PyRef text = PyRef::steal(PyObject_Str(exception.get()));
    EXPECT_EQ(PyUnicode_GET_LENGTH(text.get()), 4);
}

TEST_F(ErrorsTest, ASyntaxErrorCarriesItsTraceback) {
    GilGuard gil;
    raise("compile('x =', '<text>', 'exec')");
    EXPECT_EQ(messageOf(takePythonError()).substr(0, 35), "Traceback (most recent call last):\n");
    PyRef exception = eval("SyntaxError('invalid syntax', ('<text>', 1, 4, 'x =', 1, 4))");
    EXPECT_EQ(messageOf(toLing(exception.get())),
              "  File \"<text>\", line 1\n    x =\n       ^\nSyntaxError: invalid syntax\n");
    exception = eval("IndentationError('unexpected indent')");
    EXPECT_EQ(messageOf(toLing(exception.get())), "IndentationError: unexpected indent\n");
}

TEST_F(ErrorsTest, AnErrorThatComesBackIsTheSame) {
    const Error withException("carries one");
    withException.setException(String("foreign"));
    GilGuard gil;
    for (const Error& error :
         {Error(myError(), "mine"), Error(deepError(), "deep"), withException, unchecked<Error>(StopIteration())}) {
        SCOPED_TRACE(describe(error));
        EXPECT_EQ(toPython(error), nullptr);
        const std::optional<Error> back = fetchPythonError();
        ASSERT_TRUE(back);
        EXPECT_TRUE(back->isSameAs(error));
    }
}

TEST_F(ErrorsTest, AnErrorOfAPythonClassIsRaisedAsThatClass) {
    GilGuard gil;
    define("errors_test_classes",
           "class Mine(ValueError):\n"
           "    made = 0\n"
           "    def __init__(self, *args):\n"
           "        Mine.made += 1\n"
           "class Asks(ValueError):\n"
           "    def __init__(self, needed):\n"
           "        self.args = (needed,)\n"
           "class Sealed(ValueError):\n"
           "    __slots__ = ()\n"
           "    def __setattr__(self, name, value):\n"
           "        raise TypeError\n");
    for (const char* name : {"Mine", "Asks", "Sealed"}) {
        SCOPED_TRACE(name);
        PyRef type = eval(name);
        const Any cls = toLing(type.get());
        const Error error(*Class_Generic::cast(cls), "why");
        EXPECT_EQ(toPython(error), nullptr);
        PyRef exception = raised();
        EXPECT_EQ(reinterpret_cast<PyObject*>(Py_TYPE(exception.get())), type.get());
        PyRef text = PyRef::steal(PyObject_Str(exception.get()));
        EXPECT_STREQ(PyUnicode_AsUTF8(text.get()), name == std::string("Asks") ? "why" : "");
    }
    EXPECT_EQ(PyErr_Occurred(), nullptr);
}

TEST_F(ErrorsTest, TheClassOfAnErrorFollowsTheExceptionType) {
    GilGuard gil;
    define("errors_test_raised", kRaisedClasses);
    PyRef derived = eval("Stop");
    PyRef number = eval("5");
    EXPECT_EQ(errorClassOf(nullptr), Error::getClass());
    EXPECT_EQ(errorClassOf(number.get()), Error::getClass());
    EXPECT_EQ(errorClassOf(PyExc_StopIteration), StopIteration::getClass());
    EXPECT_EQ(errorClassOf(reinterpret_cast<PyObject*>(&PyLong_Type)), Error::getClass());
    EXPECT_EQ(errorClassOf(PyExc_ValueError).name(), String("ValueError"));
    EXPECT_EQ(errorClassOf(derived.get()).name(), String("Stop"));
    raise("raise StopIteration");
    EXPECT_EQ(raw_class_of(*fetchPythonError()), StopIteration::getClass());
    raise("raise Stop('x')");
    EXPECT_EQ(raw_class_of(*fetchPythonError()), Error::getClass());
}

TEST_F(ErrorsTest, ReferencesAreGivenBack) {
    GilGuard gil;
    PyRef exception = eval("ValueError('x')");
    const Py_ssize_t before = Py_REFCNT(exception.get());
    for (int round = 0; round < 3; ++round) {
        PyErr_SetObject(PyExc_ValueError, exception.get());
        (void)fetchPythonError();
        (void)toLing(exception.get());
    }
    EXPECT_EQ(Py_REFCNT(exception.get()), before);
}

}  // namespace
