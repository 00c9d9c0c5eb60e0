#include "runtime/support/values.h"

namespace ling::testing {
namespace {

Class_Generic plainClass(const char* name, std::initializer_list<Class_Generic> parents = {}) {
    class_builder builder = defclass_impl(name, "");
    for (const Class_Generic& parent : parents)
        builder.parent(parent);
    return builder.build();
}

String names(const std::vector<Class_Generic>& classes) {
    string_builder text;
    for (const Class_Generic& cls : classes)
        text.append(text.length() == 0 ? "" : " ").append(cls.name());
    return text.build();
}

TEST(Class, AncestryPutsEachClassBeforeItsParents) {
    const Class_Generic top = plainClass("Top");
    const Class_Generic left = plainClass("Left", {top});
    const Class_Generic right = plainClass("Right", {top});
    const Class_Generic bottom = plainClass("Bottom", {left, right});
    EXPECT_EQ(names(bottom.ancestry()), u"Bottom Left Right Top Any");
    EXPECT_TRUE(bottom.isAncestor(top));
    EXPECT_TRUE(bottom.isAncestor(bottom));
    EXPECT_FALSE(top.isAncestor(bottom));
}

TEST(Class, ContradictingOrdersStillGiveEveryAncestorOnce) {
    const Class_Generic a = plainClass("A");
    const Class_Generic b = plainClass("B");
    const Class_Generic ab = plainClass("AB", {a, b});
    const Class_Generic ba = plainClass("BA", {b, a});
    EXPECT_EQ(names(plainClass("Both", {ab, ba}).ancestry()), u"Both AB BA A B Any");
}

TEST(Class, RefusesToBecomeItsOwnAncestor) {
    const Class_Generic parent = plainClass("Parent");
    const Class_Generic child = plainClass("Child", {parent});
    EXPECT_EQ(plain(parent.record()->add_parent_unsafe(child)), "A class cannot be its own ancestor: 'Parent'.");
    EXPECT_EQ(plain(parent.record()->add_parent_unsafe(parent)), "A class cannot be its own ancestor: 'Parent'.");
    EXPECT_EQ(names(parent.ancestry()), u"Parent Any");
}

TEST(Class, ChangesReachDescendantsAndTheirInstances) {
    const Class_Generic parent = plainClass("Parent");
    const Class_Generic child = plainClass("Child", {parent});
    const Any instance = child.allocateInstance();
    const method_ident_untyped $late("late");
    EXPECT_EQ(plain(instance.callMethod($late)), "Method 'late' not found in: <Child>.");
    parent.record()->add_method_unsafe($late, parent.record(), make_method("late", "", [](const Any&) { return 1; }));
    EXPECT_TRUE(instance.callMethod($late).isSameAs(Any(1)));
    parent.record()->add_method_unsafe($late, parent.record(), make_method("late", "", [](const Any&) { return 2; }));
    EXPECT_TRUE(instance.callMethod($late).isSameAs(Any(2)));
    child.record()->add_method_unsafe($late, child.record(), make_method("late", "", [](const Any&) { return 3; }));
    EXPECT_TRUE(instance.callMethod($late).isSameAs(Any(3)));
    EXPECT_TRUE(parent.allocateInstance().callMethod($late).isSameAs(Any(2)));
}

TEST(Class, TellsAboutItselfWhileItChanges) {
    const Class_Generic generic = plainClass("Generic");
    const Class_Generic cls = plainClass("Busy");
    const method_ident_untyped $steady("steady");
    cls.record()->add_method_unsafe($steady, cls.record(), make_method("steady", "", [](const Any&) { return 7; }));
    std::atomic<bool> done{false};
    std::atomic<int> rounds{0};
    std::size_t told = 0;
    std::thread reader([&] {
        const Any instance = cls.allocateInstance();
        for (; !done; ++rounds) {
            EXPECT_TRUE(instance.callMethod($steady).isSameAs(Any(7)));
            told += static_cast<std::size_t>(cls.doc().length() + cls.example(lang_name_cpp).length());
            told += cls.parents().size() + cls.fields(Inherited::No).size() + cls.parameters().size();
            told += cls.methods(Inherited::No).size() + cls.properties(Inherited::Yes).size();
            told += cls.parentGeneric().isNone() || cls.parentModule().isNone() ? 0 : 1;
        }
    });
    object_value_class& record = *cls.record();
    for (int i = 0; i < 300 || rounds < 300; ++i) {
        const String text = String(u"A text that is made anew: {}").arg(i);
        record.set_doc_unsafe(text);
        record.set_example_unsafe(lang_name_cpp, text);
        record.add_method_unsafe(method_ident_untyped(String(u"m{}").arg(i % 20)), &record,
                                 make_method("m", "", [](const Any&) { return 0; }));
        record.add_property_unsafe(property_ident_untyped(String(u"p{}").arg(i % 20)), &record, Property::ofValue(i));
        if (i < 300 && i % 10 == 0)
            record.add_parent_unsafe(plainClass("Parent"));
        record.set_generic_unsafe(generic, {Type(plainClass("Parameter")), Type(cls)});
        record.set_module_unsafe(unchecked<Module>(Module::getClass()(String(u"busy"))));
        if (i < 300 && i % 30 == 0)
            record.add_field_unsafe(field_ident_untyped(String(u"f{}").arg(i)), Integer::getType(), text);
    }
    done = true;
    reader.join();
    EXPECT_NE(told, 0u);
    EXPECT_EQ(cls.parents().size(), 31u);
    record.set_generic_unsafe(generic, {});  // The class was a parameter of its own.
}

TEST(Class, ObjectsKeepTheirFieldsWhenAnAncestorGainsOne) {
    const field_ident_untyped $own("own");
    const field_ident_untyped $late("late");
    const Class_Generic parent = plainClass("Parent");
    const Class_Generic child = defclass_impl("Child", "").parent(parent).field($own).build();
    const Any before = child.allocateInstance();
    EXPECT_TRUE(before.setFieldValue($own, 1).isNone());
    parent.record()->add_field_unsafe($late, Integer::getType(), u"");
    const Class_Generic added = defclass_impl("Added", "").field(field_ident_untyped("added")).build();
    EXPECT_TRUE(child.record()->add_parent_unsafe(added).isNone());
    EXPECT_TRUE(before.fieldValue($own).isSameAs(Any(1)));
    EXPECT_TRUE(before.fieldValue($late).isNone());
    for (const Any& instance : {before, child.allocateInstance()}) {
        EXPECT_TRUE(instance.setFieldValue($late, 2).isNone());
        EXPECT_TRUE(instance.setFieldValue($own, 3).isNone());
        EXPECT_TRUE(instance.fieldValue($late).isSameAs(Any(2)));
        EXPECT_TRUE(instance.fieldValue($own).isSameAs(Any(3)));
    }
    EXPECT_EQ(child.fields(Inherited::Yes).size(), 3u);
}

TEST(Class, FieldsAreReadWholeWhileTheyAreWritten) {
    const field_ident_untyped $value("value");
    const Class_Generic cls = defclass_impl("Cell", "").field($value).build();
    const Any object = cls.allocateInstance();
    std::atomic<bool> done{false};
    std::thread reader([&] {
        while (!done) {
            const Any value = object.fieldValue($value);
            // The bits of a float would be far more as an integer, and those of an integer next to nothing as a float.
            EXPECT_TRUE(!value.is(Kind::Integer) || value.asInteger() < 100'000);
            EXPECT_TRUE(!value.is(Kind::Float) || value.asFloat() >= 0.5);
            EXPECT_TRUE(!value.isHeap() || unchecked<String>(value).length() == 5);
        }
    });
    for (int i = 0; i < 30'000; ++i) {
        (void)object.setFieldValue($value, i);
        (void)object.setFieldValue($value, i + 0.5);
        (void)object.setFieldValue($value, i % 2 == 0 ? Any("words") : Any());
        if (i % 3'000 == 0) {
            const field_ident_untyped $more(String(u"more{}").arg(i).toStdString());
            cls.record()->add_field_unsafe($more, Untyped::getType(), u"");
            EXPECT_TRUE(object.setFieldValue($more, i).isNone());
            EXPECT_TRUE(object.fieldValue($more).isSameAs(Any(i)));
        }
    }
    done = true;
    reader.join();
}

/// A getter, setter or initialiser may take away the value that it was called through.
TEST(Class, ReceiverOutlastsThePlaceItWasFoundIn) {
    static Any place;
    const field_ident_untyped $value("value");
    const property_ident_untyped $$held("held");
    const Class_Generic cls =
        defclass_impl("Held", "")
            .field($value)
            .method(Any::$__init__, "value",
                    [=](const Any& self, const Any& value) {
                        place = Any();
                        return self.setFieldValue($value, value);
                    })
            .property("held", property_builder()
                                  .getter([=](const Any& self) {
                                      place = Any();
                                      return self.fieldValue($value);
                                  })
                                  .setter([=](const Any& self, const Any& value) -> Any {
                                      place = Any();
                                      return value.fieldValue($value).isSameAs(self.fieldValue($value)) ? Any() : 1;
                                  }))
            .build();
    const auto refill = [&] { place = cls.construct(std::initializer_list<Any>{7}); };
    refill();
    EXPECT_TRUE(place.propertyValue($$held).isSameAs(Any(7)));
    refill();
    EXPECT_TRUE(property_of(place, $$held).get(place).isSameAs(Any(7)));
    refill();
    EXPECT_TRUE(place.setPropertyValue($$held, place).isNone());
    refill();
    EXPECT_TRUE(property_of(place, $$held).set(place, place).isNone());
    EXPECT_TRUE(place.isNone());
}

TEST(Class, FieldsKeepTheirPlaceInDerivedClassesAndCheckTypes) {
    const field_ident_untyped $name("name");
    const field_ident_untyped $count("count");
    const Class_Generic base = defclass_impl("Base", "").field($name, String::getType(), "What it is called.").build();
    const Class_Generic derived = defclass_impl("Derived", "").parent(base).field($count, Integer::getType()).build();
    EXPECT_EQ(derived.fields(Inherited::Yes).size(), 2u);
    EXPECT_EQ(derived.definedField($name)->doc, u"What it is called.");
    const Any instance = derived.allocateInstance();
    EXPECT_TRUE(instance.fieldValue($count).isNone());
    EXPECT_TRUE(instance.setFieldValue($name, String(u"x")).isNone());
    EXPECT_EQ(plain(instance.fieldValue($name)), "x");
    EXPECT_EQ(plain(instance.setFieldValue($count, String(u"many"))),
              "Field 'count' takes a value of type 'Integer', not 'ling.String'.");
    EXPECT_EQ(plain(instance.fieldValue(field_ident_untyped("absent"))), "Field 'absent' not found in: <Derived>.");
    EXPECT_EQ(plain(Any(1).fieldValue($name)), "Field 'name' not found in: 1.");
    EXPECT_TRUE(instance.setFieldValue($count, 7).isNone());
    derived.record()->add_field_unsafe($count, String::getType(), u"Declared again.");
    EXPECT_EQ(derived.fields(Inherited::Yes).size(), 2u);
    EXPECT_EQ(derived.definedField($count)->type, String::getType());
    EXPECT_EQ(plain(instance.fieldValue($count)), "7") << "It keeps its place, and what is there.";
}

TEST(Class, ClassLevelMembersAnswerOnTheClassAndOnInstances) {
    const Class_Generic cls =
        defclass_impl("Counter", "")
            .classMethod("start", "", [] { return std::int64_t{10}; })
            .classProperty(property_ident_untyped("limit"), property_builder().value(Any(99)))
            .property("size", property_builder().getter([](const Any&) { return std::int64_t{3}; }))
            .build();
    const Any instance = cls.allocateInstance();
    for (const Any& receiver : {Any(cls), instance}) {
        EXPECT_TRUE(receiver.callMethod("start").isSameAs(Any(10)));
        EXPECT_TRUE(receiver.propertyValue("limit").isSameAs(Any(99)));
    }
    EXPECT_TRUE(instance.propertyValue("size").isSameAs(Any(3)));
    EXPECT_EQ(plain(Any(cls).propertyValue("size")), "Property 'size' not found in: Counter.");
    EXPECT_EQ(plain(Any(cls).propertyValue(I_HasName::$$name)), "Counter");
}

TEST(Class, CallingMakesAnInstanceThroughItsInitialiser) {
    const field_ident_untyped $size("size");
    const Class_Generic cls =
        defclass_impl("Sized", "")
            .field($size)
            .method(Any::$__init__, "size",
                    [$size](const Any& self, std::int64_t size) -> Any {
                        return size < 0 ? failure(u"Too small.") : self.setFieldValue($size, size);
                    })
            .build();
    EXPECT_TRUE(cls(4).fieldValue($size).isSameAs(Any(4)));
    EXPECT_EQ(plain(cls(-1)), "Too small.");
    EXPECT_EQ(plain(cls()), "Missing argument 'size' of 'Sized'.");
    const std::pair<Any, Any> named[] = {{String(u"size"), Any(5)}};
    EXPECT_TRUE(cls.invokeWith(Map_Generic(named)).fieldValue($size).isSameAs(Any(5)));
    EXPECT_EQ(plain(plainClass("Bare")(1)), "The class 'Bare' takes no arguments.");
    EXPECT_EQ(plain(I_Sequence_Generic::getClass()()), "The interface 'ling.I_Sequence' has no instances of its own.");
}

TEST(Class, FinaliserSeesTheWholeInstanceOnce) {
    static std::vector<std::int64_t> seen;
    seen.clear();
    const field_ident_untyped $mark("mark");
    class_hooks hooks;
    hooks.finalize = [](object_value_object& dying) {
        seen.push_back(Any::share(&dying).fieldValue(field_ident_untyped("mark")).asInteger());
    };
    const Class_Generic base = defclass_impl("Base", "").field($mark).hooks(hooks).build();
    const Class_Generic derived = plainClass("Derived", {base});
    for (const Class_Generic& cls : {base, derived})
        cls.allocateInstance().setFieldValue($mark, static_cast<std::int64_t>(seen.size()));
    EXPECT_EQ(seen, (std::vector<std::int64_t>{0, 1}));
}

TEST(Class, AWeakReferenceThatAFinaliserMakesLeadsNowhere) {
    static std::vector<Weak_Generic> made;
    class_hooks hooks;
    hooks.finalize = [](object_value_object& dying) { made.emplace_back(Any::share(&dying)); };
    const Class_Generic cls = defclass_impl("Dying", "").hooks(hooks).build();
    (void)cls.allocateInstance();
    (void)Weak_Generic(cls.allocateInstance());
    ASSERT_EQ(made.size(), 2u);
    for (const Weak_Generic& weak : made)
        EXPECT_TRUE(weak.lock().isNone());
    made.clear();
}

TEST(Class, OneOfContainersHasNoFieldsAndNoFinaliser) {
    class_hooks hooks;
    hooks.finalize = [](object_value_object&) {};
    const Class_Generic rows = plainClass("Rows", {List_Generic::getClass()});
    const Class_Generic named = defclass_impl("Named", "").field(field_ident_untyped("name")).build();
    const String refused = u"The values of the class 'Rows' are native ones: they have no fields and no finaliser.";
    EXPECT_EQ(plain(rows.record()->add_field_unsafe(field_ident_untyped("name"), Untyped::getType(), "")), refused);
    EXPECT_EQ(plain(rows.record()->set_hooks_unsafe(hooks)), refused);
    EXPECT_EQ(plain(rows.record()->add_parent_unsafe(named)), refused);
    EXPECT_EQ(plain(named.record()->add_parent_unsafe(rows)),
              "The values of the class 'Named' are native ones: they have no fields and no finaliser.");
    EXPECT_EQ(names(rows.parents()), u"List");
    EXPECT_TRUE(rows.fields(Inherited::Yes).empty());
}

TEST(Class, GenericInstancesAreMadeOncePerParameterList) {
    const Class_Generic ofText = I_Sequence_Generic::genericInstance(String::getType());
    EXPECT_EQ(ofText.parameters().front(), String::getType());
    EXPECT_FALSE(ofText == I_Sequence_Generic::genericInstance(Integer::getType()));
    for (int round = 0; round < 100; ++round) {
        const Class_Generic generic = plainClass("Generic");
        std::vector<Class_Generic> made(4);
        inThreads(4, [&](int number) {
            const Type parameter = Date::getType();
            made[static_cast<std::size_t>(number)] = generic.record()->genericInstance({&parameter, 1});
        });
        for (const Class_Generic& cls : made)
            ASSERT_EQ(cls, made.front());
    }
}

TEST(Members, ObjectsCarryMembersOfTheirOwn) {
    const Any object = plainClass("Plain").allocateInstance();
    const property_ident_untyped $colour("colour"), $second("second"), $third("third");
    const method_ident_untyped $shout("shout");
    EXPECT_TRUE(insert_property_value(object, $colour, String(u"red")).isNone());
    EXPECT_TRUE(insert_property_value(object, $colour, String(u"blue")).isNone());
    EXPECT_EQ(plain(object.propertyValue($colour)), "blue");
    EXPECT_TRUE(insert_method(object, $shout, make_method("shout", "", [](const Any& self) { return self; })).isNone());
    EXPECT_TRUE(object.callMethod($shout).isSameAs(object));
    EXPECT_EQ(plain(own_properties_of(object)), "['colour']");
    EXPECT_EQ(plain(own_methods_of(object)), "['shout']");
    EXPECT_TRUE(insert_property_value(object, $second, 2).isNone());
    EXPECT_TRUE(insert_property_value(object, $third, 3).isNone());
    EXPECT_TRUE(remove_property(object, $colour));
    EXPECT_EQ(plain(object.propertyValue($second)) + plain(object.propertyValue($third)), "23");
    EXPECT_TRUE(remove_property(object, $second));
    EXPECT_EQ(plain(object.propertyValue($third)), "3") << "Each is found wherever the others went.";
    EXPECT_FALSE(remove_property(object, $colour));
    EXPECT_TRUE(property_of(object, $colour).isNone());
    remove_method(object, $shout);  // The method held a reference to nothing, but its object must go with the test.
    EXPECT_EQ(plain(insert_property_value(Any(5), $colour, Any(1))),
              "A value of class 'ling.Integer' cannot carry members.");
}

TEST(Members, AClassMayAnswerLookUpsItself) {
    const Class_Generic cls =
        defclass_impl("Echo", "")
            .method(Any::$__method__, "name",
                    [](const Any&, const String& name) -> Any {
                        if (name == u"absent")
                            return Any();
                        return make_function("echo", "", [name] { return name; });
                    })
            .method(Any::$__property__, "name",
                    [](const Any&, const String& name) -> Any { return Property::ofValue(name + u"!"); })
            .build();
    const Any echo = cls.allocateInstance();
    EXPECT_EQ(plain(echo.callMethod("hello")), "hello");
    EXPECT_EQ(plain(echo.propertyValue("hello")), "hello!");
    EXPECT_TRUE(raw_method_of(echo, method_ident_untyped("hello")).isNone());
    EXPECT_TRUE(method_of(echo, method_ident_untyped("absent")).isNone());
}

}  // namespace
}  // namespace ling::testing
