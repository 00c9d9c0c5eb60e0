#pragma once

#include <locale.h>

namespace ling::python {

/// Gives this thread UTF-8 as the encoding of its locale, for as long as it lives.
///
/// While Python starts, before it can load the codec of its file-system encoding, it passes file names through the
/// locale. In the "C" locale, which is that of every process that does not choose another, it would not find its
/// standard library under a path with other letters than ASCII. Only this thread is changed, and nothing when the
/// system has no such locale.
class Utf8Locale {
public:
    Utf8Locale() noexcept : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
        if (locale_ != nullptr)
            before_ = uselocale(locale_);
    }
    ~Utf8Locale() {
        if (locale_ == nullptr)
            return;
        (void)uselocale(before_);
        freelocale(locale_);
    }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

private:
    const locale_t locale_;
    locale_t before_ = nullptr;
};

}  // namespace ling::python
