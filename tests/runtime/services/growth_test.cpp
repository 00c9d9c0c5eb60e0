#include "runtime/support/values.h"

#include <algorithm>
#include <limits>

#include <time.h>

/// What is done many times costs as much each time, however often it was done before.

namespace ling::testing {
namespace {

double processorTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct Work {
    const char* name;
    int few;
    void (*run)(int times);

    friend void PrintTo(const Work& row, std::ostream* out) { *out << row.name; }
};

double costOf(const Work& work, int times) {
    double best = std::numeric_limits<double>::max();
    for (int i = 0; i < 3; ++i) {
        const double before = processorTime();
        work.run(times);
        best = std::min(best, processorTime() - before);
    }
    return best;
}

/// A name that no other run of any row has.
String freshName() {
    static int number = 0;
    return String("growth_" + std::to_string(++number));
}

Any function() {
    return make_function("f", "", [] {});
}

void removeOwnProperties(int times) {
    const Any object = defclass_impl("Carrier", "").build().allocateInstance();
    std::vector<property_ident_untyped> names;
    for (int i = 0; i < times; ++i) {
        names.emplace_back(String("own_" + std::to_string(i)));
        (void)insert_property_value(object, names.back(), i);
    }
    for (const property_ident_untyped& name : names)
        ASSERT_TRUE(remove_property(object, name));
}

void makeGenericInstances(int times) {
    const Class_Generic generic = defclass_impl("Generic", "").build();
    for (int i = 0; i < times; ++i) {
        const Type parameter(defclass_impl("Parameter", "").build());
        const Class_Generic made = generic.record()->genericInstance({&parameter, 1});
        ASSERT_EQ(generic.record()->genericInstance({&parameter, 1}), made);
    }
}

void registerFunctions(int times) {
    const std::string module = freshName().toStdString();
    for (int i = 0; i < times; ++i)
        (void)register_function(module, make_function("f" + std::to_string(i), "", [] {}));
}

void registerClasses(int times) {
    const std::string module = freshName().toStdString();
    for (int i = 0; i < times; ++i)
        (void)register_class(module, defclass_impl("C" + std::to_string(i), "").build());
}

/// Replaces as many methods as it adds.
void addMethodsWithLookUpsBetween(int times) {
    const Class_Generic parent = defclass_impl("Growing", "").build();
    const Any object = defclass_impl("Derived", "").parent(parent).build().allocateInstance();
    const Any added = function();
    for (int i = 0; i < 2 * times; ++i) {
        const method_ident_untyped name(String("method_" + std::to_string(i % times)));
        parent.record()->add_method_unsafe(name, parent.record(), unchecked<I_Invokable_Generic>(added));
        ASSERT_TRUE(method_of(object, name).isSameAs(added));
    }
}

void insertFractions(int times) {
    const Map_Generic map;
    for (int i = 0; i < times; ++i)
        map.set(static_cast<double>(i) / 16384, i);
    ASSERT_EQ(map.size(), static_cast<std::size_t>(times));
}

/// A map of ten keys that come and go is walked as one of ten.
void replaceKeysOfASmallMap(int times) {
    const Map_Generic map;
    for (int i = 0; i < times; ++i) {
        map.set(i, i);
        if (i >= 10)
            map.remove(i - 10);
        ASSERT_LE(unchecked<List_Generic>(map.keys()).size(), 10u);
    }
}

void insertKeysThatDifferInHighBits(int times) {
    const Class_Generic cls = keyClass([](const Any& a, const Any& b) { return Any(a.isSameAs(b) ? 0 : 1); },
                                       [](const Any& self) { return Any((object_id(self) >> 4) << 46); });
    const Map_Generic map;
    for (int i = 0; i < times; ++i)
        map.set(cls.allocateInstance(), i);
}

void bindArgumentsAgain(int times) {
    I_Invokable_Generic bound =
        unchecked<I_Invokable_Generic>(make_function("f", "all", [](std::span<const Any> all) { return all.size(); }));
    for (int i = 0; i < times; ++i)
        bound = unchecked<I_Invokable_Generic>(bound.bindArgs(i));
    ASSERT_EQ(shown(bound.invoke({})), std::to_string(times));
    ASSERT_EQ(shown(bound.propertyValue(I_HasName::$$name)), "f");
    ASSERT_EQ(bound.parameterCount(), 1);
}

void showNestedLists(int times) {
    Any nested = listOf();
    for (int i = 0; i < times; ++i)
        nested = listOf(std::move(nested));
    ASSERT_EQ(display(nested).length(), 2 * static_cast<std::size_t>(times) + 2);
}

constexpr Work kWork[] = {
    {"OwnProperties", 1'000, &removeOwnProperties},
    {"GenericInstances", 500, &makeGenericInstances},
    {"Functions", 500, &registerFunctions},
    {"Classes", 250, &registerClasses},
    {"MethodsWithLookUpsBetween", 250, &addMethodsWithLookUpsBetween},
    {"Fractions", 4'000, &insertFractions},
    {"KeysThatComeAndGo", 2'000, &replaceKeysOfASmallMap},
    {"KeysThatDifferInHighBits", 1'000, &insertKeysThatDifferInHighBits},
    {"BoundArguments", 5'000, &bindArgumentsAgain},
    {"NestedLists", 5'000, &showNestedLists},
};
LING_TABLE(Growth, ::testing::Test, kWork);

/// Eight times as often takes eight times as long; if each cost as much more as there are already, sixty-four times.
TEST_P(Growth, IsThatOfTheWork) {
    EXPECT_LT(costOf(GetParam(), 8 * GetParam().few) / costOf(GetParam(), GetParam().few), 24);
}

}  // namespace
}  // namespace ling::testing
