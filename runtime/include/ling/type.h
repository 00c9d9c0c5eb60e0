#pragma once

#include "ling/any.h"
#include "ling/result.h"
#include "ling/string.h"

#include <span>
#include <vector>

namespace ling {

/// What values a place accepts: any value, an undeclared one, the instances of a class, one of several types, or
/// whatever a type variable is bound to. Types are immutable values, equal when they accept the same by structure.
class LING_EXPORT Type : public Any {
public:
    Type();  ///< The untyped type.
    explicit Type(const Class_Generic& cls);

    bool isAny() const noexcept;
    bool isUntyped() const noexcept;
    bool isUnion() const noexcept;   ///< Of two types or more, options included.
    bool isOption() const noexcept;  ///< A union of exactly none and one other type.
    bool isVariable() const noexcept;
    /// The types of a union, none last; for every other type the type alone.
    std::vector<Type> parts() const;
    /// The class named by this type: its own for a class type, that of the other part for an option. The handle is
    /// none for all others.
    Class_Generic toClass() const;
    /// Every value that this type accepts, `wider` accepts too. Untyped and Any are wider than everything.
    bool specializes(const Type& wider) const;
    /// The value is one that this type accepts.
    bool isMatch(const Any& value) const;
    String toString() const;  ///< "Integer", "Option<String>", "Integer|String", "List<Any>".

    friend LING_EXPORT bool operator==(const Type& a, const Type& b) noexcept;
    std::size_t hash() const noexcept;  ///< Equal for equal types.

    static Result<Type> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();

protected:
    explicit Type(Any&& value) noexcept : Any(std::move(value)) {}
    friend struct type_access;
};

/// The type of a place for which no type was declared.
class LING_EXPORT Untyped : public Any {
public:
    static Type getType();
};

/// A type to be filled in later, by name: "T", or "self" for the type of the receiver.
class LING_EXPORT TypeVariable : public Type {
public:
    explicit TypeVariable(const String& name, const Type& bound = Any::getType());
    String name() const;
    Type bound() const;
    static Result<TypeVariable> cast(const Any& value);
    static const Class_Generic& getClass();
};

namespace internal {
/// The type that accepts what either accepts. Flat, without repetitions, none last.
LING_EXPORT Type type_unite(const Type& a, const Type& b);
/// The error of a cast to a type that is not the instances of one class.
LING_EXPORT Any type_error(const Any& value, const Type& expected);
}  // namespace internal

/// A value that is an `A` or a `B`; `Union<A, None>` may be absent.
template <class A, class B>
class Union : public Any {
public:
    Union() noexcept = default;
    Union(const A& value) : Any(value) {}
    Union(const B& value) : Any(value) {}
    template <class T>
    requires(!std::derived_from<T, Any> &&
             (std::constructible_from<A, const T&> || std::constructible_from<B, const T&>)) Union(const T& value)
        : Any(value) {}
    static Type getType() { return internal::type_unite(A::getType(), B::getType()); }
    static Result<Union> cast(const Any& value) {
        if (A::cast(value) || B::cast(value))
            return unchecked<Union>(value);
        return Result<Union>::failure(internal::type_error(value, getType()));
    }
};

}  // namespace ling
