#pragma once

#include "ling/basic_values.h"
#include "ling/class.h"
#include "ling/function.h"

#include <concepts>
#include <cstdint>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

/// Functions from native code: any callable whose parameters and result the runtime can convert.
///
///     auto add = make_function("add", "a, b", [](std::int64_t a, std::int64_t b) { return a + b; }, "Adds.");
///
/// A parameter may be `const Any&`, a handle type, `bool`, any integer type, `double` or `std::span<const Any>` (last:
/// all arguments that remain). A result may be any of the values, `Result<T>` or `void` (none).

namespace ling::internal {

/// How a native parameter type is read from a value: as a handle or a number, or nothing where the value is no such
/// thing. Numbers come without an error beside them, which would have to be dropped after each call.
template <class T>
struct argument {
    static Type type() { return T::getType(); }
    static Result<T> read(const Any& value) { return T::cast(value); }
};
template <>
struct argument<Any> {
    static Type type() { return Untyped::getType(); }
};
template <>
struct argument<bool> {
    static Type type() { return Boolean::getType(); }
    static std::optional<bool> read(const Any& value) {
        return value.is(Kind::Boolean) ? std::optional(value.asBoolean()) : std::nullopt;
    }
};
/// Any integer type; a value that it cannot hold is refused.
template <std::integral T>
struct argument<T> {
    static Type type() { return Integer::getType(); }
    static std::optional<T> read(const Any& value) {
        const bool fits = value.is(Kind::Integer) && std::in_range<T>(value.asInteger());
        return fits ? std::optional(static_cast<T>(value.asInteger())) : std::nullopt;
    }
};
template <>
struct argument<double> {
    static Type type() { return Float::getType(); }
    static std::optional<double> read(const Any& value) {
        if (value.is(Kind::Float))
            return value.asFloat();
        return value.is(Kind::Integer) ? std::optional(static_cast<double>(value.asInteger())) : std::nullopt;
    }
};

template <class T>
inline constexpr bool is_rest = std::is_same_v<std::remove_cvref_t<T>, std::span<const Any>>;

/// The type of a native result. Left untyped where the code answers an `Any`.
template <class T>
Type result_type() {
    if constexpr (std::is_void_v<T>)
        return None::getType();
    else if constexpr (std::is_same_v<T, Any>)
        return Untyped::getType();
    else
        return argument<T>::type();
}
template <class T>
struct unwrapped_result {
    using type = T;
};
template <class T>
struct unwrapped_result<Result<T>> {
    using type = T;
};

template <class T>
Any to_any(Result<T>&& result) {
    return result.toAny();
}
template <class T>
Any to_any(T&& value) {
    return Any(std::forward<T>(value));
}

template <class F, class R, class... Ps>
class object_value_code final : public object_value_native_function {
public:
    object_value_code(String name, Signature signature, String doc, bool independent, F code)
        : object_value_native_function(std::move(name), std::move(signature), std::move(doc), independent),
          code_(std::move(code)) {}

    /// As the base class has it, but with the code known, which saves a step of dispatch.
    Any invoke(std::span<const Any> arguments) override {
        return isExact(arguments) ? call(arguments) : invokeAdjusted(arguments);
    }

protected:
    Any call(std::span<const Any> arguments) override { return apply(arguments, std::index_sequence_for<Ps...>{}); }

private:
    template <class P>
    static auto read(std::span<const Any> arguments, std::size_t index) {
        using T = std::remove_cvref_t<P>;
        if constexpr (std::is_same_v<T, Any>)
            return &arguments[index];
        else if constexpr (is_rest<P>)
            return arguments.subspan(index);
        else
            return argument<T>::read(arguments[index]);
    }
    template <class Read>
    static bool isRead(const Read& read) {
        if constexpr (std::is_same_v<Read, std::span<const Any>>)
            return true;
        else
            return static_cast<bool>(read);
    }
    template <class Read>
    static decltype(auto) given(Read& read) {
        if constexpr (std::is_same_v<Read, std::span<const Any>>)
            return (read);
        else
            return *read;
    }

    template <std::size_t... Is>
    Any apply(std::span<const Any> arguments, std::index_sequence<Is...>) {
        [[maybe_unused]] auto values = std::make_tuple(read<Ps>(arguments, Is)...);
        std::size_t wrong = sizeof...(Ps);
        (void)((isRead(std::get<Is>(values)) || (wrong = Is, false)) && ...);
        if (wrong != sizeof...(Ps))
            return argumentError(wrong, arguments[wrong]);
        if constexpr (std::is_void_v<R>) {
            code_(given(std::get<Is>(values))...);
            return Any();
        } else {
            return to_any(code_(given(std::get<Is>(values))...));
        }
    }

    F code_;
};

/// Splits "a, b, c" into parameters with the types of `Ps`, in order. Missing names come out as "arg1", "arg2", ...
LING_EXPORT Signature native_signature(std::string_view names, std::span<const Type> types, bool rest,
                                       bool withReceiver, const Type& result);

enum class Receiver : bool { None, First };

template <class R, class... Ps, class F>
FunctionCL_Generic make_code(std::string_view name, std::string_view names, F&& code, std::string_view doc,
                             Receiver receiver, R (*)(Ps...)) {
    const Type types[] = {[] {
                              if constexpr (is_rest<Ps>)
                                  return Untyped::getType();
                              else
                                  return argument<std::remove_cvref_t<Ps>>::type();
                          }()...,
                          Untyped::getType()};
    constexpr bool rest = (false || ... || is_rest<Ps>);
    using Returned = typename unwrapped_result<std::remove_cvref_t<R>>::type;
    Signature signature = native_signature(names, std::span<const Type>(types, sizeof...(Ps)), rest,
                                           receiver == Receiver::First, result_type<Returned>());
    return FunctionCL_Generic::adopt(new object_value_code<std::decay_t<F>, R, Ps...>(
        String(name), std::move(signature), String(doc), receiver == Receiver::None, std::forward<F>(code)));
}

template <class T>
struct call_shape : call_shape<decltype(&T::operator())> {};
template <class R, class... Ps>
struct call_shape<R (*)(Ps...)> {
    static constexpr R (*value)(Ps...) = nullptr;
};
template <class R, class... Ps>
struct call_shape<R (*)(Ps...) noexcept> : call_shape<R (*)(Ps...)> {};
template <class C, class R, class... Ps>
struct call_shape<R (C::*)(Ps...) const> : call_shape<R (*)(Ps...)> {};
template <class C, class R, class... Ps>
struct call_shape<R (C::*)(Ps...)> : call_shape<R (*)(Ps...)> {};

}  // namespace ling::internal

namespace ling {

/// A free function. `names` lists the parameters, separated by commas.
template <class F>
FunctionCL_Generic make_function(std::string_view name, std::string_view names, F&& code, std::string_view doc = {}) {
    return internal::make_code(name, names, std::forward<F>(code), doc, internal::Receiver::None,
                               internal::call_shape<std::decay_t<F>>::value);
}

/// A method: the first parameter is the receiver, is called "self" and is not among `names`.
template <class F>
FunctionCL_Generic make_method(std::string_view name, std::string_view names, F&& code, std::string_view doc = {}) {
    return internal::make_code(name, names, std::forward<F>(code), doc, internal::Receiver::First,
                               internal::call_shape<std::decay_t<F>>::value);
}

}  // namespace ling
