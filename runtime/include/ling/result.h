#pragma once

#include "ling/any.h"

#include <optional>

namespace ling {

/// An error result, so called where it is made: it converts to an `Any` and to every `Result<T>`.
///
///     if (count > stock)
///         return ling::failure("There are only {} left.", stock);
class Failure : public Any {
public:
    /// `error` is an error result.
    explicit Failure(Any error) noexcept : Any(std::move(error)) {}
};

namespace internal {
/// The value is an error that stands for a failed operation.
inline bool is_error_result(const Any& value) noexcept {
    const object_value* object = value.object();
    return object != nullptr && object->isErrorResult();
}
}  // namespace internal

/// A value of type `T`, or the error result that stands in its place. Look at it before use:
///
///     Result<String> text = String::cast(value);
///     if (!text) return text.error();
///     use(*text);
template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) noexcept : value_(std::move(value)) {}
    Result(Failure failed) noexcept : error_(std::move(failed)) {}
    /// From what makes a `T`: a literal for a `String`, a derived handle for its base.
    template <class U>
    requires(std::convertible_to<U&&, T> && !std::same_as<std::remove_cvref_t<U>, T> &&
             !std::derived_from<std::remove_cvref_t<U>, Failure>) Result(U&& value)
        : value_(std::forward<U>(value)) {}
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
