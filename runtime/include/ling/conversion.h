#pragma once

#include "ling/basic_values.h"
#include "ling/class.h"
#include "ling/error.h"
#include "ling/function.h"
#include "ling/hash_containers.h"
#include "ling/list.h"
#include "ling/native_type.h"
#include "ling/string.h"

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// How C++ types stand for values of the runtime: the parameters and results of native functions.
///
///     C++ type                                   taken from                            given as
///     a handle: Any, String, List<T>, ...        what its `cast` accepts               itself
///     bool, every integer type                   Boolean, Integer that it can hold     Boolean, Integer
///     float, double                              Float, Integer                        Float
///     std::string, std::string_view,             String                                String
///     std::u16string, std::u16string_view
///     const char*                                                                      String
///     std::optional<T>                           none, what T takes                    none, T
///     std::vector<T>                             any iterable but text                 List
///     std::span<const T>, the last parameter     all arguments that remain             List
///     std::function<R(Ps...)>                    anything that can be called           Function
///     a class that `native_class` binds: T,      its instances                         a new instance
///     std::shared_ptr<T>                         its instances                         an instance that shares it
///     T&, const T&, T*, const T*                 its instances (a pointer: or none)
///     std::unique_ptr<T>                                                               an instance that takes it over
///     Result<T>                                                                        T, or its error result
///     void                                                                             none
///
/// Everything else is refused where it is compiled, by one sentence that says what to take instead.

namespace ling {

namespace internal {

template <class>
inline constexpr bool never = false;

/// How one C++ type is read from a value and given as one. `read` answers what is true when the value fits, and then
/// `*` gives the content; `explain` may say more about a value that does not.
template <class T>
struct conversion;

template <class T>
concept handle_type = std::derived_from<T, Any>;

/// Types that only look at what somebody else has to keep.
template <class T>
inline constexpr bool is_view = false;
template <>
inline constexpr bool is_view<std::string_view> = true;
template <>
inline constexpr bool is_view<std::u16string_view> = true;
template <>
inline constexpr bool is_view<const char*> = true;
template <class T, std::size_t N>
inline constexpr bool is_view<std::span<T, N>> = true;
template <class T>
inline constexpr bool is_view<T*> = true;

template <class T>
constexpr void check_item() {
    static_assert(!is_view<T>,
                  "An item would be gone before the function runs: a container of a native function holds "
                  "items of its own, such as std::string.");
    static_assert(!std::is_reference_v<T>, "A container of a native function cannot hold references.");
}

/// The type of what is given, where it says more than the type of what is taken.
template <class T>
Type given_type() {
    if constexpr (requires { conversion<T>::givenType(); })
        return conversion<T>::givenType();
    else
        return conversion<T>::type();
}

template <handle_type T>
struct conversion<T> {
    static Type type() { return T::getType(); }
    static Result<T> read(const Any& value) { return T::cast(value); }
    static Any give(const T& value) { return value; }
};
template <>
struct conversion<Any> {
    static Type type() { return Untyped::getType(); }
    static Result<Any> read(const Any& value) { return value; }
    static Any give(Any value) { return value; }
};
template <>
struct conversion<Failure> {
    static Type type() { return Error::getType(); }
    static Any give(Failure value) { return value; }
};
/// Any map serves, as any object of a document does: one that is no native map is copied.
template <>
struct LING_EXPORT conversion<JsonObject> {
    static Type type() { return JsonObject::getType(); }
    static Result<JsonObject> read(const Any& value);
    static Any give(JsonObject value) { return value; }
};

template <>
struct conversion<bool> {
    static Type type() { return Boolean::getType(); }
    static std::optional<bool> read(const Any& value) {
        return value.is(Kind::Boolean) ? std::optional(value.asBoolean()) : std::nullopt;
    }
    static Any give(bool value) { return value; }
};

template <class T>
concept character_type = std::same_as<T, char> || std::same_as<T, wchar_t> || std::same_as<T, char8_t> ||
    std::same_as<T, char16_t> || std::same_as<T, char32_t>;

/// A value that the type cannot hold is refused.
template <std::integral T>
requires(!character_type<T>) struct conversion<T> {
    static Type type() { return Integer::getType(); }
    static std::optional<T> read(const Any& value) {
        const bool fits = value.is(Kind::Integer) && std::in_range<T>(value.asInteger());
        return fits ? std::optional(static_cast<T>(value.asInteger())) : std::nullopt;
    }
    static Any give(T value) { return value; }
};
template <std::floating_point T>
struct conversion<T> {
    static Type type() { return Float::getType(); }
    static std::optional<T> read(const Any& value) {
        if (value.is(Kind::Float))
            return static_cast<T>(value.asFloat());
        return value.is(Kind::Integer) ? std::optional(static_cast<T>(value.asInteger())) : std::nullopt;
    }
    static Any give(T value) { return value; }
};

template <>
struct conversion<std::string> {
    static Type type() { return String::getType(); }
    static std::optional<std::string> read(const Any& value) {
        if (!is_instance<String>(value))
            return std::nullopt;
        return unchecked<String>(value).toStdString();
    }
    static Any give(const std::string& value) { return value; }
};
/// The text lives as long as the call.
template <>
struct conversion<std::string_view> : conversion<std::string> {
    static Any give(std::string_view value) { return value; }
};
template <>
struct conversion<const char*> {
    static Type type() { return String::getType(); }
    static Any give(const char* value) { return value == nullptr ? Any() : Any(value); }
};
template <>
struct conversion<std::u16string> {
    static Type type() { return String::getType(); }
    static std::optional<std::u16string> read(const Any& value) {
        if (!is_instance<String>(value))
            return std::nullopt;
        return std::u16string(unchecked<String>(value).view());
    }
    static Any give(std::u16string_view value) { return value; }
};
template <>
struct conversion<std::u16string_view> : conversion<std::u16string> {};

template <class T>
struct conversion<std::optional<T>> {
    static Type type() { return type_unite(conversion<T>::type(), None::getType()); }
    static Type givenType() { return type_unite(given_type<T>(), None::getType()); }
    static std::optional<std::optional<T>> read(const Any& value) {
        check_item<T>();
        if (value.isNone())
            return std::optional<std::optional<T>>(std::in_place, std::nullopt);
        auto content = conversion<T>::read(value);
        if (!content)
            return std::nullopt;
        return std::optional<std::optional<T>>(std::in_place, *std::move(content));
    }
    static Any give(std::optional<T> value) { return value ? conversion<T>::give(*std::move(value)) : Any(); }
};

/// All items of an iterable, lazy ones resolved; an error result when it is none, or text, or its iteration failed.
LING_EXPORT Result<std::vector<Any>> items_of_argument(const Any& value);
/// The error of an item that is of another type: no error result, but the cause of one.
LING_EXPORT Any item_error(std::size_t position, const Any& item, const Type& expected);

template <class T, class Range>
Any give_items(Range&& range) {
    list_builder items;
    for (auto&& item : range) {
        Any given;
        if constexpr (std::is_lvalue_reference_v<Range>)
            given = conversion<T>::give(item);
        else
            given = conversion<T>::give(std::move(item));
        if (is_error_result(given))
            return given;
        items.add(std::move(given));
    }
    return items.take();
}

template <class T>
struct conversion<std::vector<T>> {
    static Type type() { return Type(I_Iterable_Generic::genericInstance(conversion<T>::type())); }
    static Type givenType() { return Type(List_Generic::genericInstance(given_type<T>())); }
    static Result<std::vector<T>> read(const Any& value) {
        check_item<T>();
        const Result<std::vector<Any>> items = items_of_argument(value);
        if (!items)
            return Failure(items.error());
        std::vector<T> content;
        content.reserve(items->size());
        for (const Any& item : *items) {
            auto one = conversion<T>::read(item);
            if (!one)
                return Failure(item_error(content.size(), item, conversion<T>::type()));
            content.push_back(*std::move(one));
        }
        return content;
    }
    static Any give(std::vector<T> value) { return give_items<T>(std::move(value)); }
    static Any explain(const Result<std::vector<T>>& outcome, const Any&) { return outcome.error(); }
};
/// Taken, it is the last parameter and stands for all arguments that remain.
template <class T, std::size_t N>
struct conversion<std::span<T, N>> {
    using item = std::remove_const_t<T>;
    static Type type() { return conversion<item>::type(); }
    static Type givenType() { return Type(List_Generic::genericInstance(given_type<item>())); }
    static Any give(std::span<T, N> value) { return give_items<item>(value); }
};
template <class T>
struct conversion<Result<T>> {
    static Type type() { return given_type<T>(); }
    static Any give(Result<T> value) { return value ? conversion<T>::give(*std::move(value)) : value.error(); }
};

/// Calls a value from C++ code: what the arguments and the result become is the signature's to say.
template <class R, class... Ps>
class native_callback {
public:
    explicit native_callback(I_Invokable_Generic function) : function_(std::move(function)) {}
    R operator()(Ps... arguments) const {
        const Any list[] = {conversion<std::remove_cvref_t<Ps>>::give(std::forward<Ps>(arguments))..., Any()};
        Any answer = result_unwrap_lazy(function_.invoke(std::span<const Any>(list, sizeof...(Ps))));
        if constexpr (std::same_as<R, Any>) {
            return answer;
        } else {
            if (is_error_result(answer))
                throw ErrorException(answer);
            if constexpr (!std::is_void_v<R>) {
                check_item<R>();
                auto content = conversion<R>::read(answer);
                if (!content)
                    throw ErrorException(type_error(answer, conversion<R>::type()));
                return *std::move(content);
            }
        }
    }

private:
    I_Invokable_Generic function_;
};

template <class R, class... Ps, class F>
Any give_function(F&& code, R (*)(Ps...));

/// `std::function` and its like: a class template over a signature.
template <template <class> class Function, class R, class... Ps>
struct conversion<Function<R(Ps...)>> {
    static Type type() { return I_Invokable_Generic::getType(); }
    static std::optional<Function<R(Ps...)>> read(const Any& value) {
        Result<I_Invokable_Generic> function = I_Invokable_Generic::cast(value);
        if (!function)
            return std::nullopt;
        return Function<R(Ps...)>(native_callback<R, Ps...>(*std::move(function)));
    }
    static Any give(Function<R(Ps...)> value) {
        if constexpr (requires { static_cast<bool>(value); })
            if (!value)
                return Any();
        return give_function(std::move(value), static_cast<R (*)(Ps...)>(nullptr));
    }
};

// Classes that `native_class` binds.

template <class T>
inline constexpr bool is_smart_pointer = false;
template <class T>
inline constexpr bool is_smart_pointer<std::shared_ptr<T>> = true;
template <class T, class D>
inline constexpr bool is_smart_pointer<std::unique_ptr<T, D>> = true;

/// Classes of the standard library that no conversion knows are told apart from classes of the author by what they
/// have: containers an allocator, pairs and tuples a size.
template <class T>
concept bindable = std::is_class_v<T> && !handle_type<T> && !is_smart_pointer<T> && !requires {
    typename T::allocator_type;
}
&&!requires { std::tuple_size<T>::value; };

template <bindable T>
struct conversion<T> {
    static Type type() { return native_type_of<T>().type(); }
    static T* read(const Any& value) { return native_object<T>(value); }
    static Any give(T value) {
        static_assert(std::is_move_constructible_v<T>,
                      "An object that cannot be moved is given as std::shared_ptr or std::unique_ptr.");
        return native_type_of<T>().instance(std::make_shared<T>(std::move(value)));
    }
    static Any explain(T*, const Any& value) { return native_type_of<T>().explain(value); }
};
template <bindable T>
struct conversion<T*> {
    using object = std::remove_const_t<T>;
    static Type type() { return type_unite(conversion<object>::type(), None::getType()); }
    static std::optional<T*> read(const Any& value) {
        T* found = native_object<object>(value);
        return found != nullptr || value.isNone() ? std::optional(found) : std::nullopt;
    }
    static Any explain(const std::optional<T*>&, const Any& value) { return native_type_of<object>().explain(value); }
    static Any give(T*) {
        static_assert(never<T>,
                      "A native function that answers a pointer does not say who owns the object: answer it "
                      "by value, as std::shared_ptr, or as std::unique_ptr.");
        return Any();
    }
};
template <class T>
struct conversion<std::shared_ptr<T>> {
    using object = std::remove_const_t<T>;
    static Type type() { return type_unite(conversion<object>::type(), None::getType()); }
    static std::optional<std::shared_ptr<T>> read(const Any& value) {
        std::shared_ptr<object> found = native_share<object>(value);
        if (found == nullptr && !value.isNone())
            return std::nullopt;
        return std::shared_ptr<T>(std::move(found));
    }
    static Any explain(const std::optional<std::shared_ptr<T>>&, const Any& value) {
        return native_type_of<object>().explain(value);
    }
    static Any give(std::shared_ptr<T> value) {
        return native_type_of<object>().instance(std::const_pointer_cast<object>(std::move(value)));
    }
};
template <class T>
struct conversion<std::unique_ptr<T>> {
    static Type type() { return type_unite(conversion<std::remove_const_t<T>>::type(), None::getType()); }
    static Any give(std::unique_ptr<T> value) {
        return conversion<std::shared_ptr<T>>::give(std::shared_ptr<T>(std::move(value)));
    }
};

// What cannot be: one sentence for each way to ask for it.

template <class T>
inline constexpr bool is_span = false;
template <class T, std::size_t N>
inline constexpr bool is_span<std::span<T, N>> = true;
template <class P>
inline constexpr bool is_rest = is_span<std::remove_cvref_t<P>>;

template <class T>
concept has_conversion = requires {
    conversion<T>::type();
};
template <class T>
concept readable = requires(const Any& value) {
    conversion<T>::read(value);
};

/// Checks that a native function may have a parameter of type `P`.
template <class P>
constexpr bool takes() {
    using T = std::remove_cvref_t<P>;
    constexpr bool reference = std::is_lvalue_reference_v<P> && !std::is_const_v<std::remove_reference_t<P>>;
    if constexpr (is_rest<P>) {
        static_assert(std::is_const_v<typename T::element_type>,
                      "A native function takes its remaining arguments as std::span<const T>.");
    } else if constexpr (!has_conversion<T>) {
        static_assert(never<P>,
                      "A native function cannot take a parameter of this type; ling/conversion.h lists those "
                      "that it can. For a class of your own take T&, and bind it with native_class.");
    } else if constexpr (!readable<T>) {
        static_assert(never<P>,
                      "A native function can answer a value of this type, but not take one: take text as "
                      "std::string_view and objects as T& or std::shared_ptr<T>.");
    } else if constexpr (reference && !bindable<T>) {
        static_assert(never<P>,
                      "A native function cannot change its caller's value through a reference: take it by "
                      "value or by const reference.");
    } else {
        return true;
    }
    return is_rest<P>;
}

/// Checks that a native function may have a result of type `R`.
template <class R>
constexpr bool gives() {
    using T = std::remove_cvref_t<R>;
    if constexpr (std::is_void_v<R>) {
        return true;
    } else if constexpr (!has_conversion<T>) {
        static_assert(never<R>,
                      "A native function cannot answer a value of this type; ling/conversion.h lists those "
                      "that it can.");
        return false;
    } else if constexpr (std::is_lvalue_reference_v<R> && bindable<T> && !std::is_const_v<std::remove_reference_t<R>>) {
        static_assert(never<R>,
                      "A native function that answers a reference does not say who owns the object: answer "
                      "it by value, as std::shared_ptr, or as std::unique_ptr.");
        return false;
    } else {
        return true;
    }
}

}  // namespace internal
}  // namespace ling
