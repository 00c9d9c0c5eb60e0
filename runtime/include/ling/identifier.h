#pragma once

#include "ling/export.h"
#include "ling/forward.h"

#include <concepts>
#include <cstddef>
#include <memory>
#include <string_view>

namespace ling {

namespace internal {

/// The one record of a member name. Records are made once per name and live as long as the process, so two
/// identifiers are the same name exactly when their records are the same object.
struct LING_EXPORT identifier_data {
    std::string_view utf8;  ///< NUL-terminated.
    std::size_t hash;       ///< Zero where somebody looks for a name that is no identifier.
    const String* name;     ///< The same name as a string value.
    bool isPrivate;         ///< Begins with "_": never shown to a guest language.
};

/// Finds or makes the record of a name. Takes a lock of the runtime for the look-up alone.
LING_EXPORT const identifier_data& intern(std::string_view utf8);
LING_EXPORT const identifier_data& intern(const String& name);
/// The record of a name that is an identifier already, or null: then no class declares a member of that name.
LING_EXPORT const identifier_data* find_interned(std::string_view utf8) noexcept;
LING_EXPORT const identifier_data* find_interned(const String& name);

}  // namespace internal

/// The name of a member, interned. Compared by address; `name()` and `utf8()` read it back.
class LING_EXPORT identifier {
public:
    const String& name() const noexcept { return *data_->name; }
    std::string_view utf8() const noexcept { return data_->utf8; }
    bool isPrivate() const noexcept { return data_->isPrivate; }
    const internal::identifier_data* data() const noexcept { return data_; }
    friend bool operator==(const identifier& a, const identifier& b) noexcept { return a.data_ == b.data_; }

protected:
    explicit identifier(const internal::identifier_data& data) noexcept : data_(&data) {}

private:
    const internal::identifier_data* data_;
};

/// Names of methods, properties and fields are kept apart by type, so that one is not passed for another.
class LING_EXPORT method_ident_untyped : public identifier {
public:
    template <std::convertible_to<std::string_view> T>
    explicit method_ident_untyped(const T& utf8) : identifier(internal::intern(std::string_view(utf8))) {}
    explicit method_ident_untyped(const String& name) : identifier(internal::intern(name)) {}
    explicit method_ident_untyped(const ByteArray& utf8);
    explicit method_ident_untyped(const internal::identifier_data& data) noexcept : identifier(data) {}
};

class LING_EXPORT property_ident_untyped : public identifier {
public:
    template <std::convertible_to<std::string_view> T>
    explicit property_ident_untyped(const T& utf8) : identifier(internal::intern(std::string_view(utf8))) {}
    explicit property_ident_untyped(const String& name) : identifier(internal::intern(name)) {}
    explicit property_ident_untyped(const ByteArray& utf8);
    explicit property_ident_untyped(const internal::identifier_data& data) noexcept : identifier(data) {}
};

class LING_EXPORT field_ident_untyped : public identifier {
public:
    template <std::convertible_to<std::string_view> T>
    explicit field_ident_untyped(const T& utf8) : identifier(internal::intern(std::string_view(utf8))) {}
    explicit field_ident_untyped(const String& name) : identifier(internal::intern(name)) {}
    explicit field_ident_untyped(const ByteArray& utf8);
    explicit field_ident_untyped(const internal::identifier_data& data) noexcept : identifier(data) {}
};

namespace internal {

/// A name to look a member up by. One that is no identifier as yet stays none: no class declares it, so that the
/// look-up ends at once, or a class that answers look-ups itself is asked for it by its text. The identifiers that it
/// gives out are for looking and nothing else, and are good as long as it lives.
class LING_EXPORT lookup_name {
public:
    explicit lookup_name(std::string_view utf8);
    explicit lookup_name(const String& name);
    lookup_name(const lookup_name&) = delete;
    lookup_name& operator=(const lookup_name&) = delete;
    ~lookup_name();

    method_ident_untyped method() const noexcept { return method_ident_untyped(*data_); }
    property_ident_untyped property() const noexcept { return property_ident_untyped(*data_); }

private:
    struct unknown_name;
    void makeUnknown(std::string_view utf8, const String& name);

    const identifier_data* data_;
    std::unique_ptr<unknown_name> unknown_;
};

}  // namespace internal

}  // namespace ling
