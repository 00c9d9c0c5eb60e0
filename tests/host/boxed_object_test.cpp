#include "host/boxed_object.h"

#include "ling/basic_values.h"
#include "ling/class.h"
#include "ling/list.h"
#include "support/python_test.h"

using ling::python::assignBoxedObject;
using ling::python::boxedObject;
using ling::python::BoxedObject;
using ling::python::GilGuard;

namespace {

class BoxedObjectTest : public PythonTest {};

TEST_F(BoxedObjectTest, CarriesThePointerWithoutCountingIt) {
    GilGuard gil;
    PyObject* const object = PyList_New(0);
    {
        const BoxedObject box(object);
        const ling::Any copy = box;
        EXPECT_EQ(box.value(), object);
        EXPECT_EQ(boxedObject(copy), object);
        EXPECT_EQ(Py_REFCNT(object), 1);
    }
    EXPECT_EQ(Py_REFCNT(object), 1);
    Py_DECREF(object);
}

TEST_F(BoxedObjectTest, ANewBoxHoldsNull) {
    const ling::Any box = BoxedObject::getClass().allocateInstance();
    EXPECT_TRUE(box.is(ling::Kind::Boxed));
    EXPECT_TRUE(BoxedObject::cast(box));
    EXPECT_EQ(boxedObject(box), nullptr);
}

TEST_F(BoxedObjectTest, TheClassIsFoundUnderItsKey) {
    const ling::Class_Generic found = ling::Boxed_Generic::getClassInstance(
        "P7_object", &ling::internal::object_value_boxed_of<PyObject*>::makeDefault);
    EXPECT_EQ(found, BoxedObject::getClass());
}

TEST_F(BoxedObjectTest, AssignmentCopiesThePointer) {
    const BoxedObject target(Py_None);
    EXPECT_TRUE(assignBoxedObject(target, BoxedObject(Py_True)).isNone());
    EXPECT_EQ(target.value(), Py_True);
    EXPECT_TRUE(assignBoxedObject(target, target).isNone());
    EXPECT_EQ(target.value(), Py_True);
}

TEST_F(BoxedObjectTest, AnythingElseIsRefusedAndTheTargetStays) {
    const ling::Any others[] = {ling::Any(),       ling::Any(1),         ling::String("text"),
                                ling::String(),    ling::List_Generic(), ling::Boxed<int>(1),
                                ling::Undefined(), ling::Any(true),      BoxedObject::getClass()};
    const BoxedObject target(Py_None);
    for (const ling::Any& other : others) {
        EXPECT_EQ(messageOf(assignBoxedObject(target, other)), "Types mismatch.");
        EXPECT_EQ(target.value(), Py_None);
        EXPECT_EQ(boxedObject(other), nullptr);
    }
}

TEST_F(BoxedObjectTest, TheOptionTypeTakesABoxOrNone) {
    const ling::Type& option = ling::python::boxedObjectOption();
    EXPECT_TRUE(option.isOption());
    EXPECT_TRUE(option.isMatch(BoxedObject(nullptr)));
    EXPECT_TRUE(option.isMatch(ling::Any()));
    EXPECT_FALSE(option.isMatch(ling::Any(1)));
    EXPECT_FALSE(option.isMatch(ling::Boxed<int>(1)));
}

}  // namespace
