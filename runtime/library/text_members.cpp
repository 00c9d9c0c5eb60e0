#include "interfaces/index.h"
#include "interfaces/optional_method.h"
#include "library/define.h"
#include "library/native_constructor.h"
#include "ling/byte_array.h"
#include "ling/class_builder.h"
#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/list.h"
#include "ling/sequence.h"
#include "values/byte_array_value.h"
#include "values/string_value.h"

#include <algorithm>
#include <cstring>

namespace ling::internal {

namespace {

object_value* copyString(const Any& value, object_value_class* derived) {
    const std::u16string_view units = unchecked<String>(value).view();
    object_value_string* made = object_value_string::make(units.size(), derived);
    std::copy(units.begin(), units.end(), made->units());
    return made;
}

object_value* copyByteArray(const Any& value, object_value_class* derived) {
    const std::string_view bytes = unchecked<ByteArray>(value).view();
    object_value_byte_array* made = object_value_byte_array::make(bytes.size(), derived);
    std::memcpy(made->bytes(), bytes.data(), bytes.size());
    return made;
}

Any makeString(const Any& value) { return is_error_result(value) ? value : try_display(value).toAny(); }

Any makeByteArray(const Any& value) {
    if (value.is(Kind::ByteArray) || is_error_result(value))
        return value;
    const Result<String> text = String::cast(value);
    if (text)
        return text->toUTF8();
    return failure(
        String(u"Unable to make a byte array from a value of class '{}'.").arg(qualname(raw_class_of(value))));
}

native_constructor* makeConstructor(const Class_Generic& cls, const char* name, Any (*make)(const Any&),
                                    const Any& initial, object_value* (*copy)(const Any&, object_value_class*)) {
    auto* made = new native_constructor{cls, make_function(name, "value", make), initial, copy};
    made->make.setParameterDefaults({initial});
    return made;
}

const native_constructor& stringConstructor() {
    static const native_constructor& constructor =
        *makeConstructor(String::getClass(), "String", &makeString, String(), &copyString);
    return constructor;
}

const native_constructor& byteArrayConstructor() {
    static const native_constructor& constructor =
        *makeConstructor(ByteArray::getClass(), "ByteArray", &makeByteArray, ByteArray(), &copyByteArray);
    return constructor;
}

/// Texts and bytes have their units where objects have fields.
template <const native_constructor& (*Get)()>
constexpr class_hooks textHooks() {
    class_hooks hooks = constructor_hooks<Get>();
    hooks.nativeValues = true;
    return hooks;
}

Any unitAt(const String& self, const Any& index) {
    const Result<std::int64_t> given = read_index(index);
    if (!given)
        return given.error();
    const std::optional<std::size_t> position = position_of(*given, self.length());
    return position ? Any(String(self.view().substr(*position, 1))) : index_out_of_range(index);
}

Any sliced(const String& self, std::int64_t position, const Any& count) {
    if (!count.isNone() && !count.is(Kind::Integer))
        return read_index(count).error();
    return self.sliced(position, count);
}

Any split(const String& self, const String& separator) {
    if (separator.isEmpty())
        return failure(u"The separator must not be empty.");
    const std::vector<String> pieces = self.split(separator.view());
    return List_Generic(std::vector<Any>(pieces.begin(), pieces.end()));
}

/// The longest text that a script may ask for by replacing pieces. A small slip asks for far more, and memory that the
/// system promises but does not have ends the process once it is used.
constexpr std::size_t kLongestText = std::size_t{1} << 30;

Any replaced(const String& self, const String& from, const String& to) {
    const std::size_t most = from.isEmpty() ? 0 : self.length() / from.length() * to.length();
    if (most > kLongestText)
        return failure(u"The text would be too long.");
    return self.replaced(from.view(), to.view());
}

std::int64_t indexOf(const String& self, const String& text, std::int64_t start) {
    return self.indexOf(text.view(), place_of(start, self.length()));
}

void defineStringReading() {
    extend_class(String::getClass())
        .doc("Text, in units of UTF-16. Called, it gives the text that shows a value.")
        .hooks(textHooks<&stringConstructor>())
        .method(Any::$__init__, stringConstructor().initialiser())
        .property(I_Sequence_Generic::$$length,
                  property_builder()
                      .getter([](const String& self) { return self.length(); })
                      .doc("How many units there are. A character beyond U+FFFF takes two."))
        .method(I_Sequence_Generic::$at, "index", &unitAt,
                "The unit at a position as a text, which counts from the end when it is negative.")
        .method(I_Sequence_Generic::$indexOf,
                optional_method(I_Sequence_Generic::$indexOf, "text, start", {0}, &indexOf,
                                "The position of a text at or after 'start', or -1."))
        .method(
            "lastIndexOf", "text", [](const String& self, const String& text) { return self.lastIndexOf(text.view()); },
            "The position of a text where it stands last, or -1.")
        .method(
            I_Iterable_Generic::$contains, "text",
            [](const String& self, const String& text) { return self.indexOf(text.view()) >= 0; },
            "Whether a text stands somewhere in this one.")
        .method(
            "startsWith", "text", [](const String& self, const String& text) { return self.startsWith(text.view()); },
            "Whether this text begins with another.")
        .method(
            "endsWith", "text",
            [](const String& self, const String& text) { return self.view().ends_with(text.view()); },
            "Whether this text ends with another.")
        .build();
}

void defineStringMaking() {
    const method_ident_untyped slicedName("sliced");
    extend_class(String::getClass())
        .method(slicedName, optional_method(slicedName, "position, count", {Any()}, &sliced,
                                            "A piece of the text: 'count' units, or all that remain. A negative "
                                            "position counts from the end; what lies outside is cut off."))
        .method(
            "trimmed", "", [](const String& self) { return self.trimmed(); },
            "The text without white space at either end.")
        .method("split", "separator", &split, "A list of the pieces between the separators.")
        .method("replaced", "from, to", &replaced, "The text with every 'from' replaced by 'to'.")
        .method(
            "arg", "values", [](const String& self, std::span<const Any> values) { return self.argImplMethod(values); },
            "The text with the given values in the places marked '{}'. '{{' and '}}' stand for one brace.")
        .method(
            "toUTF8", "", [](const String& self) { return self.toUTF8(); }, "The text as bytes in UTF-8.")
        .classMethod(
            "fromUTF8", "bytes", [](const ByteArray& bytes) { return String::fromUTF8(bytes); },
            "The text that bytes in UTF-8 stand for. What is ill-formed becomes U+FFFD.")
        .method(
            Any::$__add__, "text", [](const String& self, const String& text) { return self + text; },
            "This text and another behind it.")
        .build();
}

Any byteAt(const ByteArray& self, const Any& index) {
    const Result<std::int64_t> given = read_index(index);
    if (!given)
        return given.error();
    const std::optional<std::size_t> position = position_of(*given, self.size());
    return position ? Any(static_cast<unsigned char>(self.data()[*position])) : index_out_of_range(index);
}

ByteArray joined(const ByteArray& self, const ByteArray& bytes) {
    return ByteArray::filled(self.size() + bytes.size(), [&](char* to) {
        std::memcpy(to, self.data(), self.size());
        std::memcpy(to + self.size(), bytes.data(), bytes.size());
    });
}

}  // namespace

void define_string_members() {
    defineStringReading();
    defineStringMaking();
}

void define_byte_array_members() {
    extend_class(ByteArray::getClass())
        .doc("Bytes. Called, it gives the bytes of a text in UTF-8.")
        .hooks(textHooks<&byteArrayConstructor>())
        .method(Any::$__init__, byteArrayConstructor().initialiser())
        .property(I_Sequence_Generic::$$length, property_builder()
                                                    .getter([](const ByteArray& self) { return self.size(); })
                                                    .doc("How many bytes there are."))
        .method(I_Sequence_Generic::$at, "index", &byteAt,
                "The byte at a position as an integer. A negative position counts from the end.")
        .method(
            "toString", "", [](const ByteArray& self) { return self.toString(); },
            "Printable ASCII as it is, everything else as escapes.")
        .method(Any::$__add__, "bytes", &joined, "These bytes and others behind them.")
        .build();
}

}  // namespace ling::internal
