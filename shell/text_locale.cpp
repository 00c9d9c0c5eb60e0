#include "text_locale.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace ling::shell {

namespace {

bool isPlain(const char* locale) {
    return locale == nullptr || std::strcmp(locale, "C") == 0 || std::strcmp(locale, "POSIX") == 0;
}

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

}  // namespace

void useTextLocale() {
    if (!isPlain(std::setlocale(LC_CTYPE, "")))
        return;
    for (const char* locale : {"C.UTF-8", "C.utf8", "UTF-8"}) {
        if (std::setlocale(LC_CTYPE, locale) == nullptr)
            continue;
        if (!isSet("LC_ALL"))
            (void)setenv("LC_CTYPE", locale, 1);
        return;
    }
}

}  // namespace ling::shell
