#pragma once

#include "ling/class_builder.h"
#include "ling/conversion.h"
#include "ling/iterable.h"
#include "ling/sequence.h"

#include <concepts>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ling {

namespace internal {

/// Puts what a constructor made into the instance that `$__init__` is called on.
template <class C>
Any put_object(const Any& self, std::shared_ptr<C> made) {
    object_value_native* instance = native_instance(self);
    if (instance == nullptr)
        return cast_error(self, native_type_of<C>().boundClass());
    return instance->initialise(native_type_of<C>(), std::move(made));
}
template <class C>
Any put_object(const Any& self, std::unique_ptr<C> made) {
    return put_object<C>(self, std::shared_ptr<C>(std::move(made)));
}
template <class C>
Any put_object(const Any& self, C&& made) {
    return put_object<C>(self, std::make_shared<C>(std::move(made)));
}
template <class C, class Made>
Any put_object(const Any& self, Result<Made> made) {
    return made ? put_object<C>(self, *std::move(made)) : made.error();
}

/// Members of a base as members of the class itself: the base need not be bound.
template <class C, class F>
F&& member_of(F&& code) {
    return std::forward<F>(code);
}
template <class C, class B, class M>
requires(!std::same_as<C, B>) auto member_of(M B::*member) {
    static_assert(std::derived_from<C, B>, "The member is of a class that the bound class does not derive from.");
    if constexpr (std::derived_from<C, B>)
        return static_cast<M C::*>(member);
    else
        return [] {};
}
template <class C, class F>
auto member_of(blocking_code<F> marked) {
    return blocking(member_of<C>(std::move(marked.code)));
}

template <class F>
inline constexpr bool is_assignable_member = false;
template <class C, class T>
inline constexpr bool is_assignable_member<T C::*> =
    std::is_object_v<T>&& std::is_copy_assignable_v<T>&& readable<std::remove_cv_t<T>>;

}  // namespace internal

/// Binds a C++ class as a class of the runtime:
///
///     native_class<Counter>("Counter", "peer")
///         .doc("Counts.")
///         .constructor<long>({{"start", 0}})
///         .method("add", &Counter::add, "amount", "Adds to it.")
///         .property("value", &Counter::value, &Counter::setValue, "How far it has come.")
///         .build();
///
/// From then on native functions take its objects as `Counter&`, `const Counter*` or `std::shared_ptr<Counter>`. How
/// they give one says who owns it: a `Counter` is moved into an instance of its own, a `std::shared_ptr` is shared with
/// the C++ code that keeps it, a `std::unique_ptr` is taken over. Instances of one shared object are equal.
///
/// The runtime calls from whichever thread its caller is on: a class that scripts of several languages or threads use
/// guards its own data, and so does one with a member that is marked as `blocking`.
template <class C>
class native_class {
    static_assert(std::is_class_v<C> && !internal::handle_type<C>,
                  "native_class binds C++ classes; classes of the runtime's own values are made by class_builder.");

public:
    native_class(std::string_view name, std::string_view module) : builder_(name, module) {
        if (!type().bind(builder_.unfinished()))
            error_ = failure(u"The C++ class of '{}' is bound already.", name);
    }

    native_class& doc(std::string_view utf8) {
        builder_.doc(utf8);
        return *this;
    }
    /// Says that `C` derives from `Base`, which is bound before: it has its members, and stands where a `Base` is
    /// taken.
    template <class Base>
    native_class& inherits() {
        static_assert(std::derived_from<C, Base> && !std::same_as<C, Base>, "The class does not derive from this one.");
        const internal::native_type& base = internal::native_type_of<Base>();
        if (!base.isBound())
            note(failure(u"A base of '{}' is not bound yet.", builder_.unfinished().name()));
        else if constexpr (std::derived_from<C, Base>) {
            type().addBase(base, [](void* object) -> void* { return static_cast<Base*>(static_cast<C*>(object)); });
            builder_.parent(base.boundClass());
        }
        return *this;
    }
    /// A parent that is a class of the runtime.
    native_class& parent(const Class_Generic& cls) {
        builder_.parent(cls);
        return *this;
    }

    /// Lets scripts make objects with the constructor for `Ps`. A class has one; `factory` is the way to choose.
    template <class... Ps>
    native_class& constructor(const parameter_list& parameters = "", std::string_view doc = {}) {
        static_assert(std::is_constructible_v<C, Ps...>, "The class has no constructor for these parameters.");
        return initialiser(parameters, doc, [](const Any& self, Ps... arguments) -> Any {
            return internal::put_object<C>(self, std::make_shared<C>(std::forward<Ps>(arguments)...));
        });
    }
    /// The same by a function that answers a `C`, a pointer that owns one, or a `Result` of these.
    template <class F>
    native_class& factory(F&& code, const parameter_list& parameters = "", std::string_view doc = {}) {
        return initialiser(parameters, doc, maker(std::forward<F>(code), internal::shape_of<F>));
    }

    /// A member function, or a callable whose first parameter is the object.
    template <class F>
    native_class& method(std::string_view name, F&& code, const parameter_list& parameters = "",
                         std::string_view doc = {}) {
        return method(method_ident_untyped(name), std::forward<F>(code), parameters, doc);
    }
    template <class F>
    native_class& method(const method_ident_untyped& id, F&& code, const parameter_list& parameters = "",
                         std::string_view doc = {}) {
        ordersItself_ = ordersItself_ || id == Any::$__compare__ || id == Any::$__hash__;
        builder_.method(id, parameters, internal::member_of<C>(std::forward<F>(code)), doc);
        return *this;
    }
    /// Called on the class, without an object.
    template <class F>
    native_class& classMethod(std::string_view name, F&& code, const parameter_list& parameters = "",
                              std::string_view doc = {}) {
        builder_.classMethod(name, parameters, std::forward<F>(code), doc);
        return *this;
    }

    /// A getter alone, or a data member, which can be written unless it is constant.
    template <class Getter>
    native_class& property(std::string_view name, Getter&& getter, std::string_view doc = {}) {
        if constexpr (internal::is_assignable_member<std::decay_t<Getter>>)
            return property(name, getter, setterOf(getter), doc);
        else
            return readonly(name, std::forward<Getter>(getter), doc);
    }
    template <class Getter, class Setter>
    requires(!internal::utf8_text<Setter>) native_class& property(std::string_view name, Getter&& getter,
                                                                  Setter&& setter, std::string_view doc = {}) {
        builder_.property(name, property_builder()
                                    .getter(internal::member_of<C>(std::forward<Getter>(getter)))
                                    .setter(internal::member_of<C>(std::forward<Setter>(setter)))
                                    .doc(doc));
        return *this;
    }
    template <class Getter>
    native_class& readonly(std::string_view name, Getter&& getter, std::string_view doc = {}) {
        builder_.property(name,
                          property_builder().getter(internal::member_of<C>(std::forward<Getter>(getter))).doc(doc));
        return *this;
    }

    /// Lets the objects be iterated: `range` answers what `for` can walk. An iteration walks the items as they are when
    /// it begins. A range that knows its size gives the objects a length.
    template <class F>
    native_class& iterable(F&& range) {
        auto code = internal::member_of<C>(std::forward<F>(range));
        builder_.parent(I_Iterable_Generic::getClass());
        builder_.method(I_Iterable_Generic::$iter, "", [code](C& self) -> Any {
            auto&& items = internal::call_code(code, self);
            using item = std::remove_cvref_t<decltype(*std::begin(items))>;
            const Any list = internal::give_items<item>(items);
            return is_error_result(list) ? list : unchecked<List_Generic>(list).iter();
        });
        if constexpr (requires(C & self) { std::size(internal::call_code(code, self)); })
            builder_.property(I_Sequence_Generic::$$length,
                              property_builder()
                                  .getter([code](C& self) { return std::size(internal::call_code(code, self)); })
                                  .doc("How many items there are."));
        return *this;
    }
    /// The same for a class that is a range itself.
    native_class& iterable() {
        return iterable([](C& self) -> C& { return self; });
    }

    /// Lets the objects be copied and sent to other processes: `state` answers what one is made of, and `restored`, as
    /// a factory, makes an equal one of that.
    template <class State, class F>
    native_class& state(State&& state, F&& restored) {
        method("__state__", std::forward<State>(state));
        builder_.method("__restore__", "state", maker(std::forward<F>(restored), internal::shape_of<F>));
        return *this;
    }

    /// The class, in its module, or the first thing that went wrong: then it is in no module.
    [[nodiscard]] Result<Class_Generic> build() {
        builder_.hooks(internal::native_hooks(hasConstructor_));
        if (!ordersItself_)
            orderByObject();
        note(builder_.error());
        if (!error_.isNone())
            return Failure(error_);
        const Class_Generic cls = builder_.build();
        if (!builder_.error().isNone())
            return Failure(builder_.error());
        return cls;
    }

private:
    static internal::native_type& type() { return internal::native_type_of<C>(); }

    void note(const Any& outcome) {
        if (error_.isNone())
            error_ = outcome;
    }

    template <class F>
    native_class& initialiser(const parameter_list& parameters, std::string_view doc, F&& code) {
        if (hasConstructor_)
            note(failure(u"The class '{}' has a constructor already.", builder_.unfinished().name()));
        hasConstructor_ = true;
        builder_.method(Any::$__init__, parameters, std::forward<F>(code), doc);
        return *this;
    }
    /// Code that puts what a factory makes into a new instance.
    template <class F, class R, class... Ps>
    static auto maker(F&& code, R (*)(Ps...)) {
        return [code = std::forward<F>(code)](const Any& self, Ps... arguments) mutable -> Any {
            return internal::put_object<C>(self, internal::call_code(code, std::forward<Ps>(arguments)...));
        };
    }
    template <class B, class T>
    static auto setterOf(T B::*member) {
        return [member](C& self, const T& value) { self.*member = value; };
    }

    /// Two instances may share one object: they are equal.
    void orderByObject() {
        builder_.method(Any::$__compare__, "other", [](C& self, const Any& other) -> Any {
            const C* second = internal::native_object<C>(other);
            if (second == nullptr)
                return Any();
            return &self == second ? 0 : std::less<const C*>()(&self, second) ? -1 : 1;
        });
        builder_.method(Any::$__hash__, "", [](C& self) { return reinterpret_cast<std::intptr_t>(&self) >> 4; });
    }

    class_builder builder_;
    Any error_;
    bool hasConstructor_ = false;
    bool ordersItself_ = false;
};

}  // namespace ling
