#pragma once

#include "ling/any.h"
#include "ling/function.h"
#include "ling/property.h"
#include "ling/result.h"
#include "ling/type.h"

#include <span>
#include <string_view>
#include <vector>

namespace ling {

/// A member that a class declares, as listings give it.
template <class Identifier, class Member>
struct Declared {
    Identifier id;
    Member member;
};

/// A declared field: its place in an instance, the type it accepts and its documentation.
class LING_EXPORT Field {
public:
    Type type;
    String doc;
};

/// Whether a listing takes in what the ancestors declare.
enum class Inherited : bool { No, Yes };

/// Keys under which a class keeps examples of its use, by language.
enum class Language : std::uint8_t { lang_name_cpp, lang_name_js, lang_name_python };
inline constexpr Language lang_name_cpp = Language::lang_name_cpp;
inline constexpr Language lang_name_js = Language::lang_name_js;
inline constexpr Language lang_name_python = Language::lang_name_python;

/// A class of the runtime. Classes are values: they can be passed, compared (by identity) and called, which makes
/// an instance. Changing a class is rare and guarded; looking a member up takes no lock.
class LING_EXPORT Class_Generic : public I_Invokable_Generic {
public:
    Class_Generic() noexcept = default;  ///< No class: none.

    String name() const;
    String doc() const;
    String example(Language language) const;  ///< Empty when there is none.
    std::vector<Class_Generic> parents() const;
    /// The class itself first, then its ancestors, each before its own parents and in the order of declaration.
    std::vector<Class_Generic> ancestry() const;
    /// True when `ancestor` is this class or one of its ancestors.
    bool isAncestor(const Class_Generic& ancestor) const noexcept;

    /// The generic that this class is an instance of, or none.
    Class_Generic parentGeneric() const;
    /// The types that a generic instance was made for. Empty for every other class.
    std::vector<Type> parameters() const;
    /// The module that holds the class, or a none handle.
    Module parentModule() const;

    /// A new instance without arguments: fields are none, native data is at its default. An error result for a class
    /// that has no instances of its own (an interface).
    Any allocateInstance() const;
    /// Makes an instance from arguments, as calling the class does. See also `operator()` of the invokable.
    Any construct(std::span<const Any> arguments) const;

    /// The members that this class declares itself, or those of its ancestors as well, in order of declaration.
    std::vector<Declared<method_ident_untyped, I_Invokable_Generic>> methods(Inherited inherited) const;
    std::vector<Declared<property_ident_untyped, Property>> properties(Inherited inherited) const;
    std::vector<Declared<method_ident_untyped, I_Invokable_Generic>> classMethods(Inherited inherited) const;
    std::vector<Declared<property_ident_untyped, Property>> classProperties(Inherited inherited) const;
    std::vector<Declared<field_ident_untyped, Field>> fields(Inherited inherited) const;

    /// The property or field that the class or an ancestor declares. A none handle, or null, when there is none.
    Property definedProperty(const property_ident_untyped& id) const;
    const Field* definedField(const field_ident_untyped& id) const;

    internal::object_value_class* record() const noexcept;

    static Result<Class_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
    static Class_Generic share(internal::object_value_class* record);  ///< Adds a reference.
    static Class_Generic adopt(internal::object_value_class* record);  ///< Takes the caller's reference over.

    friend bool operator==(const Class_Generic& a, const Class_Generic& b) noexcept { return a.isSameAs(b); }

protected:
    explicit Class_Generic(Any&& value) noexcept : I_Invokable_Generic(std::move(value)) {}
};

namespace internal {
/// The class of a value that brings none with it.
LING_EXPORT object_value_class* native_class_record(const Any& value) noexcept;
}  // namespace internal

/// The class that answers for a value: for an object the class it was made of, for a native value that of its kind,
/// for a class the class `Class`. Borrowed for as long as the value lives, or for ever for a native one.
inline internal::object_value_class* raw_class_record(const Any& value) noexcept {
    const internal::object_value* object = value.object();
    internal::object_value_class* own = object == nullptr ? nullptr : object->ownClass();
    return own != nullptr ? own : internal::native_class_record(value);
}
LING_EXPORT Class_Generic raw_class_of(const Any& value);
/// As `raw_class_of`, but lazy values and weak references are resolved first.
LING_EXPORT Class_Generic class_of(const Any& value);
/// The dotted name of a class or module; for any other value the qualified name of its class.
LING_EXPORT String qualname(const Any& value);

namespace internal {
/// The object behind `value` when it is an instance of `cls`, borrowed, else null.
LING_EXPORT object_value* cast_object(const Any& value, const Class_Generic& cls) noexcept;
/// Whether `value`, immediate or an object, is an instance of `cls`.
LING_EXPORT bool is_instance_of(const Any& value, const Class_Generic& cls) noexcept;
/// The same for the class behind a handle. Where only the answer is wanted, this says it without the error that a
/// failed cast has to build.
template <class Handle>
bool is_instance(const Any& value) noexcept {
    return is_instance_of(value, Handle::getClass());
}
/// The standard error of a failed cast, naming what was expected and what was found.
LING_EXPORT Any cast_error(const Any& value, const Class_Generic& expected);

/// Casts to a handle whose values are the instances of one class.
template <class Handle>
Result<Handle> cast_handle(const Any& value) {
    if (cast_object(value, Handle::getClass()) == nullptr)
        return Result<Handle>::failure(cast_error(value, Handle::getClass()));
    return unchecked<Handle>(value);
}
}  // namespace internal

}  // namespace ling
