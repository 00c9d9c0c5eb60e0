#include "ling/string.h"

#include "ling/comparison.h"
#include "values/string_value.h"

#include <algorithm>

/// The operations on strings that look for something in them.

namespace ling {

namespace {

constexpr std::size_t kNowhere = std::u16string_view::npos;

bool isWhiteSpace(char16_t unit) noexcept {
    if (unit <= 0x20)
        return unit == 0x20 || (unit >= 0x09 && unit <= 0x0D);
    return unit == 0x85 || unit == 0xA0 || unit == 0x1680 || (unit >= 0x2000 && unit <= 0x200A) || unit == 0x2028 ||
           unit == 0x2029 || unit == 0x202F || unit == 0x205F || unit == 0x3000;
}

std::int64_t positionOf(std::size_t found) noexcept {
    return found == kNowhere ? -1 : static_cast<std::int64_t>(found);
}

std::size_t countOf(std::u16string_view text, std::u16string_view wanted) noexcept {
    std::size_t count = 0;
    for (std::size_t at = text.find(wanted); at != kNowhere; at = text.find(wanted, at + wanted.size()))
        ++count;
    return count;
}

}  // namespace

String String::trimmed() const {
    const std::u16string_view text = view();
    std::size_t begin = 0;
    std::size_t end = text.size();
    while (begin < end && isWhiteSpace(text[begin]))
        ++begin;
    while (end > begin && isWhiteSpace(text[end - 1]))
        --end;
    return string_access::piece(*this, begin, end - begin);
}

std::vector<String> String::split(std::u16string_view separator) const {
    std::vector<String> pieces;
    const std::u16string_view text = view();
    std::size_t begin = 0;
    if (!separator.empty())
        for (std::size_t at = text.find(separator); at != kNowhere; at = text.find(separator, begin)) {
            pieces.push_back(string_access::piece(*this, begin, at - begin));
            begin = at + separator.size();
        }
    pieces.push_back(string_access::piece(*this, begin, text.size() - begin));
    return pieces;
}

String String::replaced(std::u16string_view from, std::u16string_view to) const {
    const std::u16string_view text = view();
    const std::size_t count = from.empty() ? 0 : countOf(text, from);
    if (count == 0)
        return *this;
    return filled(text.size() - count * from.size() + count * to.size(), [&](char16_t* out) {
        std::size_t begin = 0;
        for (std::size_t at = text.find(from); at != kNowhere; at = text.find(from, begin)) {
            out = std::copy_n(text.data() + begin, at - begin, out);
            out = std::copy(to.begin(), to.end(), out);
            begin = at + from.size();
        }
        std::copy_n(text.data() + begin, text.size() - begin, out);
    });
}

std::int64_t String::indexOf(std::u16string_view text, std::size_t start) const noexcept {
    return positionOf(view().find(text, start));
}

std::int64_t String::lastIndexOf(std::u16string_view text) const noexcept { return positionOf(view().rfind(text)); }

namespace {

/// Walks a format text and writes it out with the values in their places.
class text_formatter {
public:
    explicit text_formatter(std::span<const Any> values) : values_(values) {}

    String format(std::u16string_view text) {
        while (!text.empty()) {
            const std::size_t plain = std::min(text.find_first_of(u"{}"), text.size());
            text_.append(text.substr(0, plain));
            text.remove_prefix(plain);
            text.remove_prefix(takeBrace(text));
        }
        return text_.build();
    }

private:
    /// Writes what a brace at the beginning of `text` stands for, and answers how many units that were.
    std::size_t takeBrace(std::u16string_view text) {
        if (text.empty())
            return 0;
        if (text.starts_with(u"{}")) {
            takePlace();
            return 2;
        }
        text_.append(text.front());
        return text.starts_with(u"{{") || text.starts_with(u"}}") ? 2 : 1;
    }

    void takePlace() {
        if (next_ == values_.size()) {
            text_.append(u"{}");
            return;
        }
        const Any& value = values_[next_++];
        // Text is spared the way through `display`, which foreign code may take part in.
        if (value.is(Kind::String))
            text_.append(unchecked<String>(value));
        else
            text_.append(display(value));
    }

    const std::span<const Any> values_;
    std::size_t next_ = 0;
    string_builder text_;
};

}  // namespace

String String::argImplMethod(std::span<const Any> values) const { return text_formatter(values).format(view()); }

}  // namespace ling
