#include "runtime/support/values.h"

namespace ling::testing {
namespace {

/// A function of the module "ling", as its languages reach it.
I_Invokable_Generic function(std::string_view name) {
    const Any found = find_module(u"ling").propertyValue(property_ident_untyped(name));
    return I_Invokable_Generic::cast(found).valueOr(I_Invokable_Generic());
}

template <class... Arguments>
std::string call(std::string_view name, const Arguments&... arguments) {
    return shown(function(name)(arguments...));
}

TEST(LingModule, EverythingIsDocumented) {
    const Module module = find_module(u"ling");
    EXPECT_FALSE(module.doc().isEmpty());
    for (const auto& entry : module.functions()) {
        EXPECT_FALSE(shown(entry.member.propertyValue(I_HasDoc::$$doc)).empty()) << entry.id.utf8();
        EXPECT_FALSE(property_of(module, property_ident_untyped(entry.id.utf8())).doc().isEmpty()) << entry.id.utf8();
    }
    for (const Class_Generic& cls : module.classes()) {
        EXPECT_FALSE(cls.doc().isEmpty()) << cls.name().toStdString();
        for (const auto& declared : cls.properties(Inherited::No))
            EXPECT_FALSE(declared.member.doc().isEmpty())
                << cls.name().toStdString() << "." << declared.id.utf8() << " has no documentation.";
        for (const auto& declared : cls.methods(Inherited::No))
            EXPECT_TRUE(declared.id.isPrivate() || !shown(declared.member.propertyValue(I_HasDoc::$$doc)).empty())
                << cls.name().toStdString() << "." << declared.id.utf8() << " has no documentation.";
    }
}

TEST(LingModule, NoClassMakesAnInstanceThatIsHollow) {
    for (const Class_Generic& cls : find_module(u"ling").classes()) {
        // Mixed with another native class it must not make that one's instances either: they are no instances of it.
        const auto derived = [&](std::initializer_list<Class_Generic> parents) {
            class_builder builder = defclass_impl("Derived", "");
            for (const Class_Generic& parent : parents)
                builder.parent(parent);
            return builder.build();
        };
        for (const Class_Generic& called : {cls, derived({cls}), derived({Error::getClass(), cls})}) {
            for (const Any& made : {called.allocateInstance(), called()}) {
                if (made.is(Kind::Object) && made.object()->ownClass() != nullptr) {
                    for (const auto& declared : called.properties(Inherited::Yes))
                        (void)shown(made.propertyValue(declared.id));
                    EXPECT_EQ(compare_objects(made, made), 0);
                }
                EXPECT_EQ(hash_of(made), hash_of(made)) << cls.name().toStdString() << shown(made);
            }
        }
    }
    for (const char16_t* name : {u"Type", u"Signature", u"Parameter", u"Property", u"TypeVariable", u"Function"})
        EXPECT_EQ(
            shown(find_class(String(u"ling.") + String(name))()),
            "error: Instances of the class 'ling." + String(name).toStdString() + "' are made by the runtime alone.");
}

// Names live as long as the process once they are used, so they are used before the objects are counted.
const property_ident_untyped $$colour("colour"), $$empty("");
const method_ident_untyped $shout("shout"), $absent("absent");

class LingFunctions : public LiveObjects {};

TEST_F(LingFunctions, LookIntoValues) {
    const List_Generic list = listOf(1, 2, 3);
    EXPECT_EQ(call("class_of", Lazy_Generic([] { return Any(1); })), "ling.Integer");
    EXPECT_EQ(call("qualname", list), "ling.List");
    EXPECT_EQ(call("kind_of", ByteArray()), "byte_array");
    EXPECT_EQ(call("display", list), "[1, 2, 3]");
    EXPECT_EQ(call("compare_objects", 1, 2), "-1");
    EXPECT_EQ(call("compare_objects", 1), "error: Missing argument 'b' of 'compare_objects'.");
    EXPECT_EQ(call("is_same", list, list), "true");
    EXPECT_TRUE(function("hash_of")(list).isSameAs(hash_of(list)));
    EXPECT_TRUE(function("object_id")(list).isSameAs(object_id(list)));
    EXPECT_EQ(call("find_class", "ling.Map"), "ling.Map");
    EXPECT_EQ(call("find_module", "absent"), "none");
    EXPECT_TRUE(unchecked<List_Generic>(function("modules")()).at(0).isSameAs(find_module(u"ling")));
    EXPECT_EQ(call("load_resource", "absent:x"), "error: Unknown URI scheme: 'absent'.");
}

TEST_F(LingFunctions, ReachMembersByName) {
    const List_Generic list = listOf(1, 2, 3);
    const Any at = function("bound_method")(list, "at");
    EXPECT_EQ(shown(unchecked<I_Invokable_Generic>(at)(-1)), "3");
    EXPECT_EQ(call("bound_method", list, "absent"), "error: Method 'absent' not found in: [1, 2, 3].");
    EXPECT_EQ(call("property_value", list, "length"), "3");
    EXPECT_EQ(call("property_value", list, ""), "error: Property '' not found in: [1, 2, 3].");
    insert_property_value(list, $$colour, String(u"red"));
    insert_method(list, $shout, make_function("shout", "", [] { return 1; }));
    EXPECT_EQ(call("own_properties_of", list), "['colour']");
    EXPECT_EQ(call("own_methods_of", list), "['shout']");
    EXPECT_EQ(call("set_property_value", list, "length", 5), "error: The property is read-only.");
    const Any module = function("find_module")("ling");
    EXPECT_EQ(call("set_property_value", module, "bindMembers", false), "none");
}

}  // namespace
}  // namespace ling::testing
