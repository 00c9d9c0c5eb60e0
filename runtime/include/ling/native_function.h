#pragma once

#include "ling/blocking.h"
#include "ling/conversion.h"
#include "ling/error.h"
#include "ling/function.h"
#include "ling/parameter_list.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

/// Functions from native code: any callable whose parameters and result `ling/conversion.h` can convert.
///
///     auto add = make_function("add", "a, b", [](std::int64_t a, std::int64_t b) { return a + b; }, "Adds.");
///
/// Code that waits or computes for long is marked: `blocking(code)` (`ling/blocking.h`).
/// The callable has one signature: no `auto` parameters, no overloads. `std::span<const T>` as the last parameter takes
/// all arguments that remain.
/// What the code throws becomes an error result: no exception leaves the function.

namespace ling::internal {

/// All arguments that remain, as values of one C++ type.
template <class T>
class rest_arguments {
public:
    explicit rest_arguments(std::span<const Any> arguments) {
        static_assert(!std::same_as<T, bool>, "A native function takes remaining booleans as std::span<const Any>.");
        check_item<T>();
        values_.reserve(arguments.size());
        for (const Any& argument : arguments) {
            auto value = conversion<T>::read(argument);
            if (!value) {
                isRead_ = false;
                break;
            }
            values_.push_back(*std::move(value));
        }
    }
    explicit operator bool() const noexcept { return isRead_; }
    std::span<const T> operator*() const noexcept { return values_; }
    std::size_t wrong() const noexcept { return values_.size(); }

private:
    std::vector<T> values_;
    bool isRead_ = true;
};
template <>
class rest_arguments<Any> {
public:
    explicit rest_arguments(std::span<const Any> arguments) noexcept : arguments_(arguments) {}
    explicit operator bool() const noexcept { return true; }
    std::span<const Any> operator*() const noexcept { return arguments_; }
    std::size_t wrong() const noexcept { return 0; }

private:
    std::span<const Any> arguments_;
};

/// One parameter of native code: how its argument is read, and what of it the code is given.
template <class P>
struct native_parameter {
    using type = std::remove_cvref_t<P>;

    static Type declaredType() {
        if constexpr (is_rest<P> && std::same_as<type, std::span<const Any>>)
            return Untyped::getType();
        else
            return conversion<type>::type();
    }
    static auto read(std::span<const Any> arguments, std::size_t index) {
        if constexpr (std::same_as<type, Any>)
            return &arguments[index];
        else if constexpr (is_rest<P>)
            return rest_arguments<std::remove_const_t<typename type::element_type>>(arguments.subspan(index));
        else
            return conversion<type>::read(arguments[index]);
    }
    /// By value, the argument is taken out of what was read; otherwise the code looks at it there.
    template <class Read>
    static decltype(auto) give(Read& read) {
        if constexpr (std::is_rvalue_reference_v<P>)
            return type(*std::move(read));
        else if constexpr (std::is_reference_v<P> || std::is_pointer_v<Read> || is_rest<P>)
            return *read;
        else
            return *std::move(read);
    }
    /// More than the type says about an argument that could not be read, or none.
    template <class Read>
    static Any explain(const Read& read, const Any& argument) {
        if constexpr (requires { conversion<type>::explain(read, argument); })
            return conversion<type>::explain(read, argument);
        else
            return Any();
    }
    template <class Read>
    static std::size_t wrong(const Read& read, std::size_t index) {
        if constexpr (is_rest<P>)
            return index + read.wrong();
        else
            return index;
    }
};

template <class R>
Type result_type() {
    if constexpr (std::is_void_v<R>)
        return None::getType();
    else
        return given_type<std::remove_cvref_t<R>>();
}

template <class F, class Receiver, class... Arguments>
decltype(auto) call_member(F code, Receiver&& receiver, Arguments&&... arguments) {
    if constexpr (std::is_member_object_pointer_v<F>)
        return (receiver.*code);
    else
        return (receiver.*code)(std::forward<Arguments>(arguments)...);
}
template <class F>
inline constexpr bool is_blocking = false;
template <class F>
inline constexpr bool is_blocking<blocking_code<F>> = true;

/// Calls functions, function objects, member functions, and data members, which answer what is in them. Locks of
/// languages that blocking code leaves are taken again before its caller looks at what it answered.
template <class F, class... Arguments>
decltype(auto) call_code(F& code, Arguments&&... arguments) {
    if constexpr (is_blocking<std::remove_const_t<F>>) {
        const guest_locks_left unlocked;
        return call_code(code.code, std::forward<Arguments>(arguments)...);
    } else if constexpr (std::is_member_pointer_v<F>) {
        return call_member(code, std::forward<Arguments>(arguments)...);
    } else {
        return code(std::forward<Arguments>(arguments)...);
    }
}

template <class F, class R, class... Ps>
class object_value_code final : public object_value_native_function {
public:
    object_value_code(String name, Signature signature, String doc, bool independent, F code)
        : object_value_native_function(std::move(name), std::move(signature), std::move(doc), independent),
          code_(std::move(code)) {}

    /// As the base class has it, but with the code known, which saves a step of dispatch.
    Any invoke(std::span<const Any> arguments) override {
        return contain([&] { return isExact(arguments) ? call(arguments) : invokeAdjusted(arguments); });
    }

protected:
    Any call(std::span<const Any> arguments) override { return apply(arguments, std::index_sequence_for<Ps...>{}); }

private:
    template <std::size_t... Is>
    Any apply([[maybe_unused]] std::span<const Any> arguments, std::index_sequence<Is...> positions) {
        [[maybe_unused]] auto values = std::make_tuple(native_parameter<Ps>::read(arguments, Is)...);
        if (!(static_cast<bool>(std::get<Is>(values)) && ...))
            return refuse(values, arguments, positions);
        if constexpr (std::is_void_v<R>) {
            call_code(code_, native_parameter<Ps>::give(std::get<Is>(values))...);
            return Any();
        } else {
            return conversion<std::remove_cvref_t<R>>::give(
                call_code(code_, native_parameter<Ps>::give(std::get<Is>(values))...));
        }
    }

    template <class Values, std::size_t... Is>
    Any refuse([[maybe_unused]] const Values& values, [[maybe_unused]] std::span<const Any> arguments,
               std::index_sequence<Is...>) const {
        Any error;
        (void)((static_cast<bool>(std::get<Is>(values)) ||
                (error = refuseOne<Ps>(std::get<Is>(values), arguments, Is), false)) &&
               ...);
        return error;
    }
    template <class P, class Read>
    Any refuseOne(const Read& read, std::span<const Any> arguments, std::size_t index) const {
        const std::size_t wrong = native_parameter<P>::wrong(read, index);
        return argumentError(wrong, arguments, native_parameter<P>::explain(read, arguments[wrong]));
    }

    F code_;
};

enum class Receiver : bool { None, First };

template <class... Ps>
constexpr bool rest_is_last() {
    constexpr bool rest[] = {is_rest<Ps>..., false};
    for (std::size_t i = 0; i + 1 < sizeof...(Ps); ++i)
        if (rest[i])
            return false;
    return true;
}

template <class R, class... Ps, class F>
FunctionCL_Generic make_code(std::string_view name, const parameter_list& parameters, F&& code, std::string_view doc,
                             Receiver receiver, R (*)(Ps...)) {
    static_assert(rest_is_last<Ps...>(),
                  "A span takes all arguments that remain, so it is the last parameter. Take "
                  "std::vector<T> for a list as one argument.");
    if constexpr (rest_is_last<Ps...>() && (takes<Ps>() && ...) && gives<R>()) {
        const Type types[] = {native_parameter<Ps>::declaredType()..., Untyped::getType()};
        constexpr bool rest = (false || ... || is_rest<Ps>);
        return FunctionCL_Generic::adopt(new object_value_code<std::decay_t<F>, R, Ps...>(
            String(name),
            parameters.signature(std::span<const Type>(types, sizeof...(Ps)), rest, receiver == Receiver::First,
                                 result_type<R>()),
            String(doc), receiver == Receiver::None, std::forward<F>(code)));
    } else {
        return FunctionCL_Generic::adopt(nullptr);
    }
}

/// The signature of a callable, as a null pointer to a function of it: `call_shape<F>::value`. That of a member has
/// the object for its first parameter.
template <class T>
struct operator_shape;
template <class C, class R, class... Ps>
struct operator_shape<R (C::*)(Ps...)> {
    static constexpr R (*value)(Ps...) = nullptr;
};
template <class C, class R, class... Ps>
struct operator_shape<R (C::*)(Ps...) const> : operator_shape<R (C::*)(Ps...)> {};
template <class C, class R, class... Ps>
struct operator_shape<R (C::*)(Ps...) noexcept> : operator_shape<R (C::*)(Ps...)> {};
template <class C, class R, class... Ps>
struct operator_shape<R (C::*)(Ps...) const noexcept> : operator_shape<R (C::*)(Ps...)> {};

template <class T>
concept has_one_signature = requires {
    &T::operator();
};

struct no_shape {
    static constexpr void (*value)() = nullptr;
};
template <class T>
struct call_shape : no_shape {
    static_assert(never<T>,
                  "A native function is a function, a member, or an object with one operator(): neither auto "
                  "parameters nor overloads, since its parameters are known by their types.");
};
template <has_one_signature T>
struct call_shape<T> : operator_shape<decltype(&T::operator())> {};
template <class R, class... Ps>
struct call_shape<R (*)(Ps...)> {
    static constexpr R (*value)(Ps...) = nullptr;
};
template <class R, class... Ps>
struct call_shape<R (*)(Ps...) noexcept> : call_shape<R (*)(Ps...)> {};
template <class C, class R, class... Ps>
struct call_shape<R (C::*)(Ps...)> : call_shape<R (*)(C&, Ps...)> {};
template <class C, class R, class... Ps>
struct call_shape<R (C::*)(Ps...) const> : call_shape<R (*)(const C&, Ps...)> {};
template <class C, class R, class... Ps>
struct call_shape<R (C::*)(Ps...) noexcept> : call_shape<R (*)(C&, Ps...)> {};
template <class C, class R, class... Ps>
struct call_shape<R (C::*)(Ps...) const noexcept> : call_shape<R (*)(const C&, Ps...)> {};
template <class C, class R>
struct call_shape<R C::*> : call_shape<const R& (*)(const C&)> {};
template <class F>
struct call_shape<blocking_code<F>> : call_shape<F> {};

template <class F>
inline constexpr auto shape_of = call_shape<std::decay_t<F>>::value;

template <class R, class... Ps, class F>
Any give_function(F&& code, R (*)(Ps...)) {
    return make_code("function", "", std::forward<F>(code), {}, Receiver::None, static_cast<R (*)(Ps...)>(nullptr));
}

}  // namespace ling::internal

namespace ling {

/// A free function.
template <class F>
FunctionCL_Generic make_function(std::string_view name, const parameter_list& parameters, F&& code,
                                 std::string_view doc = {}) {
    return internal::make_code(name, parameters, std::forward<F>(code), doc, internal::Receiver::None,
                               internal::shape_of<F>);
}

/// A method: the first parameter is the receiver, is called "self" and is not among `parameters`.
template <class F>
FunctionCL_Generic make_method(std::string_view name, const parameter_list& parameters, F&& code,
                               std::string_view doc = {}) {
    return internal::make_code(name, parameters, std::forward<F>(code), doc, internal::Receiver::First,
                               internal::shape_of<F>);
}

}  // namespace ling
