#pragma once

#include "ling/any.h"
#include "ling/result.h"

#include <string_view>

namespace ling {

/// Immutable bytes. The storage ends in a NUL that is not counted.
class LING_EXPORT ByteArray : public Any {
public:
    ByteArray();  ///< Empty.
    explicit ByteArray(std::string_view bytes);
    /// `size` bytes for `fill` to write to, called once before anybody else can see them.
    template <class Fill>
    static ByteArray filled(std::size_t size, Fill&& fill) {
        ByteArray result = uninitialised(size);
        fill(result.writable());
        return result;
    }

    const char* data() const noexcept;
    std::size_t size() const noexcept;
    bool isEmpty() const noexcept { return size() == 0; }
    std::string_view view() const noexcept { return {data(), size()}; }

    /// Printable ASCII as it is; quotes, backslashes and every other byte as the escapes of a byte literal
    /// ("\n", "\x00"), so that the text between single quotes reads back as the same bytes.
    String toString() const;

    static Result<ByteArray> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();

private:
    template <std::same_as<Any> T>  // Not what becomes an `Any` on the way, as text does.
    explicit ByteArray(T&& value) noexcept : Any(std::move(value)) {}
    static ByteArray uninitialised(std::size_t size);
    char* writable() noexcept;
};

}  // namespace ling
