#include "host/boxed_object.h"
#include "host/names.h"
#include "host/py_ref.h"
#include "ling/basic_values.h"
#include "ling/class.h"
#include "ling/list.h"
#include "support/python_test.h"

#include <utility>

/// References to Python objects: owned ones, and pointers in a box of `ling`.

namespace {

class ReferencesTest : public PythonTest {};

TEST_F(ReferencesTest, EachOperationOwnsExactlyWhatItSays) {
    GilGuard gil;
    PyObject* const object = PyList_New(0);
    const auto count = [object] { return Py_REFCNT(object); };
    {
        PyRef borrowed = PyRef::borrow(object);
        EXPECT_EQ(count(), 2);
        PyRef stolen = PyRef::steal(Py_NewRef(object));
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
        PyRef& same = copy;
        copy = same;
        EXPECT_EQ(count(), 4);
        copy = PyRef();
        EXPECT_EQ(count(), 3);
        PyObject* const given = borrowed.release();
        EXPECT_FALSE(borrowed);
        EXPECT_EQ(count(), 3);
        Py_DECREF(given);
    }
    EXPECT_EQ(count(), 1);
    Py_DECREF(object);
    EXPECT_FALSE(PyRef::steal(nullptr) || PyRef::borrow(nullptr));
}

TEST_F(ReferencesTest, AnAssignmentIsWholeBeforeTheOldObjectGoes) {
    GilGuard gil;
    run("class Watcher:\n    def __del__(self): seen.append(True)\nseen = []\n");
    PyRef reference = eval("Watcher()");
    reference = eval("seen");
    EXPECT_EQ(PyList_GET_SIZE(reference.get()), 1);
}

TEST_F(ReferencesTest, AMissingAttributeLeavesThePythonError) {
    static constinit const Name kFresh{"a_name_that_only_this_test_uses"};
    GilGuard gil;
    EXPECT_EQ(attribute(Py_None, kFresh), nullptr);
    EXPECT_NE(PyErr_ExceptionMatches(PyExc_AttributeError), 0);
    PyErr_Clear();
}

TEST_F(ReferencesTest, ABoxCarriesThePointerWithoutCountingIt) {
    GilGuard gil;
    PyObject* const object = PyList_New(0);
    {
        const BoxedObject box(object);
        const Any copy = box;
        EXPECT_EQ(boxedObject(copy), object);
        EXPECT_EQ(Py_REFCNT(object), 1);
    }
    EXPECT_EQ(Py_REFCNT(object), 1);
    Py_DECREF(object);
    EXPECT_EQ(boxedObject(BoxedObject::getClass().allocateInstance()), nullptr);
    EXPECT_EQ(Boxed_Generic::getClassInstance("P7_object", &internal::object_value_boxed_of<PyObject*>::makeDefault),
              BoxedObject::getClass());
}

TEST_F(ReferencesTest, ABoxTakesTheContentOfAnotherAndNothingElse) {
    const BoxedObject target(Py_None);
    EXPECT_TRUE(assignBoxedObject(target, BoxedObject(Py_True)).isNone());
    EXPECT_EQ(target.value(), Py_True);
    const Type& option = boxedObjectOption();
    EXPECT_TRUE(option.isOption() && option.isMatch(target) && option.isMatch(Any()));
    for (const Any& other : {Any(), Any(1), Any(String("text")), Any(Boxed<int>(1))}) {
        EXPECT_EQ(messageOf(assignBoxedObject(target, other)), "Types mismatch.");
        EXPECT_EQ(target.value(), Py_True);
        EXPECT_EQ(boxedObject(other), nullptr);
        EXPECT_EQ(option.isMatch(other), other.isNone());
    }
}

}  // namespace
