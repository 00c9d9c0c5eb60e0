#include "ling/identifier.h"

#include "ling/byte_array.h"
#include "ling/string.h"

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>

namespace ling {

namespace internal {

namespace {

/// The record of a name whose texts somebody else keeps.
identifier_data describe(std::string_view utf8, const String& name) noexcept {
    // The bits of a text's hash are mixed once here, since tables of members use the low ones as they are.
    const std::uint64_t mixed = std::hash<std::string_view>{}(utf8)*0x9E3779B97F4A7C15ULL;
    return {utf8, static_cast<std::size_t>(mixed ^ (mixed >> 32)), &name, utf8.starts_with('_')};
}

/// Every name that was ever declared as that of a member, or written as one in native code. Never shrinks: such names
/// are few, and whoever merely looks for one (`lookup_name`) adds nothing.
class identifier_table {
public:
    const identifier_data* find(std::string_view utf8) noexcept {
        std::shared_lock reading(guard_);
        auto found = names_.find(utf8);
        return found == names_.end() ? nullptr : found->second;
    }

    const identifier_data& findOrMake(std::string_view utf8) {
        if (const identifier_data* present = find(utf8))
            return *present;
        std::unique_lock writing(guard_);
        if (auto found = names_.find(utf8); found != names_.end())
            return *found->second;
        const identifier_data* made = make(utf8);
        names_.emplace(made->utf8, made);
        return *made;
    }

private:
    static const identifier_data* make(std::string_view utf8) {
        char* text = new char[utf8.size() + 1];
        *std::copy(utf8.begin(), utf8.end(), text) = '\0';
        return new identifier_data(describe(std::string_view(text, utf8.size()), *new String(String::fromUTF8(utf8))));
    }

    std::shared_mutex guard_;
    std::unordered_map<std::string_view, const identifier_data*> names_;
};

identifier_table& identifiers() {
    static identifier_table& table = *new identifier_table;
    return table;
}

}  // namespace

const identifier_data& intern(std::string_view utf8) { return identifiers().findOrMake(utf8); }
const identifier_data* find_interned(std::string_view utf8) noexcept { return identifiers().find(utf8); }

struct lookup_name::unknown_name {
    unknown_name(std::string_view given, const String& text)
        : utf8(given), name(text), record{utf8, 0, &name, utf8.starts_with('_')} {}
    const std::string utf8;
    const String name;
    const identifier_data record;
};

lookup_name::lookup_name(std::string_view utf8) : data_(find_interned(utf8)) {
    if (data_ == nullptr)
        makeUnknown(utf8, String::fromUTF8(utf8));
}

lookup_name::lookup_name(const String& name) : data_(find_interned(name)) {
    if (data_ == nullptr)
        makeUnknown(name.toStdString(), name);
}

lookup_name::~lookup_name() = default;

void lookup_name::makeUnknown(std::string_view utf8, const String& name) {
    unknown_ = std::make_unique<unknown_name>(utf8, name);
    data_ = &unknown_->record;
}

}  // namespace internal

method_ident_untyped::method_ident_untyped(const ByteArray& utf8) : identifier(internal::intern(utf8.view())) {}
property_ident_untyped::property_ident_untyped(const ByteArray& utf8) : identifier(internal::intern(utf8.view())) {}
field_ident_untyped::field_ident_untyped(const ByteArray& utf8) : identifier(internal::intern(utf8.view())) {}

}  // namespace ling
