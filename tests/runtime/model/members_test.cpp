#include "ling/member_table.h"
#include "runtime/support/values.h"

namespace ling::testing {
namespace {

method_ident_untyped nameOf(std::size_t number) {
    return method_ident_untyped(String("member_table_test_" + std::to_string(number)));
}

TEST(MemberTableChange, AddsAndReplacesWhileThereIsRoom) {
    member_table table(4);
    std::vector<Any> members;
    std::vector<const found_member*> answers;
    const auto change = [&](std::size_t name) {
        members.push_back(make_function("f", "", [] {}));
        if (!table.change(nameOf(name), {members.back().object(), nullptr, false}))
            return false;
        answers.push_back(&table.find(nameOf(name)));
        EXPECT_EQ(answers.back()->member, members.back().object());
        return true;
    };
    for (std::size_t i = 0; i < 4; ++i)
        ASSERT_TRUE(change(i % 3));
    int more = 0;
    while (change(0))
        ++more;
    EXPECT_LT(more, 16);
    for (std::size_t i = 0; i < answers.size(); ++i)
        EXPECT_EQ(answers[i]->member, members[i].object()) << "What was found stays as it was.";
    EXPECT_EQ(table.find(nameOf(0)).member, members[answers.size() - 1].object());
    EXPECT_EQ(table.find(nameOf(1)).member, members[1].object());
    EXPECT_FALSE(table.find(nameOf(3)));
}

const method_ident_untyped $number("number");
const property_ident_untyped $$name("name");
const field_ident_untyped $field("field");

/// Leaves a method, a property and its documentation for later, and counts how often it is asked for them.
class LateClass final : public object_value_class {
public:
    static LateClass* make() {
        auto* record = new LateClass;
        (void)record->add_parent_unsafe(Any::getClass());
        record->add_field_unsafe($field, Untyped::getType(), String());
        record->expect_members_unsafe();
        return record;
    }

    bool declareMembers() override {
        ++asked;
        if (refuses)
            return false;
        set_doc_unsafe("The doc.");
        add_class_method_unsafe($number, this, make_function("number", "", [] { return 7; }));
        if (const auto action = std::exchange(meanwhile, nullptr))
            action();
        property_builder_base property;
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

TEST(LateMembers, WhatIsNotDoneIsAskedForAgain) {
    const Late late;
    late.record->refuses = true;
    EXPECT_TRUE(method_of(late.cls, $number).isNone());
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
        sawMethod = !method_of(late.cls, $number).isNone();
        sawProperty = !late.cls.definedProperty($$name).isNone();
        late.record->refuses = false;
    };
    EXPECT_FALSE(late.cls.definedProperty($$name).isNone());
    EXPECT_TRUE(sawMethod);
    EXPECT_FALSE(sawProperty);
}

TEST(LateMembers, AChildModuleIsNoReasonToAskItsParent) {
    const Late late;
    (void)late.record->add_parent_unsafe(Module::getClass());
    auto* record = new object_value_module(late.record, "late_parent");
    const Any parent = Any::adopt(record);
    ASSERT_TRUE(register_module(unchecked<Module>(parent)).isNone());
    const Any child = find_or_create_module("late_parent.name");
    EXPECT_EQ(late.record->asked, 0);
    EXPECT_TRUE(parent.propertyValue($$name).isSameAs(child));  // The module's own comes first.
}

}  // namespace
}  // namespace ling::testing
