#include "services/module_name.h"

namespace ling::internal {

bool is_module_name(const String& name) noexcept {
    const std::u16string_view text = name.view();
    if (text.empty() || text.front() == u'.' || text.back() == u'.')
        return false;
    return name.isWellFormed() && text.find(u"..") == text.npos && text.find(u'\0') == text.npos;
}

String parent_name(const String& name) {
    const std::int64_t dot = name.lastIndexOf(u".");
    return dot < 0 ? String() : String(name.view().substr(0, static_cast<std::size_t>(dot)));
}

String last_part(const String& name) {
    const std::int64_t dot = name.lastIndexOf(u".");
    return dot < 0 ? name : String(name.view().substr(static_cast<std::size_t>(dot) + 1));
}

}  // namespace ling::internal
