#include "runtime/support/values.h"

/// Values that lead to another one, boxed values and errors.

namespace ling::testing {
namespace {

class Indirect : public LiveObjects {};

TEST_F(Indirect, ALazyValueIsComputedOnce) {
    int computed = 0;
    const Lazy_Generic lazy([&] { return Any(++computed); });
    EXPECT_TRUE(lazy.is(Kind::Lazy));
    EXPECT_TRUE(Lazy_Generic::cast(lazy)) << "Asking what it is does not compute it.";
    EXPECT_EQ(raw_class_of(lazy), Lazy_Generic::getClass());
    EXPECT_EQ(computed, 0);
    EXPECT_EQ(shown(lazy.evaluate()), "1");
    EXPECT_EQ(shown(result_unwrap_lazy(lazy)), "1");
    EXPECT_EQ(shown(lazy.callMethod("evaluate")), "1");
    EXPECT_EQ(class_of(lazy), Integer::getClass());
    EXPECT_EQ(computed, 1);
}

TEST_F(Indirect, AFailureThatPassesIsNotKept) {
    bool hasEnded = true;
    const Lazy_Generic inner([&]() -> Any { return hasEnded ? throw std::bad_alloc() : Any(1); });
    const Lazy_Generic outer([&] { return inner.evaluate(); });
    EXPECT_EQ(shown(outer.evaluate()), "error: Out of memory.");
    hasEnded = false;
    EXPECT_EQ(shown(outer.evaluate()), "1");
}

TEST_F(Indirect, AValueThatNeedsItselfIsAnError) {
    Any self;
    const Lazy_Generic lazy([&]() -> Any { return unchecked<Lazy_Generic>(self).evaluate(); });
    self = lazy;
    EXPECT_EQ(shown(lazy.evaluate()), "error: The lazy value needs itself to be computed.");
    self = Any();
}

TEST_F(Indirect, WhatAnotherComputationStoodInTheWayOfIsComputedLater) {
    Any outer;
    const Lazy_Generic inner([&]() -> Any {
        const Any part = unchecked<Lazy_Generic>(outer).evaluate();
        return is_error_result(part) ? part : Any(part.asInteger() + 1);
    });
    const Lazy_Generic between([&]() -> Any { return inner; });
    outer = Lazy_Generic([&] { return Any(is_error_result(result_unwrap_lazy(between)) ? 10 : 20); });
    EXPECT_EQ(shown(result_unwrap_lazy(outer)), "10") << "It cannot have its own value.";
    EXPECT_EQ(shown(result_unwrap_lazy(between)), "11");
    EXPECT_EQ(shown(inner.evaluate()), "11");
    outer = Any();
}

TEST_F(Indirect, ValuesThatStandForEachOtherAreAnError) {
    Any second;
    const Lazy_Generic first([&] { return second; });
    second = Lazy_Generic([&]() -> Any { return first; });
    EXPECT_EQ(shown(first.evaluate()), "error: The value stands for itself.");
    EXPECT_EQ(shown(result_unwrap_lazy(second)), "error: The value stands for itself.");
    second = Any();

    Any own;
    const Lazy_Generic lazy([&] { return own; });
    own = lazy;
    EXPECT_EQ(shown(lazy.evaluate()), "error: The value stands for itself.");
    own = Any();
    const External_Generic endless([&]() -> Any { return External_Generic([] { return Any(1); }); });
    EXPECT_EQ(shown(result_unwrap_lazy(endless)), "1");
}

TEST_F(Indirect, ALongChainIsFollowedToItsEnd) {
    Any value = 7;
    for (int i = 0; i < 50'000; ++i)
        value = Lazy_Generic([value] { return value; });
    EXPECT_EQ(shown(result_unwrap_lazy(value)), "7");
    EXPECT_EQ(shown(unchecked<Lazy_Generic>(value).evaluate()), "7");
}

TEST_F(Indirect, AComputationLetsGoOfWhatItNeeded) {
    int dropped = 0;
    const Lazy_Generic lazy([item = onDrop([&] { ++dropped; })] { return Any(1); });
    EXPECT_EQ(dropped, 0);
    lazy.evaluate();
    EXPECT_EQ(dropped, 1);
}

TEST_F(Indirect, AnExternalValueIsReadAnew) {
    int value = 1;
    const External_Generic external([&] { return Any(value); },
                                    [&](const Any& written) {
                                        value = static_cast<int>(written.asInteger());
                                        return Any();
                                    });
    EXPECT_TRUE(external.is(Kind::External));
    EXPECT_EQ(shown(result_unwrap_lazy(external)), "1");
    value = 2;
    EXPECT_EQ(shown(external.callMethod("load")), "2");
    EXPECT_EQ(shown(external.callMethod("store", {3})), "none");
    EXPECT_EQ(shown(unwrap(external)), "3");
    const External_Generic constant([] { return Any(5); });
    EXPECT_EQ(shown(constant.callMethod("store", {3})), "error: The external value is read-only.");
}

TEST_F(Indirect, AWeakReferenceDoesNotKeepItsTarget) {
    Any list = listOf(1);
    const Weak_Generic weak(list);
    EXPECT_TRUE(weak.is(Kind::Weak));
    EXPECT_TRUE(weak.lock().isSameAs(list));
    EXPECT_TRUE(unwrap(weak).isSameAs(list));
    EXPECT_TRUE(unwrap(Lazy_Generic([&] { return weak; })).isSameAs(list));
    EXPECT_TRUE(result_unwrap_lazy(weak).is(Kind::Weak)) << "Only what is lazy is resolved.";
    EXPECT_TRUE(weak.callMethod("lock").isSameAs(list));
    list = Any();
    EXPECT_TRUE(weak.lock().isNone());
    EXPECT_TRUE(unwrap(weak).isNone());
}

TEST_F(Indirect, AWeakReferenceToAnImmediateOrToAnotherIsTheSameThing) {
    EXPECT_EQ(shown(Weak_Generic(5).lock()), "5");
    EXPECT_TRUE(Weak_Generic(Any()).lock().isNone());
    const Any list = listOf(1);
    const Weak_Generic weak(list);
    EXPECT_TRUE(Weak_Generic(weak).isSameAs(weak));
    EXPECT_TRUE(Weak_Generic::cast(weak));
    EXPECT_EQ(shown(Weak_Generic::cast(5)), "error: Unable to cast a value of class 'ling.Integer' to 'ling.Weak'.");
}

struct point {
    int x = 0;
    int y = 0;
};

TEST(BoxedValue, HasOneClassForEachType) {
    const Boxed<point> box(point{1, 2});
    EXPECT_TRUE(box.is(Kind::Boxed));
    EXPECT_EQ(box.value().y, 2);
    EXPECT_EQ(raw_class_of(box), Boxed<point>::getClass());
    EXPECT_EQ(Boxed_Generic::getClassInstance(typeid(point).name(), nullptr), Boxed<point>::getClass());
    EXPECT_FALSE(Boxed<int>::getClass() == Boxed<point>::getClass());
    EXPECT_TRUE(Boxed<point>::getClass().isAncestor(Boxed_Generic::getClass()));
    EXPECT_TRUE(Boxed<point>::cast(box));
    EXPECT_FALSE(Boxed<int>::cast(box));
}

struct fragile {
    std::string text = "a text that does not fit into the object itself";
    static inline bool throws = false;
    fragile() = default;
    fragile(fragile&&) = default;
    fragile(const fragile& other) : text(other.text) {
        if (throws)
            throw std::runtime_error("No copy.");
    }
    fragile& operator=(fragile&&) = default;
};

TEST(BoxedValue, StaysUsableWhenACopyThrows) {
    const Boxed<fragile> box{fragile()};
    fragile::throws = true;
    EXPECT_THROW((void)box.value(), std::runtime_error);
    fragile::throws = false;
    EXPECT_EQ(box.value().text, fragile().text);
}

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
    EXPECT_EQ(shown(outer.propertyValue("message")), "Outer.");
    EXPECT_EQ(shown(outer.setPropertyValue(cause, Any())), "none");
    EXPECT_TRUE(outer.cause().isNone());
    outer.setCause(outer);
    EXPECT_TRUE(outer.cause().isNone()) << "Nothing is its own cause.";
}

TEST_F(Error_, ACalledClassMakesAResult) {
    const Class_Generic derived = defclass_impl("MyError", "").parent(Error::getClass()).build();
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
    EXPECT_EQ(raw_class_of(Error(derived, u"Text.")), derived);
    EXPECT_FALSE(is_error_result(Error(derived, u"Text.", false)));
    EXPECT_TRUE(is_error_result(StopIteration()));
}

TEST_F(Error_, ADerivedClassHasFieldsAndAnInitialiser) {
    const field_ident_untyped& code = kNumber;
    const Class_Generic derived =
        defclass_impl("Coded", "")
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

}  // namespace
}  // namespace ling::testing
