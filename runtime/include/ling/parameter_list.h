#pragma once

#include "ling/any.h"
#include "ling/function.h"

#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace ling {

/// What a native function says about its parameters, whose types are those of its code:
///
///     "price, percent"                          names alone
///     {"price", {"percent", 10}}                a default value
///     {"price", "*", {"percent", 10}}           after "*", a parameter is given by name only
///     {"price", "/", "percent"}                 before "/", by position only
///
/// A parameter without a name comes out as "arg1", "arg2", ...
class LING_EXPORT parameter_list {
public:
    class entry {
    public:
        template <internal::utf8_text T>
        entry(const T& name) : name_(name) {}
        template <internal::utf8_text T>
        entry(const T& name, const Any& defaultValue) : name_(name), default_(defaultValue) {}

    private:
        friend class parameter_list;
        std::string_view name_;
        std::optional<Any> default_;
    };

    template <internal::utf8_text T>
    parameter_list(const T& names) : parameter_list(split(std::string_view(names))) {}
    parameter_list(std::initializer_list<entry> entries);

    /// The signature of code whose parameters are of `types`, the last one taking the rest where `rest` says so.
    Signature signature(std::span<const Type> types, bool rest, bool withReceiver, const Type& result) const;

private:
    struct named {
        String name;
        ParameterMode mode;
        std::optional<Any> defaultValue;
    };
    static parameter_list split(std::string_view names);
    parameter_list() = default;
    void add(const String& written, const std::optional<Any>& defaultValue);

    std::vector<named> parameters_;
    ParameterMode mode_ = ParameterMode::Ordinary;
};

}  // namespace ling
