#include "runtime/support/live_objects.h"
#include "runtime/support/values.h"

namespace ling {
namespace {

using namespace ling::testing;
using internal::is_error_result;

class Error_ : public LiveObjects {};

TEST_F(Error_, IsAValueOrTheResultOfAFailure) {
    const Error plain(u"Plain.");
    const Error flagged(u"Flagged.", true);
    EXPECT_FALSE(is_error_result(plain));
    EXPECT_TRUE(is_error_result(flagged));
    for (const Any& error : {Any(plain), Any(flagged)})
        EXPECT_TRUE(Error::cast(error)) << "Being an error result is no failure of the cast.";
    EXPECT_EQ(display(flagged), u"Flagged.");
    EXPECT_EQ(shown(Error::cast(1)), "error: Unable to cast a value of class 'ling.Integer' to 'ling.Error'.");
    EXPECT_EQ(shown(Error::cast(Any())), "error: Unable to cast a value of class 'ling.None' to 'ling.Error'.");
}

TEST_F(Error_, KeepsItsCauseAndException) {
    const Error inner(u"Inner.");
    const Error outer(u"Outer.");
    EXPECT_TRUE(outer.cause().isNone());
    EXPECT_TRUE(outer.exception().isNone());
    outer.setCause(inner);
    outer.setException(listOf(1));
    EXPECT_TRUE(outer.cause().isSameAs(inner));
    EXPECT_EQ(shown(outer.exception()), "[1]");
    const property_ident_untyped cause{"cause"};
    EXPECT_TRUE(outer.propertyValue(cause).isSameAs(inner));
    EXPECT_EQ(shown(outer.propertyValue(property_ident_untyped("message"))), "Outer.");
    EXPECT_EQ(shown(outer.setPropertyValue(cause, Any())), "none");
    EXPECT_TRUE(outer.cause().isNone());
    outer.setCause(outer);
    EXPECT_TRUE(outer.cause().isNone()) << "Nothing is its own cause.";
}

TEST_F(Error_, ACalledClassMakesAResult) {
    const Class_Generic derived = internal::defclass_impl("MyError", "").parent(Error::getClass()).build();
    for (const Class_Generic& cls : {Error::getClass(), derived, StopIteration::getClass()}) {
        const Any made = cls(u"What happened.");
        EXPECT_TRUE(is_error_result(made));
        EXPECT_EQ(raw_class_of(made), cls);
        EXPECT_EQ(Error::cast(made)->message(), u"What happened.");
        EXPECT_EQ(Error::cast(cls())->message(), u"");
        EXPECT_FALSE(is_error_result(cls.allocateInstance()));
    }
    EXPECT_EQ(shown(Error::getClass()(5)),
              "error: Argument 'message' of 'Error' must be of type 'String', not 'ling.Integer'.");
    EXPECT_TRUE(derived.resultType().specializes(Error::getType()));
}

TEST_F(Error_, ADerivedClassHasFieldsAndAnInitialiser) {
    const field_ident_untyped code{"content"};
    const Class_Generic derived =
        internal::defclass_impl("Coded", "")
            .parent(Error::getClass())
            .field(code)
            .method(Any::$__init__, "number",
                    [code](const Any& self, std::int64_t number) -> Any { return self.setFieldValue(code, number); })
            .build();
    const Any made = derived(7);
    EXPECT_TRUE(is_error_result(made));
    EXPECT_EQ(shown(made.fieldValue(code)), "7");
    EXPECT_EQ(Error::cast(made)->message(), u"");
}

TEST_F(Error_, OfAClassMadeInNativeCode) {
    const Class_Generic derived = internal::defclass_impl("MyError", "").parent(Error::getClass()).build();
    const Error result(derived, u"Text.");
    EXPECT_TRUE(is_error_result(result));
    EXPECT_EQ(raw_class_of(result), derived);
    EXPECT_FALSE(is_error_result(Error(derived, u"Text.", false)));
    EXPECT_FALSE(StopIteration::cast(result));
}

TEST_F(Error_, TheEndOfAnIterationIsAlwaysAResult) {
    const StopIteration end;
    EXPECT_TRUE(is_error_result(end));
    EXPECT_TRUE(StopIteration::cast(end));
    EXPECT_TRUE(Error::cast(end));
    EXPECT_EQ(end.message(), u"The iteration has ended.");
}

TEST_F(Error_, AnObjectOfAnotherMakeIsNoError) {
    const Class_Generic mixed =
        internal::defclass_impl("Mixed", "").parent(List_Generic::getClass()).parent(Error::getClass()).build();
    const Any list = mixed.allocateInstance();
    ASSERT_TRUE(list.is(Kind::List));
    EXPECT_FALSE(Error::cast(list));
}

}  // namespace
}  // namespace ling
