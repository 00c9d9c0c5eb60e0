#include "ling/member_table.h"

#include "ling/native_function.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ling::internal {
namespace {

method_ident_untyped nameOf(std::size_t number) {
    return method_ident_untyped(String("member_table_test_" + std::to_string(number)));
}

class MemberTable : public ::testing::TestWithParam<std::size_t> {};

TEST_P(MemberTable, FindsEachNameAndNoOther) {
    const std::size_t count = GetParam();
    std::vector<Any> members;
    member_table table(count);
    for (std::size_t i = 0; i < count; ++i) {
        members.push_back(make_function("f", "", [i] { return i; }));
        table.addUnlessPresent(nameOf(i), {members.back().object(), nullptr, i % 2 == 0});
        table.addUnlessPresent(nameOf(i), {members.front().object(), nullptr, false});
    }
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = 0; i < count; ++i) {
            const found_member& found = table.find(nameOf(i));
            ASSERT_EQ(found.member, members[i].object()) << i;
            ASSERT_EQ(found.classLevel, i % 2 == 0) << i;
        }
        for (std::size_t i = count; i < 2 * count + 1; ++i)
            ASSERT_FALSE(table.find(nameOf(i))) << i;
        table.arrange();
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, MemberTable, ::testing::Values(0, 1, 2, 3, 17, 1000));

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

TEST(MemberTableLifetime, KeepsItsMembersAlive) {
    const method_ident_untyped name = nameOf(0);
    const std::size_t before = live_object_count();
    {
        member_table table(1);
        {
            const Any member = make_function("f", "", [] {});
            table.addUnlessPresent(name, {member.object(), nullptr, false});
        }
        table.arrange();
        EXPECT_EQ(table.find(name).member->kind(), Kind::Function);
    }
    EXPECT_EQ(live_object_count(), before);
}

}  // namespace
}  // namespace ling::internal
