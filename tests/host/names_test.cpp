#include "host/names.h"

#include "support/python_test.h"

using ling::python::GilGuard;
using ling::python::Name;
using ling::python::PyRef;

namespace {

class NamesTest : public PythonTest {};

constinit const Name kFresh{"a_name_that_only_this_test_uses"};

TEST_F(NamesTest, IsTheInternedStringEachTime) {
    GilGuard gil;
    PyRef interned = PyRef::steal(PyUnicode_InternFromString(kFresh.text()));
    EXPECT_EQ(kFresh.object(), interned.get());
    EXPECT_EQ(kFresh.object(), kFresh.object());
}

TEST_F(NamesTest, ReadsAnAttribute) {
    GilGuard gil;
    PyRef module = PyRef::steal(PyImport_ImportModule("sys"));
    PyRef path = PyRef::steal(ling::python::attribute(module.get(), ling::python::names::path));
    EXPECT_TRUE(path && PyList_Check(path.get()));
}

TEST_F(NamesTest, AMissingAttributeLeavesThePythonError) {
    GilGuard gil;
    EXPECT_EQ(ling::python::attribute(Py_None, kFresh), nullptr);
    EXPECT_NE(PyErr_ExceptionMatches(PyExc_AttributeError), 0);
    PyErr_Clear();
}

}  // namespace
