#pragma once

#include "ling/class_record.h"
#include "ling/string.h"

#include <atomic>
#include <string_view>

namespace ling {

/// Makes handles out of storage. For the files that know what a string is made of.
struct string_access {
    static String adopt(internal::object_value* storage) { return String(Any::adopt(storage)); }
    /// `count` units from `begin`, which lie within the text: the text itself, a slice of it, or a copy.
    static String piece(const String& text, std::size_t begin, std::size_t count);
};

namespace internal {

/// The storage of a string: its units lie behind the object in the same allocation, with a NUL after the last. There
/// is no second buffer for long strings and none to spare for short ones.
///
/// The units are written once, before anybody else sees the string. Afterwards only the two caches change.
class object_value_string final : public object_value {
public:
    /// A string of `length` units that are still to be written. One reference, the caller's.
    static object_value_string* make(std::size_t length, object_value_class* klass = nullptr);
    /// The one empty string, borrowed. It lives as long as the process.
    static object_value_string* empty();

    std::size_t length() const noexcept { return length_; }
    char16_t* units() noexcept { return reinterpret_cast<char16_t*>(this + 1); }
    const char16_t* units() const noexcept { return reinterpret_cast<const char16_t*>(this + 1); }
    std::u16string_view view() const noexcept { return {units(), length_}; }
    std::size_t hash() const noexcept;

    /// The record of the identifier that this text names, once somebody asked for it; null before.
    const identifier_data* knownIdentifier() const noexcept { return identifier_.load(std::memory_order_acquire); }
    void rememberIdentifier(const identifier_data& record) noexcept {
        identifier_.store(&record, std::memory_order_release);
    }

    // The allocation is larger than the class, so the size must not be taken from the type when it is given back.
    static void operator delete(void* storage) { ::operator delete(storage); }

private:
    struct trailing_units {
        std::size_t bytes;
    };
    static void* operator new(std::size_t size, trailing_units units) { return ::operator new(size + units.bytes); }
    static void operator delete(void* storage, trailing_units) { ::operator delete(storage); }

    object_value_string(std::size_t length, object_value_class* klass) noexcept
        : object_value(Kind::String, klass), length_(length) {}

    const std::size_t length_;
    mutable std::atomic<std::size_t> hash_{0};  // 0 until it is known.
    std::atomic<const identifier_data*> identifier_{nullptr};
};

/// A piece of a string that shares the units of its base, which is never a slice itself.
class object_value_string_slice final : public object_value_object {
public:
    object_value_string_slice(String base, std::u16string_view piece);
    const String& base() const noexcept { return base_; }
    std::u16string_view view() const noexcept { return piece_; }
    std::size_t hash() const noexcept;

private:
    const String base_;
    const std::u16string_view piece_;
    mutable std::atomic<std::size_t> hash_{0};
};

/// The hash of a text, never 0.
std::size_t hash_text(std::u16string_view text) noexcept;

}  // namespace internal

}  // namespace ling
