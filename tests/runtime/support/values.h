#pragma once

#include "ling/ling.h"
#include "support/table.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

namespace ling {

/// How GoogleTest shows values.
inline void PrintTo(const Any& value, std::ostream* out) {
    *out << (is_error_result(value) ? "error: " : "") << display(value).toStdString();
}

}  // namespace ling

namespace ling::testing {

using namespace internal;

/// A value as text; an error result is marked, so that it is not taken for a text.
inline std::string shown(const Any& value) {
    return (is_error_result(value) ? "error: " : "") + display(value).toStdString();
}

/// The result of a typed operation as text, in the same way.
template <class T>
std::string shown(const Result<T>& result) {
    return shown(result.toAny());
}

/// A value as a person sees it: of an error, its message.
inline std::string plain(const Any& value) { return display(value).toStdString(); }

template <class... Items>
List_Generic listOf(const Items&... items) {
    return List_Generic(std::vector<Any>{Any(items)...});
}

template <class... Items>
Tuple_Generic tupleOf(const Items&... items) {
    return Tuple_Generic(std::vector<Any>{Any(items)...});
}

/// All that an iteration of `iterable` gives, as the text of a list, or the error that ended it.
inline std::string walked(const Any& iterable) {
    std::vector<Any> items;
    iteration walk = unchecked<I_Iterable_Generic>(iterable).beginImpl();
    while (walk.advance())
        items.push_back(walk.item());
    return walk.failed() ? shown(walk.error()) : shown(List_Generic(std::move(items)));
}

/// An object that runs `action` when its last reference goes.
inline Any onDrop(std::function<void()> action) {
    class dropped final : public object_value_object {
    public:
        dropped(std::function<void()> action, const Class_Generic& cls)
            : object_value_object(cls.record()), action_(std::move(action)) {}
        ~dropped() override { action_(); }

    private:
        const std::function<void()> action_;
    };
    return Any::adopt(new dropped(std::move(action), defclass_impl("Dropped", "").build()));
}

/// A class whose instances compare and hash as the test says.
inline Class_Generic keyClass(std::function<Any(const Any& self, const Any& other)> compare,
                              std::function<Any(const Any& self)> hash) {
    return defclass_impl("Key", "")
        .method(Any::$__compare__, "other",
                [compare](const Any& self, const Any& other) -> Any { return compare(self, other); })
        .method(Any::$__hash__, "", [hash](const Any& self) -> Any { return hash(self); })
        .build();
}

inline const field_ident_untyped kNumber{"number"};

/// A class of keys that are numbers, compared by them and hashed as `hash` says; `comparisons` counts.
template <class Hash>
Class_Generic numberedKeys(Hash hash, int* comparisons = nullptr) {
    return defclass_impl("Numbered", "")
        .field(kNumber)
        .method(Any::$__init__, "number",
                [](const Any& self, const Any& given) { return self.setFieldValue(kNumber, given); })
        .method(Any::$__compare__, "other",
                [comparisons](const Any& self, const Any& other) -> Any {
                    if (comparisons != nullptr)
                        ++*comparisons;
                    return compare_objects(self.fieldValue(kNumber), other.fieldValue(kNumber));
                })
        .method(Any::$__hash__, "", [hash](const Any& self) -> Any { return hash(self.fieldValue(kNumber)); })
        .build();
}

/// An iterator that gives `items` and then the error "Broken.".
template <class... Items>
Any failing(const Items&... items) {
    const List_Generic steps = listOf(items...);
    const Class_Generic cls =
        defclass_impl("Failing", "")
            .parent(I_Iterator_Generic::getClass())
            .method(I_Iterator_Generic::$next, "",
                    [steps](const Any&) -> Any { return steps.size() == 0 ? failure(u"Broken.") : steps.pop(0); })
            .build();
    return cls.allocateInstance();
}

/// Runs `work(number)` on `count` threads that begin together, and waits for all of them.
template <class Work>
void inThreads(int count, Work work) {
    std::atomic<int> waiting{count};
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number)
        threads.emplace_back([&, number] {
            for (--waiting; waiting.load() != 0;)
                std::this_thread::yield();
            work(number);
        });
    for (std::thread& thread : threads)
        thread.join();
}

/// A fixture whose tests end with as many objects alive as they began with.
///
/// What a test makes for the life of the process, once (an identifier, an instance of a generic class), has to be made
/// before: in the constructor of a derived fixture, or as a constant beside the tests.
class LiveObjects : public ::testing::Test {
protected:
    void SetUp() override { start_ = live_object_count(); }
    void TearDown() override {
        EXPECT_EQ(live_object_count(), start_) << "Objects were left behind, or released once too often.";
    }

private:
    std::size_t start_ = 0;
};

}  // namespace ling::testing
