#include "runtime/support/live_objects.h"
#include "runtime/support/values.h"

namespace ling {
namespace {

using namespace ling::testing;

struct ImmutableCase {
    const char* name;
    Any (*value)();
    bool expected;
};

const ImmutableCase kImmutableCases[] = {
    {"None", [] { return Any(); }, true},
    {"Undefined", [] { return Any(Undefined()); }, true},
    {"Boolean", [] { return Any(true); }, true},
    {"Integer", [] { return Any(5); }, true},
    {"Float", [] { return Any(0.5); }, true},
    {"Text", [] { return Any(String(u"key")); }, true},
    {"Slice", [] { return Any(String(std::u16string(200, u'x')).sliced(1, 150)); }, true},
    {"Bytes", [] { return Any(ByteArray("key")); }, true},
    {"Tuple", [] { return Any(tupleOf(1, 2)); }, true},
    {"Decimal", [] { return Any(Decimal(1)); }, true},
    {"List", [] { return Any(List_Generic()); }, false},
    {"Map", [] { return Any(Map_Generic()); }, false},
    {"Set", [] { return Any(Set_Generic()); }, false},
    {"Lazy", [] { return Any(Lazy_Generic([] { return Any(1); })); }, false},
    {"Error", [] { return Any(Error(u"x")); }, false},
};

class Immutable : public LiveObjectsOf<::testing::TestWithParam<ImmutableCase>> {};

TEST_P(Immutable, IsWhatMayBeAKeyByItsContent) {
    EXPECT_EQ(static_cast<bool>(I_Immutable::cast(GetParam().value())), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, Immutable, ::testing::ValuesIn(kImmutableCases),
                         [](const auto& row) { return row.param.name; });

class SmallInterfaces : public LiveObjects {};

Class_Generic withProperties(const Any& name, const Any& doc) {
    return internal::defclass_impl("Described", "")
        .parent(I_HasName::getClass())
        .parent(I_HasDoc::getClass())
        .property(I_HasName::$$name, internal::property_builder().getter([name](const Any&) { return name; }))
        .property(I_HasDoc::$$doc, internal::property_builder().getter([doc](const Any&) { return doc; }))
        .build();
}

TEST_F(SmallInterfaces, NameAndDocAreReadThroughTheClass) {
    const Any described =
        withProperties(String(u"name"), Lazy_Generic([] { return Any(String(u"text")); })).allocateInstance();
    ASSERT_TRUE(I_HasName::cast(described));
    EXPECT_EQ(unchecked<I_HasName>(described).name(), u"name");
    EXPECT_EQ(unchecked<I_HasDoc>(described).doc(), u"text");
}

TEST_F(SmallInterfaces, WhatIsNoTextReadsAsEmpty) {
    const Any broken = withProperties(5, internal::failure(u"No text.")).allocateInstance();
    EXPECT_EQ(unchecked<I_HasName>(broken).name(), u"");
    EXPECT_EQ(unchecked<I_HasDoc>(broken).doc(), u"");
}

TEST_F(SmallInterfaces, AConvertibleAnswersForTheClassThatItIsAsked) {
    const Class_Generic cls =
        internal::defclass_impl("Convertible", "")
            .parent(I_Convertible::getClass())
            .method(I_Convertible::$tryInto, "target",
                    [](const Any&, const Class_Generic& target) -> Any {
                        return target == Integer::getClass() ? Any(1) : internal::failure(u"Not into that.");
                    })
            .build();
    const Any value = cls.allocateInstance();
    ASSERT_TRUE(I_Convertible::cast(value));
    EXPECT_EQ(shown(unchecked<I_Convertible>(value).tryInto(Integer::getClass())), "1");
    EXPECT_EQ(shown(unchecked<I_Convertible>(value).tryInto(String::getClass())), "error: Not into that.");
    EXPECT_EQ(shown(I_Convertible::cast(1)),
              "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Convertible'.");
}

}  // namespace
}  // namespace ling
