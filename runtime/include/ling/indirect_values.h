#pragma once

#include "ling/any.h"
#include "ling/class.h"
#include "ling/error.h"
#include "ling/function.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace ling {

namespace internal {

/// A value that is computed when it is needed, once. Two threads that need it at the same time may both compute it;
/// the first result that is complete is the value for all.
class LING_EXPORT object_value_lazy final : public object_value {
public:
    explicit object_value_lazy(std::function<Any()> compute);
    /// The value, computed now if it was not before. Runs the computation with nothing locked. A computation that
    /// needs the value itself gets an error result; so does a computation in between, whose own result is then not
    /// kept: asked for by itself it may have another. An error that may pass (`note_passing_failure`) is not kept
    /// either.
    Any evaluate();

private:
    friend Any result_unwrap_lazy(Any value);
    /// The value of one computation, and whether it is the value for all from now on.
    struct outcome {
        Any value;
        bool isKept = true;
    };
    outcome computeOnce();
    void settle(const Any& value);

    std::shared_ptr<const std::function<Any()>> compute_;  // Null once the value is there. Guarded, as is value_.
    Any value_;
};

/// Tells the computations that are under way on this thread of a failure that comes of the moment, not of the value:
/// memory or the stack has ended, or the program is to stop. What fails by it may succeed later.
LING_EXPORT void note_passing_failure() noexcept;

/// A value that lives elsewhere and is read anew each time.
class LING_EXPORT object_value_external final : public object_value {
public:
    explicit object_value_external(std::function<Any()> load, std::function<Any(const Any&)> store = nullptr);
    Any load() const;
    Any store(const Any& value) const;  ///< None, or an error result when it cannot be written.

private:
    const std::function<Any()> load_;
    const std::function<Any(const Any&)> store_;
};

/// A native value of a type that the runtime does not know, carried through it.
class LING_EXPORT object_value_boxed : public object_value {
public:
    explicit object_value_boxed(object_value_class* klass) noexcept : object_value(Kind::Boxed, klass) {}
    /// Takes over the content of another box of the same class. None, or "Types mismatch." for any other value.
    virtual Any assign(const Any& source) = 0;
};

}  // namespace internal

class LING_EXPORT Lazy_Generic : public Any {
public:
    explicit Lazy_Generic(std::function<Any()> compute);
    Any evaluate() const;
    static Result<Lazy_Generic> cast(const Any& value);  ///< Never computes the value.
    static const Class_Generic& getClass();
    static Type getType();
};

class LING_EXPORT External_Generic : public Any {
public:
    explicit External_Generic(std::function<Any()> load, std::function<Any(const Any&)> store = nullptr);
    static Result<External_Generic> cast(const Any& value) { return internal::cast_handle<External_Generic>(value); }
    static const Class_Generic& getClass();
    static Type getType() { return Type(getClass()); }
};

/// A reference that does not keep its target alive. Made for any value on the heap; an immediate is kept as it is.
class LING_EXPORT Weak_Generic : public Any {
public:
    explicit Weak_Generic(const Any& target);
    Any lock() const;  ///< The target, or none when it is gone.
    static Result<Weak_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

/// Boxes by run-time key: one class for each native type.
class LING_EXPORT Boxed_Generic : public Any {
public:
    /// The class of boxes under `key` (the run-time type name of the native type), made by the first caller.
    /// `makeDefault` makes a box with the type's default in it, one reference, for `allocateInstance`.
    static Class_Generic getClassInstance(std::string_view key,
                                          internal::object_value* (*makeDefault)(internal::object_value_class*));
    /// The same for a type of the program, by its name. Types of one name are told apart where they differ: two files
    /// may each have one in an unnamed namespace.
    static Class_Generic getClassInstance(const std::type_info& type,
                                          internal::object_value* (*makeDefault)(internal::object_value_class*));
    static Result<Boxed_Generic> cast(const Any& value) { return internal::cast_handle<Boxed_Generic>(value); }
    static const Class_Generic& getClass();
    static Type getType() { return Type(getClass()); }
};

/// A box around a copyable native value. Copies are made with nothing locked: what the type's own code does, throwing
/// included, is between it and the caller.
template <class T>
class Boxed : public Boxed_Generic {
public:
    explicit Boxed(T value);
    /// The content, by value: the box guards it.
    T value() const;
    static Result<Boxed> cast(const Any& value) { return internal::cast_handle<Boxed>(value); }
    static const Class_Generic& getClass();
    static Type getType() { return Type(getClass()); }
};

namespace internal {

template <class T>
class object_value_boxed_of final : public object_value_boxed {
public:
    object_value_boxed_of(object_value_class* klass, T value)
        : object_value_boxed(klass), content_(hold(std::move(value))) {}
    static object_value* makeDefault(object_value_class* klass) { return new object_value_boxed_of(klass, T()); }

    T value() const {
        if constexpr (isPlain)
            return content();
        else
            return *content();
    }
    Any assign(const Any& source) override {
        if (cast_object(source, Class_Generic::share(ownClass())) == nullptr)
            return failure(u"Types mismatch.");
        Content replaced = static_cast<object_value_boxed_of*>(source.object())->content();
        std::lock_guard hold(guard());
        std::swap(content_, replaced);
        return Any();
        // What was replaced dies after the guard: it is declared before it.
    }

private:
    /// A plain value is copied under the guard, since that runs no code of its type. Any other is never changed once it
    /// is in the box, so that boxes share it and copies are made outside.
    static constexpr bool isPlain = std::is_trivially_copyable_v<T>;
    using Content = std::conditional_t<isPlain, T, std::shared_ptr<const T>>;

    static Content hold(T value) {
        if constexpr (isPlain)
            return value;
        else
            return std::make_shared<const T>(std::move(value));
    }
    Content content() const {
        std::lock_guard hold(guard());
        return content_;
    }

    Content content_;
};

}  // namespace internal

template <class T>
const Class_Generic& Boxed<T>::getClass() {
    static const Class_Generic& cls =
        *new Class_Generic(getClassInstance(typeid(T), &internal::object_value_boxed_of<T>::makeDefault));
    return cls;
}
template <class T>
Boxed<T>::Boxed(T value)
    : Boxed_Generic(unchecked<Boxed_Generic>(
          Any::adopt(new internal::object_value_boxed_of<T>(getClass().record(), std::move(value))))) {}
template <class T>
T Boxed<T>::value() const {
    return static_cast<internal::object_value_boxed_of<T>*>(object())->value();
}

}  // namespace ling
