#include "ling/parameter_list.h"

#include "ling/property.h"

namespace ling {

parameter_list::parameter_list(std::initializer_list<entry> entries) {
    for (const entry& one : entries)
        add(String(one.name_).trimmed(), one.default_);
}

parameter_list parameter_list::split(std::string_view names) {
    parameter_list list;
    const String text = String(names).trimmed();
    if (!text.isEmpty())
        for (const String& name : text.split(u","))
            list.add(name.trimmed(), std::nullopt);
    return list;
}

void parameter_list::add(const String& written, const std::optional<Any>& defaultValue) {
    if (written == u"*") {
        mode_ = ParameterMode::NameOnly;
    } else if (written == u"/") {
        for (named& before : parameters_)
            before.mode = ParameterMode::PositionalOnly;
    } else {
        parameters_.push_back({written, mode_, defaultValue});
    }
}

Signature parameter_list::signature(std::span<const Type> types, bool rest, bool withReceiver,
                                    const Type& result) const {
    std::vector<Parameter> parameters;
    if (withReceiver && !types.empty())
        parameters.emplace_back(u"self", types.front());
    const std::span<const Type> own = types.subspan(parameters.size());
    if (parameters_.size() > own.size())
        internal::assertion_log(
            String(u"[make_function] The parameter '{}' is not one of the code.").arg(parameters_[own.size()].name));
    for (std::size_t i = 0; i < own.size(); ++i) {
        const bool known = i < parameters_.size();
        const String name = known && !parameters_[i].name.isEmpty() ? parameters_[i].name : String(u"arg{}").arg(i + 1);
        ParameterMode mode = known ? parameters_[i].mode : mode_;
        if (rest && i + 1 == own.size())
            mode = ParameterMode::VariadicPositional;
        if (known && parameters_[i].defaultValue)
            parameters.emplace_back(name, own[i], mode, *parameters_[i].defaultValue);
        else
            parameters.emplace_back(name, own[i], mode);
    }
    return Signature(std::move(parameters), result);
}

}  // namespace ling
