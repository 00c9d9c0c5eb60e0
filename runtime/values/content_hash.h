#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ling::internal {

namespace content_hash {

// Odd, with about as many ones as zeros, and without a pattern: all that multiplying by them asks for.
inline constexpr std::uint64_t kLength = 0x8D58AC26AFE12E47ULL;
inline constexpr std::uint64_t kFirst = 0xC3A5C85C97CB3127ULL;
inline constexpr std::uint64_t kSecond = 0xE2F0B1D96A47C38DULL;

inline std::uint64_t mix(std::uint64_t a, std::uint64_t b) noexcept {
    __extension__ using wide = unsigned __int128;
    const wide product = static_cast<wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}
template <class T>
std::uint64_t load(const unsigned char* bytes) noexcept {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

}  // namespace content_hash

/// A hash of bytes in which every bit depends on every byte: sixteen bytes for each widening multiplication. The same
/// in every process; not made to withstand somebody who picks the bytes.
inline std::size_t hash_bytes(const void* data, std::size_t size) noexcept {
    using namespace content_hash;
    const auto* at = static_cast<const unsigned char*>(data);
    const unsigned char* const end = at + size;
    std::uint64_t state = size * kLength;
    for (; end - at > 16; at += 16)
        state = mix(load<std::uint64_t>(at) ^ kFirst, load<std::uint64_t>(at + 8) ^ state);
    // The last bytes are read as two numbers that may overlap; the length, which is in the state, tells them apart.
    const auto left = static_cast<std::size_t>(end - at);
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    if (left >= 8) {
        low = load<std::uint64_t>(at);
        high = load<std::uint64_t>(end - 8);
    } else if (left >= 4) {
        low = load<std::uint32_t>(at);
        high = load<std::uint32_t>(end - 4);
    } else if (left != 0) {
        low = at[0] | (at[left / 2] << 8);
        high = end[-1];
    }
    return static_cast<std::size_t>(mix(low ^ kSecond ^ size, mix(high ^ kFirst, state ^ kSecond)));
}

}  // namespace ling::internal
