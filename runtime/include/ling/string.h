#pragma once

#include "ling/any.h"
#include "ling/result.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace ling {

namespace internal {

/// The longest text of a value in a message, in UTF-16 units.
inline constexpr std::size_t kLongestInMessage = 200;
/// The display text of a value as far as a message has room for it. What comes after the first `kLongestInMessage`
/// units is left out: of a container the items that follow, which "..." stands for before its closing bracket; of a
/// text its rest. So a message stays short however large the value.
LING_EXPORT String brief(const Any& value);

}  // namespace internal

/// Immutable text in UTF-16.
///
/// A string value (`Kind::String`) keeps its units in the same allocation as its count. A slice of a long string is
/// an object (`Kind::Object`, class `String`) that shares its base; every operation here takes either. A string may
/// hold any units, lone surrogates included.
///
/// Ill-formed text has one rule. From UTF-8, each maximal ill-formed subsequence becomes one U+FFFD; to UTF-8, each
/// lone surrogate becomes U+FFFD. `isWellFormed` and `isWellFormedUTF8` tell beforehand.
class LING_EXPORT String : public Any {
public:
    String();  ///< Empty.
    String(std::u16string_view units);
    String(const char16_t* units) : String(std::u16string_view(units)) {}
    String(const char* utf8) : String(fromUTF8(std::string_view(utf8))) {}
    String(std::string_view utf8) : String(fromUTF8(utf8)) {}
    String(const std::string& utf8) : String(fromUTF8(std::string_view(utf8))) {}

    static String fromUTF8(std::string_view utf8);
    static String fromUTF8(const char* data, std::size_t size) { return fromUTF8(std::string_view(data, size)); }
    static String fromUTF8(const ByteArray& utf8);
    /// One unit per byte: ISO 8859-1, and so ASCII.
    static String fromLatin1(std::string_view latin1);
    /// `length` units for `fill` to write to, called once before anybody else can see them.
    template <class Fill>
    static String filled(std::size_t length, Fill&& fill) {
        if (length == 0)
            return String();
        String result = uninitialised(length);
        fill(result.writable());
        return result;
    }
    static bool isWellFormedUTF8(std::string_view bytes) noexcept;

    std::size_t length() const noexcept;
    bool isEmpty() const noexcept { return length() == 0; }
    /// The units, valid as long as this handle lives. Not NUL-terminated for a slice.
    std::u16string_view view() const noexcept;
    bool isWellFormed() const noexcept;
    /// True for a slice that shares the units of a longer string.
    bool isSlice() const noexcept { return is(Kind::Object); }

    ByteArray toUTF8() const;
    std::string toStdString() const;  ///< UTF-8, by the rule above.
    std::wstring toWide() const;      ///< UTF-32 on this platform, by the rule above.

    /// `count` units from `position`; none, or more than there are, means all that remain. A negative position counts
    /// from the end; what lies outside is cut off. A long piece of a long string shares its base; asked for as a
    /// whole (position 0, no count), a slice comes out flat.
    String sliced(std::int64_t position, const Any& count = Any()) const;
    String trimmed() const;  ///< Without white space at either end.
    std::vector<String> split(std::u16string_view separator) const;
    String replaced(std::u16string_view from, std::u16string_view to) const;
    std::int64_t indexOf(std::u16string_view text, std::size_t start = 0) const noexcept;  ///< -1 when absent.
    std::int64_t lastIndexOf(std::u16string_view text) const noexcept;
    bool startsWith(std::u16string_view text) const noexcept { return view().starts_with(text); }

    /// Puts the display texts of `values` into the places marked "{}", in order. "{{" and "}}" stand for one brace;
    /// a place without a value stays "{}", a value without a place is left out.
    String argImplMethod(std::span<const Any> values) const;
    /// The same for a message. What is given as a `String` is part of the text and stands whole; a value stands as
    /// `internal::brief` shows it.
    template <class... Values>
    String arg(const Values&... values) const {
        const Any list[] = {placed(values)..., Any()};
        return argImplMethod(std::span<const Any>(list, sizeof...(Values)));
    }

    friend bool operator==(const String& a, const String& b) noexcept { return a.view() == b.view(); }
    friend auto operator<=>(const String& a, const String& b) noexcept { return a.view() <=> b.view(); }
    friend String operator+(const String& a, const String& b) { return concat(a.view(), b.view()); }
    std::size_t hash() const noexcept;  ///< Equal for equal text, slice or not. Computed once per string value.

    static Result<String> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();

private:
    template <std::same_as<Any> T>  // Not what becomes an `Any` on the way, as text does.
    explicit String(T&& value) noexcept : Any(std::move(value)) {}
    friend struct string_access;
    static String uninitialised(std::size_t length);
    template <class Value>
    static Any placed(const Value& value);
    char16_t* writable() noexcept;
    static String concat(std::u16string_view a, std::u16string_view b);
};

template <class Value>
Any String::placed(const Value& value) {
    if constexpr (std::is_base_of_v<Any, Value> && !std::is_same_v<Value, String>)
        return internal::brief(value);
    else
        return Any(value);
}

/// Gathers pieces of text into one string. Not shared between threads.
class LING_EXPORT string_builder {
public:
    string_builder& append(std::u16string_view text) {
        units_.append(text);
        return *this;
    }
    string_builder& append(const String& text) { return append(text.view()); }
    string_builder& append(const char16_t* text) { return append(std::u16string_view(text)); }
    string_builder& append(const char* ascii) {
        for (; *ascii != '\0'; ++ascii)
            units_.push_back(static_cast<char16_t>(static_cast<unsigned char>(*ascii)));
        return *this;
    }
    string_builder& append(char16_t unit) {
        units_.push_back(unit);
        return *this;
    }
    std::size_t length() const noexcept { return units_.size(); }
    String build() const { return String(std::u16string_view(units_)); }

private:
    std::u16string units_;
};

}  // namespace ling
