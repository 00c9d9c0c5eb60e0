#include "services/quoted_text.h"

namespace ling::internal {

namespace {

constexpr char16_t kDigits[] = u"0123456789abcdef";

bool isHigh(char16_t unit) noexcept { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLow(char16_t unit) noexcept { return unit >= 0xDC00 && unit <= 0xDFFF; }

bool isLone(std::u16string_view text, std::size_t at) noexcept {
    if (isHigh(text[at]))
        return at + 1 == text.size() || !isLow(text[at + 1]);
    return isLow(text[at]) && (at == 0 || !isHigh(text[at - 1]));
}

bool isControl(char16_t unit) noexcept { return unit < 0x20 || (unit >= 0x7F && unit < 0xA0); }

void appendNumber(string_builder& out, const char* mark, char16_t unit, int digits) {
    out.append(mark);
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        out.append(kDigits[(unit >> shift) & 0xF]);
}

/// The letter that stands for a unit behind a backslash, or zero.
char16_t escapeOf(char16_t unit) noexcept {
    switch (unit) {
        case u'\\':
        case u'\'':
            return unit;
        case u'\n':
            return u'n';
        case u'\r':
            return u'r';
        case u'\t':
            return u't';
        default:
            return 0;
    }
}

}  // namespace

void append_quoted(string_builder& out, std::u16string_view text) {
    out.append(u'\'');
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (const char16_t letter = escapeOf(unit); letter != 0)
            out.append(u'\\').append(letter);
        else if (isControl(unit))
            appendNumber(out, "\\x", unit, 2);
        else if (isLone(text, i))
            appendNumber(out, "\\u", unit, 4);
        else
            out.append(unit);
    }
    out.append(u'\'');
}

}  // namespace ling::internal
