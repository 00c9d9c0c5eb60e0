#include "runtime/support/values.h"

namespace ling::testing {
namespace {

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

}  // namespace
}  // namespace ling::testing
