#pragma once

#include "ling/any.h"
#include "ling/class_record.h"

#include <initializer_list>

namespace ling::internal {

/// The instance method by which the class of `value` answers for its instances (`$__compare__`, `$__hash__`,
/// `$__display__`). Nothing for numbers, texts and containers of native classes, whose content is known here.
found_member class_answer(const Any& value, const method_ident_untyped& id);

/// Asks it. A lazy answer is resolved. None when classes ask each other deeper than the stack allows, which is noted
/// for the `walk_check` of the thread. Nothing may be locked: any code runs.
Any ask_class(const found_member& method, std::initializer_list<Any> arguments);

/// The same for callers that have seen themselves that there is room, and have an answer of their own where there is
/// none: a look further down could tell otherwise.
Any call_class(const found_member& method, std::initializer_list<Any> arguments);

/// What stands for `value` where its content counts: lazy, external and weak values are resolved. Runs foreign code for
/// those alone.
class resolved_value {
public:
    explicit resolved_value(const Any& value);
    resolved_value(const resolved_value&) = delete;
    resolved_value& operator=(const resolved_value&) = delete;
    const Any& operator*() const noexcept { return *value_; }
    /// Whether this is another value than the one given: there may be no end to what such values hold.
    bool isResolved() const noexcept { return value_ == &made_; }

private:
    Any made_;
    const Any* value_;
};

}  // namespace ling::internal
