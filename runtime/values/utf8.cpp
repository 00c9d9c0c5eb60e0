#include "values/utf8.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace ling::internal {

namespace {

bool isAscii(char byte) noexcept { return static_cast<unsigned char>(byte) < 0x80; }
bool isLeadSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xD800; }
bool isTrailSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xDC00; }

constexpr std::size_t kBlock = 16;  // Characters.

#ifdef __SSE2__

// Each of these works on whole blocks of ASCII and stops in front of the first block that holds something else. Four
// blocks together need but one test.
constexpr std::size_t kBlocks = 4 * kBlock;

__m128i blockAt(const void* place, std::size_t index) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i*>(place) + index);
}

void widenBlock(__m128i bytes, char16_t* to) noexcept {
    const __m128i zero = _mm_setzero_si128();
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(bytes, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to) + 1, _mm_unpackhi_epi8(bytes, zero));
}

std::size_t widenBlocks(const char* from, std::size_t size, char16_t* to) noexcept {
    std::size_t done = 0;
    for (; done + kBlocks <= size; done += kBlocks) {
        const __m128i blocks[] = {blockAt(from + done, 0), blockAt(from + done, 1), blockAt(from + done, 2),
                                  blockAt(from + done, 3)};
        if (_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(blocks[0], blocks[1]), _mm_or_si128(blocks[2], blocks[3]))) !=
            0)
            break;
        for (std::size_t i = 0; i < 4; ++i)
            widenBlock(blocks[i], to + done + i * kBlock);
    }
    for (; done + kBlock <= size; done += kBlock) {
        const __m128i block = blockAt(from + done, 0);
        if (_mm_movemask_epi8(block) != 0)
            break;
        widenBlock(block, to + done);
    }
    return done;
}

/// The same for bytes of any value.
std::size_t widenAnyBlocks(const char* from, std::size_t size, char16_t* to) noexcept {
    std::size_t done = 0;
    for (; done + kBlock <= size; done += kBlock)
        widenBlock(blockAt(from + done, 0), to + done);
    return done;
}

bool isAsciiUnits(__m128i units) noexcept {
    const __m128i foreign = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xFF80)));
    return _mm_movemask_epi8(_mm_cmpeq_epi16(foreign, _mm_setzero_si128())) == 0xFFFF;
}

std::size_t narrowBlocks(const char16_t* from, std::size_t size, char* to) noexcept {
    std::size_t done = 0;
    for (; done + 2 * kBlock <= size; done += 2 * kBlock) {
        const __m128i blocks[] = {blockAt(from + done, 0), blockAt(from + done, 1), blockAt(from + done, 2),
                                  blockAt(from + done, 3)};
        if (!isAsciiUnits(_mm_or_si128(_mm_or_si128(blocks[0], blocks[1]), _mm_or_si128(blocks[2], blocks[3]))))
            break;
        auto* out = reinterpret_cast<__m128i*>(to + done);
        _mm_storeu_si128(out, _mm_packus_epi16(blocks[0], blocks[1]));
        _mm_storeu_si128(out + 1, _mm_packus_epi16(blocks[2], blocks[3]));
    }
    return done;
}

std::size_t asciiBlocks(const char* from, std::size_t size) noexcept {
    std::size_t done = 0;
    while (done + kBlock <= size && _mm_movemask_epi8(blockAt(from + done, 0)) == 0)
        done += kBlock;
    return done;
}

#else

std::size_t widenBlocks(const char*, std::size_t, char16_t*) noexcept { return 0; }
std::size_t widenAnyBlocks(const char*, std::size_t, char16_t*) noexcept { return 0; }
std::size_t narrowBlocks(const char16_t*, std::size_t, char*) noexcept { return 0; }
std::size_t asciiBlocks(const char*, std::size_t) noexcept { return 0; }

#endif

/// What a lead byte promises: how many bytes follow, and the range of the first of them. The range keeps out what is
/// longer than it must be, surrogates, and everything above U+10FFFF.
struct lead_byte {
    unsigned following;
    unsigned char lowest;
    unsigned char highest;
};

lead_byte classify(unsigned char lead) noexcept {
    if (lead >= 0xC2 && lead <= 0xDF)
        return {1, 0x80, 0xBF};
    if ((lead & 0xF0) == 0xE0)
        return {2, static_cast<unsigned char>(lead == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(lead == 0xED ? 0x9F : 0xBF)};
    if (lead >= 0xF0 && lead <= 0xF4)
        return {3, static_cast<unsigned char>(lead == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(lead == 0xF4 ? 0x8F : 0xBF)};
    return {0, 0, 0};
}

/// Reads one character of a text that is not at its end and steps over it, or over the maximal ill-formed subsequence
/// that stands in its place.
char32_t readUtf8(const char*& at, const char* end) noexcept {
    const auto first = static_cast<unsigned char>(*at++);
    if (first < 0x80)
        return first;
    const lead_byte lead = classify(first);
    if (lead.following == 0 || at == end)
        return kIllFormed;
    auto next = static_cast<unsigned char>(*at);
    if (next < lead.lowest || next > lead.highest)
        return kIllFormed;
    char32_t code = (first & (0x3Fu >> lead.following)) << 6 | (next & 0x3Fu);
    ++at;
    for (unsigned i = 1; i < lead.following; ++i, ++at) {
        if (at == end || ((next = static_cast<unsigned char>(*at)) & 0xC0) != 0x80)
            return kIllFormed;
        code = code << 6 | (next & 0x3Fu);
    }
    return code;
}

char* encodeUtf8(char32_t code, char* to) noexcept {
    const auto continuation = [](char32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    if (code < 0x80) {
        *to++ = static_cast<char>(code);
        return to;
    }
    if (code < 0x800) {
        *to++ = static_cast<char>(0xC0 | code >> 6);
    } else if (code < 0x10000) {
        *to++ = static_cast<char>(0xE0 | code >> 12);
        *to++ = continuation(code >> 6);
    } else {
        *to++ = static_cast<char>(0xF0 | code >> 18);
        *to++ = continuation(code >> 12);
        *to++ = continuation(code >> 6);
    }
    *to++ = continuation(code);
    return to;
}

char16_t* encodeUtf16(char32_t code, char16_t* to) noexcept {
    if (code < 0x10000) {
        *to = static_cast<char16_t>(code);
        return to + 1;
    }
    to[0] = static_cast<char16_t>(0xD7C0 + (code >> 10));
    to[1] = static_cast<char16_t>(0xDC00 | (code & 0x3FF));
    return to + 2;
}

char32_t replaced(char32_t code) noexcept { return code == kIllFormed ? kReplacement : code; }

}  // namespace

void widen_latin1(std::string_view latin1, char16_t* to) noexcept {
    for (std::size_t done = widenAnyBlocks(latin1.data(), latin1.size(), to); done < latin1.size(); ++done)
        to[done] = static_cast<unsigned char>(latin1[done]);
}

std::size_t narrow_ascii(std::u16string_view units, char* to) noexcept {
    std::size_t done = narrowBlocks(units.data(), units.size(), to);
    for (; done < units.size() && units[done] < 0x80; ++done)
        to[done] = static_cast<char>(units[done]);
    return done;
}

std::size_t utf8_length(std::u16string_view units) noexcept {
    // A unit of a pair counts three here like every other one from U+0800 on, and both together should count four.
    std::size_t length = units.size();
    char16_t previous = 0;
    for (const char16_t unit : units) {
        length += (unit >= 0x80 ? 1u : 0u) + (unit >= 0x800 ? 1u : 0u);
        length -= isLeadSurrogate(previous) && isTrailSurrogate(unit) ? 2u : 0u;
        previous = unit;
    }
    return length;
}

std::size_t utf8_to_utf16(std::string_view utf8, char16_t* const to) noexcept {
    const char* at = utf8.data();
    const char* const end = at + utf8.size();
    char16_t* out = to;
    while (at != end) {
        const std::size_t ascii = widenBlocks(at, static_cast<std::size_t>(end - at), out);
        out += ascii;
        at += ascii;
        // As many characters as a block has, before blocks are tried again.
        for (std::size_t i = 0; i < kBlock && at != end; ++i) {
            if (isAscii(*at))
                *out++ = static_cast<char16_t>(*at++);
            else
                out = encodeUtf16(replaced(readUtf8(at, end)), out);
        }
    }
    return static_cast<std::size_t>(out - to);
}

void utf16_to_utf8(std::u16string_view units, char* to) noexcept {
    const char16_t* at = units.data();
    const char16_t* const end = at + units.size();
    while (at != end) {
        const std::size_t ascii = narrowBlocks(at, static_cast<std::size_t>(end - at), to);
        to += ascii;
        at += ascii;
        for (std::size_t i = 0; i < kBlock && at != end; ++i) {
            if (*at < 0x80)
                *to++ = static_cast<char>(*at++);
            else
                to = encodeUtf8(replaced(read_utf16(at, end)), to);
        }
    }
}

char32_t read_utf16(const char16_t*& at, const char16_t* end) noexcept {
    const char16_t first = *at++;
    if ((first & 0xF800) != 0xD800)
        return first;
    if (!isLeadSurrogate(first) || at == end || !isTrailSurrogate(*at))
        return kIllFormed;
    return ((first - 0xD7C0u) << 10) | (*at++ & 0x3FFu);
}

bool is_well_formed_utf8(std::string_view utf8) noexcept {
    const char* at = utf8.data();
    const char* const end = at + utf8.size();
    while (at != end) {
        at += asciiBlocks(at, static_cast<std::size_t>(end - at));
        for (std::size_t i = 0; i < kBlock && at != end; ++i)
            if (readUtf8(at, end) == kIllFormed)
                return false;
    }
    return true;
}

bool is_well_formed_utf16(std::u16string_view units) noexcept {
    const char16_t* at = units.data();
    const char16_t* const end = at + units.size();
    while (at != end)
        if (read_utf16(at, end) == kIllFormed)
            return false;
    return true;
}

}  // namespace ling::internal
