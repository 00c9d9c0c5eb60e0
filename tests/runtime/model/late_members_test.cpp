#include "ling/class.h"
#include "ling/class_builder.h"
#include "ling/class_record.h"
#include "ling/function.h"
#include "ling/members.h"
#include "ling/module.h"
#include "ling/property.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <utility>

using ling::Any;
using ling::Class_Generic;
using ling::Inherited;
using ling::String;
using ling::internal::object_value_class;

namespace {

const ling::method_ident_untyped $number("number");
const ling::property_ident_untyped $$name("name");
const ling::field_ident_untyped $field("field");

/// Leaves a method, a property and its documentation for later, and counts how often it is asked for them.
class LateClass final : public object_value_class {
public:
    static LateClass* make() {
        auto* record = new LateClass;
        (void)record->add_parent_unsafe(Any::getClass());
        record->add_field_unsafe($field, ling::Untyped::getType(), String());
        record->expect_members_unsafe();
        return record;
    }

    bool declareMembers() override {
        ++asked;
        if (refuses)
            return false;
        set_doc_unsafe("The doc.");
        add_class_method_unsafe($number, this, ling::make_function("number", "", [] { return 7; }));
        if (const auto action = std::exchange(meanwhile, nullptr))
            action();
        ling::internal::property_builder_base property;
        property.assign_getter_value(String("late"));
        add_property_unsafe($$name, this, property.build());
        return true;
    }

    std::atomic<int> asked = 0;
    bool refuses = false;
    std::function<void()> meanwhile;

private:
    LateClass() : object_value_class(u"Late") {}
};

struct Late {
    LateClass* record = LateClass::make();
    Class_Generic cls = Class_Generic::adopt(record);
};

TEST(LateMembers, NobodyIsAskedForWhatIsThereFromTheBeginning) {
    const Late late;
    const Any instance = late.cls.allocateInstance();
    EXPECT_TRUE(late.cls.isAncestor(Any::getClass()));
    EXPECT_EQ(late.cls.fields(Inherited::Yes).size(), 1U);
    EXPECT_TRUE(instance.setFieldValue($field, 5).isNone());
    EXPECT_EQ(late.cls.name(), String("Late"));
    EXPECT_EQ(late.cls.parents().size(), 1U);
    EXPECT_EQ(late.record->asked, 0);
}

struct LookCase {
    const char* name;
    bool (*look)(const Class_Generic& cls);
};

class LateMembersLook : public testing::TestWithParam<LookCase> {};

TEST_P(LateMembersLook, SeesAllMembersAndIsTheOnlyOneToAsk) {
    const Late late;
    EXPECT_TRUE(GetParam().look(late.cls));
    EXPECT_TRUE(GetParam().look(late.cls));
    EXPECT_EQ(late.record->asked, 1);
    EXPECT_FALSE(late.record->expectsMembers());
}

constexpr LookCase kLooks[] = {
    {"Method", [](const Class_Generic& cls) { return cls.allocateInstance().callMethod($number).asInteger() == 7; }},
    {"ClassMethod", [](const Class_Generic& cls) { return cls.callMethod($number).asInteger() == 7; }},
    {"Property", [](const Class_Generic& cls) { return !ling::property_of(cls.allocateInstance(), $$name).isNone(); }},
    {"DefinedProperty", [](const Class_Generic& cls) { return !cls.definedProperty($$name).isNone(); }},
    {"OwnListing", [](const Class_Generic& cls) { return cls.classMethods(Inherited::No).size() == 1; }},
    {"WholeListing", [](const Class_Generic& cls) { return cls.properties(Inherited::Yes).size() == 1; }},
    {"Doc", [](const Class_Generic& cls) { return cls.doc() == String("The doc."); }},
};

INSTANTIATE_TEST_SUITE_P(Rows, LateMembersLook, testing::ValuesIn(kLooks),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(LateMembers, ADerivedClassInheritsThemWhenItIsLookedAt) {
    const Late late;
    const Class_Generic derived = ling::internal::defclass_impl("Derived", "").parent(late.cls).build();
    const Any instance = derived.allocateInstance();
    EXPECT_EQ(late.record->asked, 0);
    EXPECT_EQ(instance.callMethod($number).asInteger(), 7);
    EXPECT_EQ(derived.properties(Inherited::Yes).size(), 1U);
    EXPECT_EQ(late.record->asked, 1);
}

TEST(LateMembers, WhatIsNotDoneIsAskedForAgain) {
    const Late late;
    late.record->refuses = true;
    EXPECT_TRUE(ling::method_of(late.cls, $number).isNone());
    late.record->refuses = false;
    EXPECT_EQ(late.cls.callMethod($number).asInteger(), 7);
    EXPECT_EQ(late.record->asked, 2);
}

/// What is seen from within is not kept: afterwards everything is there.
TEST(LateMembers, ALookFromWithinSeesWhatIsThereSoFar) {
    const Late late;
    bool sawMethod = false;
    bool sawProperty = true;
    late.record->meanwhile = [&] {
        late.record->refuses = true;  // As a class does that is in the middle of it.
        sawMethod = !ling::method_of(late.cls, $number).isNone();
        sawProperty = !late.cls.definedProperty($$name).isNone();
        late.record->refuses = false;
    };
    EXPECT_FALSE(late.cls.definedProperty($$name).isNone());
    EXPECT_TRUE(sawMethod);
    EXPECT_FALSE(sawProperty);
}

TEST(LateMembers, AChildModuleIsNoReasonToAskItsParent) {
    const Late late;
    (void)late.record->add_parent_unsafe(ling::Module::getClass());
    auto* record = new ling::internal::object_value_module(late.record, "late_parent");
    const Any parent = Any::adopt(record);
    ASSERT_TRUE(ling::internal::register_module(ling::unchecked<ling::Module>(parent)).isNone());
    const Any child = ling::find_or_create_module("late_parent.name");
    EXPECT_EQ(late.record->asked, 0);
    EXPECT_TRUE(parent.propertyValue($$name).isSameAs(child));  // The module's own comes first.
}

}  // namespace
