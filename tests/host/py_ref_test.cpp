#include "host/py_ref.h"

#include "support/python_test.h"

#include <utility>

using ling::python::GilGuard;
using ling::python::PyRef;

namespace {

/// An object whose references are counted, with one reference of the test's own.
class PyRefTest : public PythonTest {
protected:
    void makeObject() { object_ = PyList_New(0); }
    void dropObject() { Py_CLEAR(object_); }
    Py_ssize_t count() const { return Py_REFCNT(object_); }

    PyObject* object_ = nullptr;
};

TEST_F(PyRefTest, EachOperationOwnsExactlyWhatItSays) {
    GilGuard gil;
    makeObject();
    {
        PyRef borrowed = PyRef::borrow(object_);
        EXPECT_EQ(count(), 2);
        PyRef stolen = PyRef::steal(Py_NewRef(object_));
        EXPECT_EQ(count(), 3);
        PyRef copy = borrowed;
        EXPECT_EQ(count(), 4);
        PyRef moved = std::move(copy);
        EXPECT_EQ(count(), 4);
        EXPECT_FALSE(copy);  // NOLINT(bugprone-use-after-move): a moved-from reference is null.
        copy = stolen;
        EXPECT_EQ(count(), 5);
        copy = std::move(moved);
        EXPECT_EQ(count(), 4);
        copy = PyRef();
        EXPECT_EQ(count(), 3);
    }
    EXPECT_EQ(count(), 1);
    dropObject();
}

TEST_F(PyRefTest, ReleaseGivesTheReferenceAway) {
    GilGuard gil;
    makeObject();
    PyObject* given = nullptr;
    {
        PyRef reference = PyRef::borrow(object_);
        given = reference.release();
        EXPECT_FALSE(reference);
    }
    EXPECT_EQ(given, object_);
    EXPECT_EQ(count(), 2);
    Py_DECREF(given);
    dropObject();
}

TEST_F(PyRefTest, NullIsAReferenceToNothing) {
    GilGuard gil;
    PyRef null = PyRef::steal(nullptr);
    PyRef alsoNull = PyRef::borrow(nullptr);
    PyRef copy = null;
    EXPECT_FALSE(null || alsoNull || copy);
    EXPECT_EQ(null.get(), nullptr);
    EXPECT_EQ(null.release(), nullptr);
}

TEST_F(PyRefTest, AssigningToItselfKeepsTheObject) {
    GilGuard gil;
    makeObject();
    PyRef reference = PyRef::borrow(object_);
    PyRef& same = reference;
    reference = same;
    EXPECT_EQ(reference.get(), object_);
    EXPECT_EQ(count(), 2);
    reference = PyRef();
    dropObject();
}

TEST_F(PyRefTest, AnAssignmentIsWholeBeforeTheOldObjectGoes) {
    GilGuard gil;
    run("class Watcher:\n    def __del__(self): seen.append(True)\nseen = []\n");
    PyRef reference = eval("Watcher()");
    reference = eval("seen");
    EXPECT_EQ(PyList_GET_SIZE(reference.get()), 1);
}

TEST_F(PyRefTest, ANewReferenceGoesWhenTheNextCallFails) {
    GilGuard gil;
    makeObject();
    {
        PyRef first = PyRef::borrow(object_);
        PyRef second = PyRef::steal(PyObject_GetAttrString(first.get(), "no_such_attribute"));
        EXPECT_FALSE(second);
        PyErr_Clear();
    }
    EXPECT_EQ(count(), 1);
    dropObject();
}

}  // namespace
