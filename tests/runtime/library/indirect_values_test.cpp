#include "runtime/support/live_objects.h"
#include "runtime/support/values.h"

namespace ling {
namespace {

using namespace ling::testing;
using internal::result_unwrap_lazy;
using internal::unwrap;

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
    EXPECT_EQ(shown(lazy.callMethod(method_ident_untyped("evaluate"))), "1");
    EXPECT_EQ(class_of(lazy), Integer::getClass());
    EXPECT_EQ(computed, 1);
}

TEST_F(Indirect, ALazyErrorIsTheErrorOfAllWhoAsk) {
    int computed = 0;
    const Lazy_Generic lazy([&]() -> Any {
        ++computed;
        return internal::failure(u"Not to be had.");
    });
    EXPECT_EQ(shown(lazy.evaluate()), "error: Not to be had.");
    EXPECT_EQ(shown(lazy.evaluate()), "error: Not to be had.");
    EXPECT_EQ(computed, 1);
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
        return internal::is_error_result(part) ? part : Any(part.asInteger() + 1);
    });
    const Lazy_Generic between([&]() -> Any { return inner; });
    outer = Lazy_Generic([&] { return Any(internal::is_error_result(result_unwrap_lazy(between)) ? 10 : 20); });
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
    EXPECT_EQ(shown(external.callMethod(method_ident_untyped("load"))), "2");
    EXPECT_EQ(shown(external.callMethod(method_ident_untyped("store"), {3})), "none");
    EXPECT_EQ(shown(unwrap(external)), "3");
    const External_Generic constant([] { return Any(5); });
    EXPECT_EQ(shown(constant.callMethod(method_ident_untyped("store"), {3})),
              "error: The external value is read-only.");
}

TEST_F(Indirect, AWeakReferenceDoesNotKeepItsTarget) {
    Any list = listOf(1);
    const Weak_Generic weak(list);
    EXPECT_TRUE(weak.is(Kind::Weak));
    EXPECT_TRUE(weak.lock().isSameAs(list));
    EXPECT_TRUE(unwrap(weak).isSameAs(list));
    EXPECT_TRUE(unwrap(Lazy_Generic([&] { return weak; })).isSameAs(list));
    EXPECT_TRUE(result_unwrap_lazy(weak).is(Kind::Weak)) << "Only what is lazy is resolved.";
    EXPECT_TRUE(weak.callMethod(method_ident_untyped("lock")).isSameAs(list));
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

TEST_F(Indirect, TheirClassesMakeNoInstances) {
    EXPECT_EQ(shown(Lazy_Generic::getClass()()), "error: The interface 'ling.Lazy' has no instances of its own.");
    EXPECT_EQ(shown(External_Generic::getClass()()),
              "error: The interface 'ling.External' has no instances of its own.");
    EXPECT_EQ(shown(Weak_Generic::getClass()()), "error: The interface 'ling.Weak' has no instances of its own.");
    EXPECT_EQ(shown(Boxed_Generic::getClass()()), "error: The interface 'ling.Boxed' has no instances of its own.");
    // A class that derives from one of them makes plain objects, which are not taken for the native values.
    const Class_Generic derived = internal::defclass_impl("Derived", "").parent(Lazy_Generic::getClass()).build();
    EXPECT_FALSE(Lazy_Generic::cast(derived.allocateInstance()));
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

TEST(BoxedValue, IsMadeWithTheDefaultAndAssigned) {
    const Any made = Boxed<point>::getClass().allocateInstance();
    ASSERT_TRUE(Boxed<point>::cast(made));
    auto* storage = static_cast<internal::object_value_boxed*>(made.object());
    EXPECT_EQ(unchecked<Boxed<point>>(made).value().x, 0);
    EXPECT_EQ(shown(storage->assign(Boxed<point>(point{3, 4}))), "none");
    EXPECT_EQ(unchecked<Boxed<point>>(made).value().x, 3);
    EXPECT_EQ(shown(storage->assign(Boxed<int>(1))), "error: Types mismatch.");
    EXPECT_EQ(shown(storage->assign(5)), "error: Types mismatch.");
    EXPECT_EQ(unchecked<Boxed<point>>(made).value().x, 3);
}

}  // namespace
}  // namespace ling
