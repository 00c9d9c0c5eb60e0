#include "ling/byte_array.h"
#include "ling/error.h"
#include "ling/extension.h"
#include "ling/function.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace ling {

namespace {

bool isLetter(char16_t unit) noexcept { return (unit | 0x20) >= u'a' && (unit | 0x20) <= u'z' && unit < 0x80; }

bool isSchemeUnit(char16_t unit) noexcept {
    return isLetter(unit) || (unit >= u'0' && unit <= u'9') || unit == u'+' || unit == u'-' || unit == u'.';
}

/// The scheme of a URI: what stands before the first colon, when that can be a scheme; else empty.
std::u16string_view schemeOf(std::u16string_view uri) noexcept {
    const std::size_t colon = uri.find(u':');
    if (colon == uri.npos || colon == 0 || !isLetter(uri.front()))
        return {};
    const std::u16string_view scheme = uri.substr(0, colon);
    return std::all_of(scheme.begin(), scheme.end(), isSchemeUnit) ? scheme : std::u16string_view();
}

/// The path of a URI: without scheme, authority, query and fragment. Escapes are left as they are.
std::u16string_view pathOf(std::u16string_view uri) noexcept {
    std::u16string_view rest = uri.substr(schemeOf(uri).size() + 1);
    rest = rest.substr(0, rest.find_first_of(u"?#"));
    if (!rest.starts_with(u"//"))
        return rest;
    const std::size_t slash = rest.find(u'/', 2);
    return slash == rest.npos ? std::u16string_view() : rest.substr(slash);
}

/// Schemes are ASCII, and upper and lower case are the same.
std::u16string folded(std::u16string_view scheme) {
    std::u16string lower(scheme);
    for (char16_t& unit : lower)
        unit = isLetter(unit) ? unit | 0x20 : unit;
    return lower;
}

class scheme_table {
public:
    void put(std::u16string_view scheme, Any provider) {
        std::lock_guard hold(guard_);
        providers_[folded(scheme)].swap(provider);
        // What stood there before dies with the parameter, after the guard.
    }
    Any find(std::u16string_view scheme) {
        std::lock_guard hold(guard_);
        auto found = providers_.find(folded(scheme));
        return found == providers_.end() ? Any() : found->second;
    }

private:
    std::mutex guard_;
    std::map<std::u16string, Any> providers_;
};

scheme_table& schemes() {
    static scheme_table& table = *new scheme_table;
    return table;
}

}  // namespace

void register_scheme_provider(const String& scheme, const I_Invokable_Generic& provider) {
    schemes().put(scheme.view(), provider);
}

Any load_resource(const String& uri) {
    const std::u16string_view scheme = schemeOf(uri.view());
    const Any provider = schemes().find(scheme);
    if (scheme.empty() || provider.isNone())
        return internal::failure(String(u"Unknown URI scheme: '{}'.").arg(internal::brief(String(scheme))));
    const Any arguments[] = {String(pathOf(uri.view())), uri};
    Any bytes = internal::result_unwrap_lazy(unchecked<I_Invokable_Generic>(provider).invoke(arguments));
    if (internal::is_error_result(bytes) || ByteArray::cast(bytes))
        return bytes;
    return internal::failure(String(u"The provider of the URI scheme '{}' gave no bytes.").arg(String(scheme)));
}

}  // namespace ling
