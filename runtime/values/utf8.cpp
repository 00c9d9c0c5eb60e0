#include "values/utf8.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace ling::internal {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isLeadSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xD800; }
bool isTrailSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xDC00; }

#ifdef __SSE2__

/// Each copies whole blocks of ASCII, and stops in front of the first block that holds something else.
std::size_t widenBlocks(const char* from, std::size_t size, char16_t* to) noexcept {
    const __m128i zero = _mm_setzero_si128();
    std::size_t done = 0;
    for (; done + 16 <= size; done += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + done));
        if (_mm_movemask_epi8(bytes) != 0)
            break;
        auto* out = reinterpret_cast<__m128i*>(to + done);
        _mm_storeu_si128(out, _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(out + 1, _mm_unpackhi_epi8(bytes, zero));
    }
    return done;
}

std::size_t narrowBlocks(const char16_t* from, std::size_t size, char* to) noexcept {
    const __m128i beyondAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
    const __m128i zero = _mm_setzero_si128();
    std::size_t done = 0;
    for (; done + 16 <= size; done += 16) {
        const auto* in = reinterpret_cast<const __m128i*>(from + done);
        const __m128i low = _mm_loadu_si128(in);
        const __m128i high = _mm_loadu_si128(in + 1);
        const __m128i foreign = _mm_and_si128(_mm_or_si128(low, high), beyondAscii);
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(foreign, zero)) != 0xFFFF)
            break;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + done), _mm_packus_epi16(low, high));
    }
    return done;
}

/// How many bytes at the beginning are surely ASCII: whole blocks.
std::size_t asciiBlocks(std::string_view text) noexcept {
    std::size_t done = 0;
    while (done + 16 <= text.size() &&
           _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + done))) == 0)
        done += 16;
    return done;
}

#else

std::size_t asciiBlocks(std::string_view) noexcept { return 0; }
std::size_t widenBlocks(const char*, std::size_t, char16_t*) noexcept { return 0; }
std::size_t narrowBlocks(const char16_t*, std::size_t, char*) noexcept { return 0; }

#endif

/// One step through UTF-8: a code point, or U+FFFD for the maximal ill-formed subsequence that begins here.
struct utf8_character {
    char32_t code;
    unsigned bytes;
    bool wellFormed;
};

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

utf8_character decodeUtf8(std::string_view text) noexcept {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    if (byte(0) < 0x80)
        return {byte(0), 1, true};
    const lead_byte lead = classify(byte(0));
    if (lead.following == 0)
        return {kReplacement, 1, false};
    char32_t code = byte(0) & (0x3Fu >> lead.following);
    for (unsigned i = 1; i <= lead.following; ++i) {
        const unsigned char lowest = i == 1 ? lead.lowest : 0x80;
        const unsigned char highest = i == 1 ? lead.highest : 0xBF;
        if (i >= text.size() || byte(i) < lowest || byte(i) > highest)
            return {kReplacement, i, false};
        code = code << 6 | (byte(i) & 0x3Fu);
    }
    return {code, lead.following + 1, true};
}

/// Counts the units that the text takes in UTF-16, and tells whether nothing has to be replaced.
void countUtf8(std::string_view text, std::size_t& length, bool& wellFormed) noexcept {
    while (!text.empty()) {
        const std::size_t ascii = asciiBlocks(text);
        length += ascii;
        text.remove_prefix(ascii);
        // One block's worth of characters at least, before blocks are tried again.
        for (std::size_t i = 0; i < 16 && !text.empty(); ++i) {
            const utf8_character next = decodeUtf8(text);
            length += next.code < 0x10000 ? 1 : 2;
            wellFormed = wellFormed && next.wellFormed;
            text.remove_prefix(next.bytes);
        }
    }
}

std::size_t encodedSize(char32_t code) noexcept { return code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4; }

char* encodeUtf8(char32_t code, char* to) noexcept {
    const std::size_t size = encodedSize(code);
    if (size == 1) {
        *to = static_cast<char>(code);
        return to + 1;
    }
    for (std::size_t i = size - 1; i != 0; --i, code >>= 6)
        to[i] = static_cast<char>(0x80 | (code & 0x3F));
    constexpr unsigned kLeads[] = {0, 0, 0xC0, 0xE0, 0xF0};
    to[0] = static_cast<char>(kLeads[size] | code);
    return to + size;
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

}  // namespace

std::size_t widen_ascii(std::string_view utf8, char16_t* to) noexcept {
    std::size_t done = widenBlocks(utf8.data(), utf8.size(), to);
    for (; done < utf8.size() && static_cast<unsigned char>(utf8[done]) < 0x80; ++done)
        to[done] = static_cast<char16_t>(utf8[done]);
    return done;
}

std::size_t narrow_ascii(std::u16string_view units, char* to) noexcept {
    std::size_t done = narrowBlocks(units.data(), units.size(), to);
    for (; done < units.size() && units[done] < 0x80; ++done)
        to[done] = static_cast<char>(units[done]);
    return done;
}

std::size_t utf16_length(std::string_view utf8) noexcept {
    std::size_t length = 0;
    bool wellFormed = true;
    countUtf8(utf8, length, wellFormed);
    return length;
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

void utf8_to_utf16(std::string_view utf8, char16_t* to) noexcept {
    while (!utf8.empty()) {
        const std::size_t ascii = widen_ascii(utf8, to);
        to += ascii;
        utf8.remove_prefix(ascii);
        // Text that is not ASCII seldom is so for one character alone.
        while (!utf8.empty() && static_cast<unsigned char>(utf8.front()) >= 0x80) {
            const utf8_character next = decodeUtf8(utf8);
            to = encodeUtf16(next.code, to);
            utf8.remove_prefix(next.bytes);
        }
    }
}

void utf16_to_utf8(std::u16string_view units, char* to) noexcept {
    while (!units.empty()) {
        const std::size_t ascii = narrow_ascii(units, to);
        to += ascii;
        units.remove_prefix(ascii);
        while (!units.empty() && units.front() >= 0x80) {
            const utf16_character next = decode_utf16(units);
            to = encodeUtf8(next.code, to);
            units.remove_prefix(next.units);
        }
    }
}

utf16_character decode_utf16(std::u16string_view units) noexcept {
    const char16_t first = units.front();
    if ((first & 0xF800) != 0xD800)
        return {first, 1, true};
    if (!isLeadSurrogate(first) || units.size() < 2 || !isTrailSurrogate(units[1]))
        return {kReplacement, 1, false};
    return {((first - 0xD7C0u) << 10) | (units[1] & 0x3FFu), 2, true};
}

bool is_well_formed_utf8(std::string_view utf8) noexcept {
    std::size_t length = 0;
    bool wellFormed = true;
    countUtf8(utf8, length, wellFormed);
    return wellFormed;
}

bool is_well_formed_utf16(std::u16string_view units) noexcept {
    while (!units.empty()) {
        const utf16_character next = decode_utf16(units);
        if (!next.wellFormed)
            return false;
        units.remove_prefix(next.units);
    }
    return true;
}

}  // namespace ling::internal
