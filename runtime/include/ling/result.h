#pragma once

#include "ling/any.h"

#include <optional>

namespace ling {

/// A value of type `T`, or the error result that stands in its place. Look at it before use:
///
///     Result<String> text = String::cast(value);
///     if (!text) return text.error();
///     use(*text);
template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) noexcept : value_(std::move(value)) {}
    /// `error` should be an error result; it is what `error()` gives.
    static Result failure(Any error) noexcept {
        Result result;
        result.error_ = std::move(error);
        return result;
    }

    explicit operator bool() const noexcept { return value_.has_value(); }
    const T& operator*() const& noexcept { return *value_; }
    T& operator*() & noexcept { return *value_; }
    T&& operator*() && noexcept { return *std::move(value_); }
    const T* operator->() const noexcept { return &*value_; }
    T* operator->() noexcept { return &*value_; }
    const Any& error() const noexcept { return error_; }
    T valueOr(T fallback) const { return value_ ? *value_ : std::move(fallback); }

    /// The value, or the error, as one `Any`.
    Any toAny() const { return value_ ? Any(*value_) : error_; }

private:
    Result() noexcept = default;

    std::optional<T> value_;
    Any error_;
};

}  // namespace ling
