#pragma once

#include "ling/object_value.h"

namespace ling::internal {

/// The storage of a byte array: the bytes lie behind the object in the same allocation, with a NUL after the last.
/// They are written once, before anybody else sees them.
class object_value_byte_array final : public object_value {
public:
    /// `size` bytes that are still to be written. One reference, the caller's.
    static object_value_byte_array* make(std::size_t size, object_value_class* klass = nullptr);
    /// The one empty byte array, borrowed. It lives as long as the process.
    static object_value_byte_array* empty();

    std::size_t size() const noexcept { return size_; }
    char* bytes() noexcept { return reinterpret_cast<char*>(this + 1); }

    // The allocation is larger than the class, so the size must not be taken from the type when it is given back.
    static void operator delete(void* storage) { ::operator delete(storage); }

private:
    struct trailing_bytes {
        std::size_t count;
    };
    static void* operator new(std::size_t size, trailing_bytes bytes) { return ::operator new(size + bytes.count); }
    static void operator delete(void* storage, trailing_bytes) { ::operator delete(storage); }

    object_value_byte_array(std::size_t size, object_value_class* klass) noexcept
        : object_value(Kind::ByteArray, klass), size_(size) {}

    const std::size_t size_;
};

}  // namespace ling::internal
