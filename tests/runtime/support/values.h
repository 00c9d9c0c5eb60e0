#pragma once

#include "ling/ling.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

namespace ling {

/// How GoogleTest shows values.
inline void PrintTo(const Any& value, std::ostream* out) {
    *out << (internal::is_error_result(value) ? "error: " : "") << display(value).toStdString();
}

}  // namespace ling

namespace ling::testing {

/// A value as text; an error result is marked, so that it is not taken for a text.
inline std::string shown(const Any& value) {
    return (internal::is_error_result(value) ? "error: " : "") + display(value).toStdString();
}

/// The result of a typed operation as text, in the same way.
template <class T>
std::string shown(const Result<T>& result) {
    return shown(result.toAny());
}

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
    class dropped final : public internal::object_value_object {
    public:
        dropped(std::function<void()> action, const Class_Generic& cls)
            : object_value_object(cls.record()), action_(std::move(action)) {}
        ~dropped() override { action_(); }

    private:
        const std::function<void()> action_;
    };
    return Any::adopt(new dropped(std::move(action), internal::defclass_impl("Dropped", "").build()));
}

/// A class whose instances compare and hash as the test says.
inline Class_Generic keyClass(std::function<Any(const Any& self, const Any& other)> compare,
                              std::function<Any(const Any& self)> hash) {
    return internal::defclass_impl("Key", "")
        .method(Any::$__compare__, "other",
                [compare](const Any& self, const Any& other) -> Any { return compare(self, other); })
        .method(Any::$__hash__, "", [hash](const Any& self) -> Any { return hash(self); })
        .build();
}

}  // namespace ling::testing
