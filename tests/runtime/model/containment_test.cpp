#include "runtime/support/values.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <stdexcept>

/// What native code throws, and memory that ends.

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define LING_MEMORY_CAN_END 0  // The checkers bring allocation functions of their own, which none may replace.
#else
#define LING_MEMORY_CAN_END 1
#endif

namespace {

/// How many allocations this thread still gets; none is counted while it is negative.
thread_local std::int64_t allocationsLeft = -1;
thread_local bool anyWasRefused = false;

/// In its scope memory ends after so many allocations.
class EndOfMemory {
public:
    explicit EndOfMemory(std::int64_t after) {
        anyWasRefused = false;
        allocationsLeft = after;
    }
    ~EndOfMemory() { allocationsLeft = -1; }
    EndOfMemory(const EndOfMemory&) = delete;
    EndOfMemory& operator=(const EndOfMemory&) = delete;
};

#if LING_MEMORY_CAN_END
void* allocate(std::size_t size) {
    if (allocationsLeft == 0) {
        anyWasRefused = true;
        return nullptr;
    }
    if (allocationsLeft > 0)
        --allocationsLeft;
    return std::malloc(size == 0 ? 1 : size);
}
#endif

}  // namespace

#if LING_MEMORY_CAN_END
void* operator new(std::size_t size) {
    if (void* memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
// Not put in line: the compiler would see `free` take what an operator gave, and warn of it.
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
#endif

namespace ling::testing {

namespace {

using internal::class_builder;
using internal::class_hooks;
using internal::is_error_result;
using internal::object_value_class;
using internal::property_builder;

[[noreturn]] Any fail() { throw std::runtime_error("It broke."); }

const method_ident_untyped $work("work");
const property_ident_untyped $$state("state");

constexpr struct Throw {
    const char* name;
    void (*raise)();
    const char* message;
} kThrows[] = {
    {"StandardException", [] { throw std::out_of_range("Beyond the end."); }, "error: Beyond the end."},
    {"NoWord", [] { throw std::runtime_error(""); }, "error: An exception of type 'std::runtime_error'."},
    {"EndOfMemory", [] { throw std::bad_alloc(); }, "error: Out of memory."},
    {"SomethingElse", [] { throw 5; }, "error: An exception of an unknown kind."},
};

LING_TABLE(Thrown, ::testing::Test, kThrows);

TEST_P(Thrown, FromAFunctionIsItsError) {
    const auto function =
        make_function("work", "a, b", [raise = GetParam().raise](std::int64_t, const Any&) { raise(); });
    EXPECT_EQ(shown(function(1, 2)), GetParam().message);
    EXPECT_EQ(shown(function.bindArgs(1)(2)), GetParam().message);
    EXPECT_EQ(
        shown(function.invokeWith(Map_Generic(std::vector<std::pair<Any, Any>>{{String(u"a"), 1}, {String(u"b"), 2}}))),
        GetParam().message);
}

std::vector<String>& loggedLines() {
    static std::vector<String>& lines = *new std::vector<String>;
    return lines;
}

/// A class whose members all throw.
Class_Generic brokenClass(const class_hooks& hooks = {}) {
    return class_builder("Broken", "")
        .hooks(hooks)
        .method($work, "", [](const Any&) -> Any { return fail(); })
        .method(I_Iterator_Generic::$next, "", [](const Any&) -> Any { return fail(); })
        .classMethod("make", "", [] { return fail(); })
        .property(
            $$state,
            property_builder().getter([](const Any&) -> Any { return fail(); }).setter([](const Any&, const Any&) {
                fail();
            }))
        .build();
}

TEST(Containment, WhatMembersThrowIsTheirError) {
    const char* const expected = "error: It broke.";
    const Any broken = brokenClass()();
    EXPECT_EQ(shown(broken.callMethod($work)), expected);
    EXPECT_EQ(shown(unchecked<I_Invokable_Generic>(broken.boundMethod($work))()), expected);
    EXPECT_EQ(shown(broken.callMethod(I_Iterator_Generic::$next)), expected);
    EXPECT_EQ(shown(broken.propertyValue($$state)), expected);
    EXPECT_EQ(shown(broken.setPropertyValue($$state, 1)), expected);
    EXPECT_EQ(shown(brokenClass().callMethod("make")), expected);
    EXPECT_EQ(shown(Lazy_Generic([] { return fail(); }).evaluate()), expected);
    EXPECT_EQ(shown(internal::result_unwrap_lazy(External_Generic([] { return fail(); }, nullptr))), expected);
}

TEST(Containment, WhatHooksThrowIsTheErrorOfTheCall) {
    const char* const expected = "error: It broke.";
    EXPECT_EQ(shown(brokenClass({.allocate = [](object_value_class*) -> internal::object_value* { fail(); }})()),
              expected);
    EXPECT_EQ(shown(brokenClass({.construct = [](const Class_Generic&, std::span<const Any>) { return fail(); }})()),
              expected);
    const Any called = brokenClass({.invoke = [](const Any&, std::span<const Any>) { return fail(); }})();
    EXPECT_EQ(shown(unchecked<I_Invokable_Generic>(called)()), expected);
    loggedLines().clear();
    internal::set_assertion_log([](const String& line) { loggedLines().push_back(line); });
    {
        const Any finalised = brokenClass({.finalize = [](internal::object_value_object&) { fail(); }})();
    }
    internal::set_assertion_log(nullptr);
    EXPECT_EQ(loggedLines(), std::vector<String>{u"The finaliser of the class 'Broken' failed: It broke."});
}

#if LING_MEMORY_CAN_END

/// Lets memory end after each allocation of an operation in turn, until it gets by. `prepare` makes what it works on,
/// anew each time. An operation answers its value or the one error, and `check` sees what is there afterwards.
template <class Prepare, class Operation, class Check>
void endMemoryEverywhere(Prepare&& prepare, Operation&& operation, Check&& check) {
    for (std::int64_t after = 0;; ++after) {
        ASSERT_LT(after, 500) << "it never gets by";
        const auto subject = prepare();
        Any outcome;
        {
            const EndOfMemory end(after);
            outcome = operation(subject);
        }
        if (is_error_result(outcome)) {
            EXPECT_EQ(shown(outcome), "error: Out of memory.");
        }
        check(subject, outcome);
        if (::testing::Test::HasFailure() || !anyWasRefused)
            return;
    }
}

/// An operation on a list of three that changes it wholly or not at all.
struct ListChange {
    const char* name;
    const method_ident_untyped& method;
    Any argument;
    std::size_t after;
};

TEST(Containment, AListIsWholeWhereverMemoryEnds) {
    const ListChange changes[] = {
        {"append", I_MutableSequence_Generic::$append, 4, 4},
        {"extend", I_MutableSequence_Generic::$extend, listOf(4, 5, 6, 7, 8, 9, 10), 10},
        {"multiply in place", Any::$__imul__, 20, 60},
        {"multiply", Any::$__mul__, 20, 3},
        {"add", Any::$__add__, listOf(4, 5), 3},
        {"pop", I_MutableSequence_Generic::$pop, 0, 2},
    };
    for (const ListChange& change : changes) {
        SCOPED_TRACE(change.name);
        // An iterator shares the items, so that every change has to move them.
        endMemoryEverywhere(
            [] {
                const List_Generic list = listOf(1, 2, 3);
                return std::pair(list, list.iter());
            },
            [&](const auto& subject) { return subject.first.callMethod(change.method, {change.argument}); },
            [&](const auto& subject, const Any& outcome) {
                EXPECT_EQ(subject.first.size(), is_error_result(outcome) ? 3 : change.after);
            });
    }
}

TEST(Containment, AnObjectHasAMemberWhollyOrNotAtAll) {
    const property_ident_untyped id("own");
    endMemoryEverywhere([] { return listOf(); },
                        [&](const List_Generic& list) { return insert_property_value(list, id, 5); },
                        [&](const List_Generic& list, const Any& outcome) {
                            EXPECT_EQ(own_properties_of(list).size(), is_error_result(outcome) ? 0u : 1u);
                            EXPECT_EQ(property_of(list, id).isNone(), is_error_result(outcome));
                        });
}

TEST(Containment, AFunctionIsRegisteredWhollyOrNotAtAll) {
    const Module module = unchecked<Module>(find_or_create_module(u"containment"));
    int number = 0;
    endMemoryEverywhere(
        [&] { return make_function("f" + std::to_string(number++), "", [] { return 1; }); },
        [](const FunctionCL_Generic& function) { return internal::register_function("containment", function); },
        [&](const FunctionCL_Generic& function, const Any& outcome) {
            const bool isListed = std::ranges::any_of(
                module.functions(), [&](const auto& entry) { return entry.member.isSameAs(function); });
            EXPECT_EQ(isListed, !is_error_result(outcome));
            EXPECT_EQ(property_of(module, property_ident_untyped(function.name())).isNone(), is_error_result(outcome));
            EXPECT_TRUE(internal::register_function("containment", function).isNone());
        });
}

TEST(Containment, AValueIsTakenApartWithoutMemory) {
    Any nested;
    for (int i = 0; i < 100'000; ++i)
        nested = listOf(nested);
    const std::size_t before = internal::live_object_count();
    {
        const EndOfMemory end(0);
        nested = Any();
    }
    EXPECT_FALSE(anyWasRefused);
    EXPECT_EQ(internal::live_object_count(), before - 100'000);
}

TEST(Containment, AncestorsAndFinalisersAreFoundWithoutMemory) {
    static int finalised = 0;
    const Class_Generic parent =
        class_builder("Parent", "").hooks({.finalize = [](internal::object_value_object&) { ++finalised; }}).build();
    const Class_Generic child = class_builder("Child", "").parent(parent).build();
    Any instance = child();
    parent.record()->set_doc_unsafe(u"Changed: what is known of both has to be put together anew.");
    const EndOfMemory end(0);
    EXPECT_TRUE(child.isAncestor(parent));
    EXPECT_FALSE(parent.isAncestor(child));
    instance = Any();
    EXPECT_EQ(finalised, 1);
}

TEST(Containment, TheErrorThatEverybodySharesStaysAsItIs) {
    const auto function = make_function("work", "", [] { throw std::bad_alloc(); });
    Any outcome;
    {
        const EndOfMemory end(0);
        outcome = function();
    }
    const Error error = *Error::cast(outcome);
    error.setCause(Error(u"somebody's"));
    error.setException(5);
    EXPECT_TRUE(error.cause().isNone());
    EXPECT_TRUE(error.exception().isNone());
    EXPECT_FALSE(outcome.isSameAs(function())) << "where there is memory, each failure has an error of its own";
}

#endif

}  // namespace

}  // namespace ling::testing
