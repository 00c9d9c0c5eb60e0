#include "bridge/text.h"

#include "host/py_ref.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace ling::python {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool isSurrogate(char32_t unit) { return (unit & 0xFFFFF800) == 0xD800; }
constexpr bool isLeading(char32_t unit) { return (unit & 0xFFFFFC00) == 0xD800; }
constexpr bool isTrailing(char32_t unit) { return (unit & 0xFFFFFC00) == 0xDC00; }

/// What a text needs: how wide its units are, and whether surrogates are among them.
struct Needs {
    unsigned bits = 0;  // Those that are set in any unit.
    bool surrogates = false;
};

#ifdef __SSE2__

constexpr std::size_t kBlock = 16 / sizeof(char16_t);

__m128i blockAt(const char16_t* units) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units)); }

/// Looks at whole blocks; answers how many units that were.
std::size_t addBlocks(const char16_t* units, std::size_t count, Needs& needs) {
    const __m128i mask = _mm_set1_epi16(static_cast<short>(0xF800));
    const __m128i surrogate = _mm_set1_epi16(static_cast<short>(0xD800));
    __m128i bits = _mm_setzero_si128();
    __m128i found = _mm_setzero_si128();
    std::size_t at = 0;
    for (; at + kBlock <= count; at += kBlock) {
        const __m128i block = blockAt(units + at);
        bits = _mm_or_si128(bits, block);
        found = _mm_or_si128(found, _mm_cmpeq_epi16(_mm_and_si128(block, mask), surrogate));
    }
    needs.surrogates = _mm_movemask_epi8(found) != 0;
    std::uint16_t lanes[kBlock];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), bits);
    for (const unsigned lane : lanes)
        needs.bits |= lane;
    return at;
}

std::size_t narrowBlocks(const char16_t* units, std::size_t count, Py_UCS1* target) {
    std::size_t at = 0;
    for (; at + 2 * kBlock <= count; at += 2 * kBlock)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + at),
                         _mm_packus_epi16(blockAt(units + at), blockAt(units + at + kBlock)));
    return at;
}

#else

std::size_t addBlocks(const char16_t*, std::size_t, Needs&) { return 0; }
std::size_t narrowBlocks(const char16_t*, std::size_t, Py_UCS1*) { return 0; }

#endif

Needs needsOf(const char16_t* units, std::size_t count) {
    Needs needs;
    for (std::size_t at = addBlocks(units, count, needs); at < count; ++at) {
        needs.bits |= units[at];
        needs.surrogates |= isSurrogate(units[at]);
    }
    return needs;
}

/// Lets Python raise its own exception for text that has no form in UTF-8.
ling::String refuse(PyObject* unicode) {
    (void)PyRef::steal(PyUnicode_AsUTF8String(unicode));
    return {};
}

ling::String fromTwoBytes(PyObject* unicode, std::size_t length) {
    static_assert(sizeof(Py_UCS2) == sizeof(char16_t));
    const Py_UCS2* units = PyUnicode_2BYTE_DATA(unicode);
    // In two steps, since a text with surrogates becomes none.
    if (needsOf(reinterpret_cast<const char16_t*>(units), length).surrogates)
        return refuse(unicode);
    return ling::String::filled(length,
                                [&](char16_t* target) { std::memcpy(target, units, length * sizeof(Py_UCS2)); });
}

char16_t* writePair(char16_t* target, char32_t point) {
    *target++ = static_cast<char16_t>(0xD7C0 + (point >> 10));
    *target++ = static_cast<char16_t>(0xDC00 + (point & 0x3FF));
    return target;
}

ling::String fromFourBytes(PyObject* unicode, std::size_t length) {
    const Py_UCS4* points = PyUnicode_4BYTE_DATA(unicode);
    if (std::any_of(points, points + length, isSurrogate))
        return refuse(unicode);
    const auto pairs = std::count_if(points, points + length, [](Py_UCS4 point) { return point > 0xFFFF; });
    return ling::String::filled(length + static_cast<std::size_t>(pairs), [&](char16_t* target) {
        for (std::size_t i = 0; i < length; ++i) {
            if (points[i] > 0xFFFF)
                target = writePair(target, points[i]);
            else
                *target++ = static_cast<char16_t>(points[i]);
        }
    });
}

/// Calls `use` with each code point of the text, lone surrogates replaced.
template <class Use>
void forEachPoint(std::u16string_view units, Use&& use) {
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char32_t unit = units[i];
        if (isLeading(unit) && i + 1 < units.size() && isTrailing(units[i + 1]))
            use(0x10000 + ((unit & 0x3FF) << 10) + (units[++i] & 0x3FFu));
        else
            use(isSurrogate(unit) ? kReplacement : unit);
    }
}

/// Text with surrogates, paired or not. Its widest code point is never less than U+FFFD, so two widths come into
/// question only, as a `str` is always stored in the narrowest that does.
PyObject* decode(std::u16string_view units) {
    Py_ssize_t length = 0;
    char32_t widest = kReplacement;
    forEachPoint(units, [&](char32_t point) {
        ++length;
        widest = std::max(widest, point);
    });
    PyObject* result = PyUnicode_New(length, widest > 0xFFFF ? 0x10FFFF : 0xFFFF);
    if (result == nullptr)
        return nullptr;
    const int kind = PyUnicode_KIND(result);
    void* data = PyUnicode_DATA(result);
    Py_ssize_t at = 0;
    forEachPoint(units, [&](char32_t point) { PyUnicode_WRITE(kind, data, at++, point); });
    return result;
}

/// Text without surrogates, in the narrowest of the widths that `bits` allows.
PyObject* encode(std::u16string_view units, unsigned bits) {
    const Py_UCS4 widest = bits < 0x80 ? 0x7F : bits < 0x100 ? 0xFF : 0xFFFF;
    PyObject* result = PyUnicode_New(static_cast<Py_ssize_t>(units.size()), widest);
    if (result == nullptr)
        return nullptr;
    if (widest == 0xFFFF) {
        std::memcpy(PyUnicode_2BYTE_DATA(result), units.data(), units.size() * sizeof(Py_UCS2));
        return result;
    }
    Py_UCS1* target = PyUnicode_1BYTE_DATA(result);
    for (std::size_t at = narrowBlocks(units.data(), units.size(), target); at < units.size(); ++at)
        target[at] = static_cast<Py_UCS1>(units[at]);
    return result;
}

/// Python has one object for each of its shortest texts.
PyObject* shortText(std::u16string_view units) {
    return PyUnicode_FromKindAndData(PyUnicode_2BYTE_KIND, units.data(), static_cast<Py_ssize_t>(units.size()));
}

}  // namespace

ling::String textFromPython(PyObject* unicode) {
    const auto length = static_cast<std::size_t>(PyUnicode_GET_LENGTH(unicode));
    switch (PyUnicode_KIND(unicode)) {
        case PyUnicode_1BYTE_KIND:
            return ling::String::fromLatin1({reinterpret_cast<const char*>(PyUnicode_1BYTE_DATA(unicode)), length});
        case PyUnicode_2BYTE_KIND:
            return fromTwoBytes(unicode, length);
        default:
            return fromFourBytes(unicode, length);
    }
}

PyObject* textToPython(const ling::String& text) {
    const std::u16string_view units = text.view();
    const Needs needs = needsOf(units.data(), units.size());
    if (needs.surrogates)
        return decode(units);
    return units.size() <= 1 ? shortText(units) : encode(units, needs.bits);
}

}  // namespace ling::python
