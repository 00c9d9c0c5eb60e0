#include "runtime/support/values.h"

#include <limits>
#include <set>

namespace ling::testing {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Identity, IsOfObjectsAndEqualImmediates) {
    const Any list = listOf();
    EXPECT_TRUE(is_same(list, list));
    EXPECT_FALSE(is_same(list, listOf()));
    EXPECT_TRUE(is_same(1, 1));
    EXPECT_FALSE(is_same(1, 1.0));
    EXPECT_FALSE(is_same(1, true));
    EXPECT_TRUE(is_same(0.0, -0.0));
    EXPECT_TRUE(is_same(kNaN, kNaN));
    EXPECT_TRUE(is_same(Any(), Any()));
    EXPECT_FALSE(is_same(Any(), Undefined()));
    EXPECT_FALSE(is_same(Any(), false));
}

TEST(Identity, NumbersOfObjectsAreTheirOwn) {
    const std::vector<Any> values{listOf(), listOf(), String(u"a"), Any(), Undefined(), true, false,
                                  0,        1,        -1,           0.0,   1.0};
    std::set<std::int64_t> numbers;
    for (const Any& value : values) {
        EXPECT_EQ(object_id(value), object_id(value));
        numbers.insert(object_id(value));
    }
    EXPECT_EQ(numbers.size(), values.size());
}

TEST(Identity, KindsHaveNames) {
    const List_Generic list = listOf();
    const std::vector<std::pair<Any, const char*>> rows{{Any(), "none"},
                                                        {Undefined(), "undefined"},
                                                        {true, "boolean"},
                                                        {1, "integer"},
                                                        {1.0, "float"},
                                                        {String(), "string"},
                                                        {ByteArray(), "byte_array"},
                                                        {list, "list"},
                                                        {Tuple_Generic(), "tuple"},
                                                        {Map_Generic(), "map"},
                                                        {Set_Generic(), "set"},
                                                        {make_function("f", "", [] {}), "function"},
                                                        {List_Generic::getClass(), "object"},
                                                        {Boxed<int>(1), "boxed_value"},
                                                        {Lazy_Generic([] { return Any(1); }), "lazy_value"},
                                                        {External_Generic([] { return Any(1); }), "external_value"},
                                                        {Weak_Generic(list), "weak_reference"}};
    for (const auto& [value, name] : rows)
        EXPECT_EQ(kind_of(value), String(name));
}

}  // namespace
}  // namespace ling::testing
