#include "model/binding.h"

#include "ling/basic_values.h"
#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/hash_containers.h"
#include "ling/list.h"

#include <optional>

namespace ling::internal {

Any missingArgument(const String& function, const String& parameter) {
    return failure(String(u"Missing argument '{}' of '{}'.").arg(parameter, function));
}

Any superfluousArgument(const String& function, std::size_t parameters, std::span<const Any> arguments) {
    return failure(String(u"Superfluous argument {} of '{}': it takes {}, {} were given.")
                       .arg(display(arguments[parameters]), function, parameters, arguments.size()));
}

namespace {

/// One call being put together: a place for each parameter, filled from positions, names and defaults, in this order.
class argument_binder {
public:
    argument_binder(const String& function, const Signature& signature)
        : function_(function), signature_(signature), places_(signature.parameters().size()) {}

    /// Each step answers none, or the error that ends the call.
    Any takePositions(std::span<const Any> positional) {
        std::size_t next = 0;
        for (std::size_t i = 0; i < places_.size() && next < positional.size(); ++i) {
            const ParameterMode mode = parameter(i).mode();
            if (mode == ParameterMode::VariadicPositional) {
                rest_.assign(positional.begin() + static_cast<std::ptrdiff_t>(next), positional.end());
                return Any();
            }
            if (mode == ParameterMode::NameOnly || mode == ParameterMode::VariadicNamed)
                break;
            places_[i] = positional[next++];
        }
        return next == positional.size() ? Any() : superfluousArgument(function_, next, positional);
    }

    Any takeName(const Any& key, const Any& value) {
        Result<String> name = String::cast(key);
        if (!name)
            return failure(String(u"Argument names of '{}' must be text, not {}.").arg(function_, display(key)));
        for (std::size_t i = 0; i < places_.size(); ++i)
            if (takesName(parameter(i).mode()) && parameter(i).name() == *name)
                return place(i, value);
        return failure(String(u"Unknown argument '{}' of '{}'.").arg(*name, function_));
    }

    Any fillDefaults() {
        for (std::size_t i = 0; i < places_.size(); ++i) {
            const ParameterMode mode = parameter(i).mode();
            if (places_[i] || mode == ParameterMode::VariadicPositional || mode == ParameterMode::VariadicNamed)
                continue;
            if (parameter(i).hasDefault() && mode == ParameterMode::NameOnly)
                continue;  // It has no position to be passed in: the callee fills it.
            if (!parameter(i).hasDefault())
                return missingArgument(function_, parameter(i).name());
            places_[i] = parameter(i).defaultValue();
        }
        return Any();
    }

    std::vector<Any> arguments() const {
        std::vector<Any> all;
        for (const std::optional<Any>& place : places_)
            if (place)
                all.push_back(*place);
        all.insert(all.end(), rest_.begin(), rest_.end());
        return all;
    }

private:
    const Parameter& parameter(std::size_t index) const { return signature_.parameters()[index]; }
    static bool takesName(ParameterMode mode) {
        return mode == ParameterMode::Ordinary || mode == ParameterMode::NameOnly;
    }
    Any place(std::size_t index, const Any& value) {
        if (places_[index])
            return failure(String(u"Repeated argument '{}' of '{}'.").arg(parameter(index).name(), function_));
        places_[index] = value;
        return Any();
    }

    const String function_;
    const Signature signature_;
    std::vector<std::optional<Any>> places_;
    std::vector<Any> rest_;
};

Any takeNames(argument_binder& binder, const I_Map_Generic& named) {
    const Any keys = named.keys();
    Result<I_Iterable_Generic> names = I_Iterable_Generic::cast(keys);
    if (!names)
        return is_error_result(keys) ? keys : names.error();
    iteration walk = names->beginImpl();
    while (walk.advance()) {
        const Any value = result_unwrap_lazy(named.get(walk.item()));
        if (is_error_result(value))
            return value;
        const Any outcome = binder.takeName(walk.item(), value);
        if (is_error_result(outcome))
            return outcome;
    }
    return walk.error();
}

}  // namespace

Any invoke_by_name(const I_Invokable_Generic& function, std::span<const Any> positional, const I_Map_Generic& named) {
    Result<Signature> signature = function.signature();
    if (!signature) {
        // Nothing is known of the parameters, so names cannot be given a place.
        Result<Integer> count = named.length();
        return count && count->value() == 0 ? function.invoke(positional) : signature.error();
    }
    argument_binder binder(nameOf(function), *signature);
    Any outcome = binder.takePositions(positional);
    if (!is_error_result(outcome))
        outcome = takeNames(binder, named);
    if (!is_error_result(outcome))
        outcome = binder.fillDefaults();
    if (is_error_result(outcome))
        return outcome;
    return function.invoke(binder.arguments());
}

}  // namespace ling::internal
