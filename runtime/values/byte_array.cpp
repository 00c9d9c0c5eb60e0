#include "ling/byte_array.h"

#include "ling/class.h"
#include "ling/class_record.h"
#include "ling/interfaces.h"
#include "ling/string.h"
#include "values/byte_array_value.h"

#include <cstring>

namespace ling {

using internal::object_value_byte_array;

namespace {

object_value_byte_array& record(const Any& bytes) noexcept {
    return *static_cast<object_value_byte_array*>(bytes.object());
}

void appendEscape(string_builder& text, unsigned char byte) {
    constexpr char kHexDigits[] = "0123456789abcdef";
    switch (byte) {
        case '\t':
            text.append("\\t");
            return;
        case '\n':
            text.append("\\n");
            return;
        case '\r':
            text.append("\\r");
            return;
        case '\'':
        case '"':
        case '\\':
            text.append(u'\\').append(static_cast<char16_t>(byte));
            return;
        default:
            text.append("\\x")
                .append(static_cast<char16_t>(kHexDigits[byte >> 4]))
                .append(static_cast<char16_t>(kHexDigits[byte & 15]));
    }
}

bool isPlain(unsigned char byte) noexcept {
    return byte >= 0x20 && byte < 0x7F && byte != '\'' && byte != '"' && byte != '\\';
}

}  // namespace

ByteArray::ByteArray() : Any(Any::share(object_value_byte_array::empty())) {}

ByteArray::ByteArray(std::string_view bytes) : ByteArray(uninitialised(bytes.size())) {
    if (!bytes.empty())
        std::memcpy(writable(), bytes.data(), bytes.size());
}

ByteArray ByteArray::uninitialised(std::size_t size) {
    return size == 0 ? ByteArray() : ByteArray(Any::adopt(object_value_byte_array::make(size)));
}

char* ByteArray::writable() noexcept { return record(*this).bytes(); }
const char* ByteArray::data() const noexcept { return isNone() ? "" : record(*this).bytes(); }
std::size_t ByteArray::size() const noexcept { return isNone() ? 0 : record(*this).size(); }

String ByteArray::toString() const {
    string_builder text;
    for (const char byte : view()) {
        if (isPlain(static_cast<unsigned char>(byte)))
            text.append(static_cast<char16_t>(byte));
        else
            appendEscape(text, static_cast<unsigned char>(byte));
    }
    return text.build();
}

Result<ByteArray> ByteArray::cast(const Any& value) {
    if (value.is(Kind::ByteArray))
        return unchecked<ByteArray>(value);
    return Result<ByteArray>::failure(internal::cast_error(value, getClass()));
}

const Class_Generic& ByteArray::getClass() {
    static const Class_Generic& cls =
        *new Class_Generic(internal::native_class("ByteArray", {I_Immutable::getClass()}));
    return cls;
}

Type ByteArray::getType() { return Type(getClass()); }

namespace internal {

object_value_byte_array* object_value_byte_array::make(std::size_t size, object_value_class* klass) {
    auto* made = new (trailing_bytes{size + 1}) object_value_byte_array(size, klass);
    made->bytes()[size] = '\0';
    return made;
}

object_value_byte_array* object_value_byte_array::empty() {
    static object_value_byte_array* const shared = make(0);
    return shared;
}

}  // namespace internal

}  // namespace ling
