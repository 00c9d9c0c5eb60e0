#pragma once

#include "ling/any.h"
#include "ling/function.h"
#include "ling/result.h"

#include <optional>

namespace ling {

/// A property: how a named value is read and, perhaps, written. It carries either a stored value or functions.
/// Immutable once built, but for the value of a stored-value property that an object carries itself.
class LING_EXPORT Property : public Any {
public:
    Property() noexcept = default;  ///< No property: none.

    /// The function that reads it; for a stored value one that answers the value and takes no argument.
    I_Invokable_Generic getter() const;
    I_Invokable_Generic setter() const;  ///< None when the property is read-only.
    String doc() const;
    Type type() const;
    bool isIndependent() const noexcept;  ///< The getter takes no receiver.
    bool isValue() const noexcept;        ///< Carries a stored value.
    Any value() const;                    ///< The stored value, or none.

    /// Reads or writes it for `self`. The value or none, or an error result.
    Any get(const Any& self) const;
    Any set(const Any& self, const Any& value) const;

    static Property ofValue(const Any& value, const String& doc = String());
    static Result<Property> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();

private:
    explicit Property(Any&& value) noexcept : Any(std::move(value)) {}
    friend struct property_access;
};

namespace internal {

/// Reads or writes a property that was found in a class. The caller keeps the property, `self` and `value` as long as
/// that takes, whatever the function does to the places that it knows them from.
LING_EXPORT Any get_property(const object_value& property, const Any& self);
LING_EXPORT Any set_property(const object_value& property, const Any& self, const Any& value);
LING_EXPORT bool has_setter(const object_value& property) noexcept;

/// Collects the parts of a property. A getter takes the receiver, or nothing when it is independent; a setter takes
/// the receiver and the value. A function with more parameters is refused, with a line in the assertion log.
class LING_EXPORT property_builder_base {
public:
    void assign_getter(const I_Invokable_Generic& getter);
    void assign_setter(const I_Invokable_Generic& setter);
    void assign_getter_value(const Any& value);
    void assign_doc(ByteArray&& utf8);
    void assign_doc(const String& doc) { doc_ = doc; }
    void assign_type(const Type& type) { type_ = type; }
    /// Says whether reading needs the receiver. Left unsaid, the getter's own independence decides. Said before the
    /// functions are given, it vouches for them: their parameters, which a foreign function may have to be asked for at
    /// some cost, are not counted then.
    void assign_independent(bool independent) { independent_ = independent; }
    Property build() const;

private:
    I_Invokable_Generic getter_;
    I_Invokable_Generic setter_;
    Any value_;
    bool hasValue_ = false;
    String doc_;
    Type type_;
    std::optional<bool> independent_;
};

/// Writes one line about a programming error to the assertion log, which is standard error unless a host takes it.
LING_EXPORT void assertion_log(const String& line);
LING_EXPORT void set_assertion_log(void (*sink)(const String& line));

}  // namespace internal

}  // namespace ling
