#include "bridge/text.h"

#include "host/py_ref.h"

#include <algorithm>
#include <cstring>

namespace ling::python {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool isSurrogate(char32_t unit) { return (unit & 0xFFFFF800) == 0xD800; }
constexpr bool isLeading(char32_t unit) { return (unit & 0xFFFFFC00) == 0xD800; }
constexpr bool isTrailing(char32_t unit) { return (unit & 0xFFFFFC00) == 0xDC00; }

/// Looks at blocks without branching inside them, which compilers turn into vector instructions.
template <class Unit>
bool hasSurrogate(const Unit* units, std::size_t count) {
    constexpr std::size_t kBlock = 32;
    std::size_t at = 0;
    for (; at + kBlock <= count; at += kBlock) {
        bool found = false;
        for (std::size_t i = 0; i < kBlock; ++i)
            found |= isSurrogate(units[at + i]);
        if (found)
            return true;
    }
    return std::any_of(units + at, units + count, [](Unit unit) { return isSurrogate(unit); });
}

/// Lets Python raise its own exception for text that has no form in UTF-8.
ling::String refuse(PyObject* unicode) {
    (void)PyRef::steal(PyUnicode_AsUTF8String(unicode));
    return {};
}

ling::String fromTwoBytes(PyObject* unicode, std::size_t length) {
    static_assert(sizeof(Py_UCS2) == sizeof(char16_t));
    const Py_UCS2* units = PyUnicode_2BYTE_DATA(unicode);
    if (hasSurrogate(units, length))
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
    if (hasSurrogate(points, length))
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
    if (hasSurrogate(units.data(), units.size()))
        return decode(units);
    return PyUnicode_FromKindAndData(PyUnicode_2BYTE_KIND, units.data(), static_cast<Py_ssize_t>(units.size()));
}

}  // namespace ling::python
