#include "model/binding.h"

#include "ling/basic_values.h"
#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/hash_containers.h"
#include "ling/list.h"

#include <optional>
#include <utility>

namespace ling::internal {

Any missingArgument(const String& function, const String& parameter) {
    return failure(String(u"Missing argument '{}' of '{}'.").arg(parameter, function));
}

Any superfluousArgument(const String& function, std::size_t parameters, std::span<const Any> arguments,
                        std::size_t receivers) {
    return failure(String(u"Superfluous argument {} of '{}': it takes {}, {} were given.")
                       .arg(arguments[parameters], function, parameters - receivers, arguments.size() - receivers));
}

bool takes_one_position(ParameterMode mode) noexcept {
    return mode == ParameterMode::Ordinary || mode == ParameterMode::PositionalOnly;
}

const Parameter& parameter_of_argument(const Signature& signature, std::size_t index) {
    const Parameter* rest = nullptr;
    for (const Parameter& parameter : signature.parameters()) {
        if (parameter.mode() == ParameterMode::VariadicPositional)
            rest = &parameter;
        else if (index-- == 0)
            return parameter;
    }
    return rest != nullptr ? *rest : signature.parameters().back();
}

namespace {

/// One call being put together: a place for each parameter, filled from positions, names and defaults, in this order.
class argument_binder {
public:
    argument_binder(const String& function, const Signature& signature, std::size_t receivers)
        : function_(function),
          receivers_(receivers),
          parameters_(signature.parameters()),
          places_(parameters_.size()) {}

    /// Each step answers none, or the error that ends the call.
    Any takePositions(std::span<const Any> positional) {
        std::size_t next = 0;
        for (std::size_t i = 0; i < places_.size() && next < positional.size(); ++i) {
            if (mode(i) == ParameterMode::VariadicPositional)
                rest_ = positional.subspan(std::exchange(next, positional.size()));
            else if (takes_one_position(mode(i)))
                places_[i] = positional[next++];
        }
        return next == positional.size() ? Any() : superfluousArgument(function_, next, positional, receivers_);
    }

    Any takeName(const NamedArgument& argument) {
        for (std::size_t i = 0; i < places_.size(); ++i) {
            const bool goesByName = mode(i) == ParameterMode::Ordinary || mode(i) == ParameterMode::NameOnly;
            if (!goesByName || parameters_[i].name() != argument.name)
                continue;
            if (places_[i])
                return repeated(argument.name);
            places_[i] = argument.value;
            return Any();
        }
        return takeOtherName(argument);
    }

    Any fillDefaults() {
        for (std::size_t i = 0; i < places_.size(); ++i) {
            if (places_[i] || mode(i) == ParameterMode::VariadicPositional)
                continue;
            if (mode(i) == ParameterMode::VariadicNamed)
                places_[i] = others_ ? *others_ : Map_Generic();
            else if (parameters_[i].hasDefault())
                places_[i] = parameters_[i].defaultValue();
            else
                return missingArgument(function_, parameters_[i].name());
        }
        return Any();
    }

    void giveTo(std::vector<Any>& bound) {
        bound.reserve(places_.size() + rest_.size());
        for (std::optional<Any>& place : places_)
            if (place)
                bound.push_back(*std::move(place));
        bound.insert(bound.end(), rest_.begin(), rest_.end());
    }

private:
    ParameterMode mode(std::size_t index) const { return parameters_[index].mode(); }
    Any repeated(const String& name) const {
        return failure(String(u"Repeated argument '{}' of '{}'.").arg(name, function_));
    }
    /// A name that no parameter has: one more for "**name", where there is one.
    Any takeOtherName(const NamedArgument& argument) {
        const bool takesOthers = !parameters_.empty() && parameters_.back().mode() == ParameterMode::VariadicNamed;
        if (!takesOthers)
            return failure(String(u"Unknown argument '{}' of '{}'.").arg(brief(argument.name), function_));
        if (!others_)
            others_.emplace();
        const std::size_t before = others_->size();
        (void)others_->set(argument.name, argument.value);
        return others_->size() != before ? Any() : repeated(argument.name);
    }

    const String& function_;
    const std::size_t receivers_;
    const std::vector<Parameter>& parameters_;
    std::vector<std::optional<Any>> places_;
    std::span<const Any> rest_;
    std::optional<Map_Generic> others_;
};

}  // namespace

Any bind_arguments(const String& function, const Signature& signature, std::span<const Any> positional,
                   std::span<const NamedArgument> named, std::vector<Any>& bound, std::size_t receivers) {
    argument_binder binder(function, signature, receivers);
    Any problem = binder.takePositions(positional);
    for (std::size_t i = 0; i < named.size() && !is_error_result(problem); ++i)
        problem = binder.takeName(named[i]);
    if (!is_error_result(problem))
        problem = binder.fillDefaults();
    if (!is_error_result(problem))
        binder.giveTo(bound);
    return problem;
}

Any take_names(const I_Invokable_Generic& function, const I_Map_Generic& named, std::vector<NamedArgument>& pairs) {
    const Any keys = named.keys();
    Result<I_Iterable_Generic> names = I_Iterable_Generic::cast(keys);
    if (!names)
        return is_error_result(keys) ? keys : names.error();
    iteration walk = names->beginImpl();
    while (walk.advance()) {
        Result<String> name = String::cast(walk.item());
        if (!name)
            return failure(String(u"Argument names of '{}' must be text, not {}.").arg(nameOf(function), walk.item()));
        Any value = result_unwrap_lazy(named.get(walk.item()));
        if (is_error_result(value))
            return value;
        pairs.push_back({*std::move(name), std::move(value)});
    }
    return walk.error();
}

Any object_value::invokeNamed(std::span<const Any> positional, std::span<const NamedArgument> named) {
    const Any self = Any::share(this);
    const auto& function = unchecked<I_Invokable_Generic>(self);
    Result<Signature> signature = function.signature();
    if (!signature)  // Nothing is known of the parameters, so names cannot be given a place.
        return signature.error();
    std::vector<Any> arguments;
    Any problem = bind_arguments(nameOf(function), *signature, positional, named, arguments);
    return is_error_result(problem) ? problem : invoke(arguments);
}

}  // namespace ling::internal
