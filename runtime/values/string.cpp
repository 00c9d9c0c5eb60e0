#include "ling/string.h"

#include "ling/byte_array.h"
#include "ling/class.h"
#include "ling/class_record.h"
#include "ling/identifier.h"
#include "ling/interfaces.h"
#include "values/string_value.h"
#include "values/utf8.h"

#include <algorithm>
#include <cstring>

namespace ling {

using internal::object_value_string;
using internal::object_value_string_slice;

namespace {

object_value_string& flat(const Any& text) noexcept { return *static_cast<object_value_string*>(text.object()); }
const object_value_string_slice& slice(const Any& text) noexcept {
    return *static_cast<const object_value_string_slice*>(text.object());
}

/// A piece shares its base from this length on: below it the object that shares would take more room than the units.
constexpr std::size_t kShortestSlice = 64;
/// A piece keeps the whole base alive, so one that is a small part of it is copied: what is kept alive through slices
/// is at most this many times as long as what is seen.
constexpr std::size_t kLargestShareOfBase = 16;

}  // namespace

String::String() : Any(Any::share(object_value_string::empty())) {}

String::String(std::u16string_view units) : String(uninitialised(units.size())) {
    std::copy(units.begin(), units.end(), writable());
}

Any Any::ofText(std::string_view utf8) { return String(utf8); }
Any Any::ofText(std::u16string_view units) { return String(units); }

String String::uninitialised(std::size_t length) {
    return length == 0 ? String() : string_access::adopt(object_value_string::make(length));
}

char16_t* String::writable() noexcept { return flat(*this).units(); }

String String::fromUTF8(std::string_view utf8) {
    if (utf8.empty())
        return String();
    // Nearly all text is ASCII, which takes as many units as bytes. Other text takes fewer, so that it is copied once
    // more, which costs less than counting its units first.
    String result = uninitialised(utf8.size());
    const std::size_t length = internal::utf8_to_utf16(utf8, result.writable());
    if (length == utf8.size())
        return result;
    return String(std::u16string_view(result.writable(), length));
}

String String::fromUTF8(const ByteArray& utf8) { return fromUTF8(utf8.view()); }

String String::fromLatin1(std::string_view latin1) {
    return filled(latin1.size(), [&](char16_t* to) { internal::widen_latin1(latin1, to); });
}

bool String::isWellFormedUTF8(std::string_view bytes) noexcept { return internal::is_well_formed_utf8(bytes); }

std::size_t String::length() const noexcept { return view().size(); }

std::u16string_view String::view() const noexcept {
    if (isNone())
        return {};  // A handle that was moved from.
    return isSlice() ? slice(*this).view() : flat(*this).view();
}

bool String::isWellFormed() const noexcept { return internal::is_well_formed_utf16(view()); }

std::size_t String::hash() const noexcept {
    if (isNone())
        return internal::hash_text({});
    return isSlice() ? slice(*this).hash() : flat(*this).hash();
}

ByteArray String::toUTF8() const {
    const std::u16string_view units = view();
    std::size_t ascii = 0;
    ByteArray result = ByteArray::filled(units.size(), [&](char* to) { ascii = internal::narrow_ascii(units, to); });
    if (ascii == units.size())
        return result;
    const std::u16string_view rest = units.substr(ascii);
    return ByteArray::filled(ascii + internal::utf8_length(rest), [&](char* to) {
        std::memcpy(to, result.data(), ascii);
        internal::utf16_to_utf8(rest, to + ascii);
    });
}

std::string String::toStdString() const {
    std::string result(internal::utf8_length(view()), '\0');
    internal::utf16_to_utf8(view(), result.data());
    return result;
}

std::wstring String::toWide() const {
    std::wstring result;
    const char16_t* at = view().data();
    const char16_t* const end = at + length();
    while (at != end) {
        const char32_t code = internal::read_utf16(at, end);
        result.push_back(static_cast<wchar_t>(code == internal::kIllFormed ? internal::kReplacement : code));
    }
    return result;
}

String String::concat(std::u16string_view a, std::u16string_view b) {
    return filled(a.size() + b.size(),
                  [&](char16_t* to) { std::copy(b.begin(), b.end(), std::copy(a.begin(), a.end(), to)); });
}

String string_access::piece(const String& text, std::size_t begin, std::size_t count) {
    const std::u16string_view whole = text.view();
    const std::u16string_view piece = whole.substr(begin, count);
    if (piece.size() == whole.size())
        return text;
    const String base = text.isSlice() ? slice(text).base() : text;
    if (piece.size() < kShortestSlice || piece.size() < base.length() / kLargestShareOfBase)
        return String(piece);
    return adopt(new object_value_string_slice(base, piece));
}

String String::sliced(std::int64_t position, const Any& count) const {
    const auto length = static_cast<std::int64_t>(this->length());
    if (position == 0 && count.isNone())
        return isSlice() ? String(view()) : *this;
    const std::int64_t begin = position < 0 ? position + length : position;
    // A count that reaches past the end of the numbers reaches past the end of the text.
    std::int64_t end = length;
    if (count.is(Kind::Integer) && __builtin_add_overflow(begin, std::max<std::int64_t>(count.asInteger(), 0), &end))
        end = length;
    const std::int64_t first = std::clamp<std::int64_t>(begin, 0, length);
    const std::int64_t last = std::clamp<std::int64_t>(end, first, length);
    return string_access::piece(*this, static_cast<std::size_t>(first), static_cast<std::size_t>(last - first));
}

Result<String> String::cast(const Any& value) {
    if (value.is(Kind::String))
        return unchecked<String>(value);
    // A slice is an object of this very class; its instances are nothing else.
    if (value.is(Kind::Object) && value.object()->ownClass() == getClass().record())
        return unchecked<String>(value);
    return Result<String>::failure(internal::cast_error(value, getClass()));
}

const Class_Generic& String::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::native_class("String", {I_Immutable::getClass()}));
    return cls;
}

Type String::getType() { return Type(getClass()); }

namespace internal {

const identifier_data& intern(const String& name) {
    if (!name.is(Kind::String))
        return intern(std::string_view(name.toStdString()));
    object_value_string& text = flat(name);
    if (const identifier_data* known = text.knownIdentifier())
        return *known;
    const identifier_data& record = intern(std::string_view(name.toStdString()));
    text.rememberIdentifier(record);
    return record;
}

const identifier_data* find_interned(const String& name) {
    if (!name.is(Kind::String))
        return find_interned(std::string_view(name.toStdString()));
    object_value_string& text = flat(name);
    if (const identifier_data* known = text.knownIdentifier())
        return known;
    const identifier_data* record = find_interned(std::string_view(name.toStdString()));
    if (record != nullptr)
        text.rememberIdentifier(*record);
    return record;
}

}  // namespace internal

}  // namespace ling
