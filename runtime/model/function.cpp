#include "ling/function.h"

#include "ling/class_builder.h"
#include "ling/class_record.h"
#include "ling/error.h"
#include "ling/indirect_values.h"
#include "ling/interfaces.h"
#include "ling/list.h"
#include "ling/members.h"
#include "model/argument_frame.h"
#include "model/binding.h"
#include "model/define.h"

#include <algorithm>
#include <mutex>

namespace ling {

namespace internal {

Any object_value_function::setParameterDefaults(std::span<const Any>) {
    return failure(String(u"The defaults of '{}' cannot be changed.").arg(name()));
}

Class_Generic object_value_function::definingClass() const {
    Any known;
    {
        std::lock_guard hold(guard());
        known = definingClass_;
    }
    return unchecked<Class_Generic>(unwrap(known));
}

void object_value_function::setDefiningClass(object_value_class* klass) {
    if (!definingClass().isNone())
        return;
    Any known = Weak_Generic(Class_Generic::share(klass));
    std::lock_guard hold(guard());
    definingClass_.swap(known);
    // The reference to a class that is gone dies after the guard.
}

namespace {

bool hasMode(const Signature& signature, std::initializer_list<ParameterMode> modes) {
    return std::ranges::any_of(signature.parameters(), [&](const Parameter& parameter) {
        return std::ranges::find(modes, parameter.mode()) != modes.end();
    });
}
bool isVariadic(const Signature& signature) { return hasMode(signature, {ParameterMode::VariadicPositional}); }

constexpr std::size_t kNeverExact = static_cast<std::size_t>(-1);

}  // namespace

object_value_native_function::object_value_native_function(String name, Signature signature, String doc,
                                                           bool independent)
    : name_(std::move(name)),
      doc_(std::move(doc)),
      signature_(std::move(signature)),
      byPositionAlone_(!hasMode(signature_, {ParameterMode::NameOnly, ParameterMode::VariadicNamed})),
      exactCount_(byPositionAlone_ && !isVariadic(signature_) ? signature_.parameters().size() : kNeverExact),
      independent_(independent) {}

Result<Signature> object_value_native_function::signature() const {
    std::lock_guard hold(guard());
    return signature_;
}

Any object_value_native_function::invoke(std::span<const Any> arguments) {
    return contain([&] { return isExact(arguments) ? call(arguments) : invokeAdjusted(arguments); });
}

Any object_value_native_function::setParameterDefaults(std::span<const Any> defaults) {
    Signature present = *signature();
    std::vector<Parameter> parameters = present.parameters();
    std::vector<Parameter*> positional;
    for (Parameter& parameter : parameters)
        if (takes_one_position(parameter.mode()))
            positional.push_back(&parameter);
    if (defaults.size() > positional.size())
        return failure(String(u"Too many defaults for '{}': {} for {} parameters.")
                           .arg(name_, defaults.size(), positional.size()));
    const std::size_t first = positional.size() - defaults.size();
    for (std::size_t i = 0; i < defaults.size(); ++i)
        *positional[first + i] = positional[first + i]->withDefault(defaults[i]);
    Signature changed(std::move(parameters), present.resultType());
    std::lock_guard hold(guard());
    signature_.swap(changed);
    return Any();
    // The signature that was replaced dies after the guard: it is declared before it.
}

Any object_value_native_function::invokeNamed(std::span<const Any> positional, std::span<const NamedArgument> named) {
    std::vector<Any> arguments;
    Any problem =
        bind_arguments(calledName(positional), *signature(), positional, named, arguments, independent_ ? 0 : 1);
    return is_error_result(problem) ? problem : call(arguments);
}

Any object_value_native_function::invokeAdjusted(std::span<const Any> arguments) {
    if (!byPositionAlone_)
        return invokeNamed(arguments, {});
    const Signature known = *signature();
    const std::vector<Parameter>& parameters = known.parameters();
    const std::size_t named = parameters.size() - (isVariadic(known) ? 1 : 0);
    if (arguments.size() > named)
        return named == parameters.size()
                   ? superfluousArgument(calledName(arguments), named, arguments, independent_ ? 0 : 1)
                   : call(arguments);
    argument_frame frame(named);
    frame.addAll(arguments);
    for (std::size_t i = arguments.size(); i < named; ++i) {
        if (!parameters[i].hasDefault())
            return missingArgument(calledName(arguments), parameters[i].name());
        frame.add(parameters[i].defaultValue());
    }
    return call(frame);
}

/// The name by which the caller called it: an initialiser by that of the class.
String object_value_native_function::calledName(std::span<const Any> arguments) const {
    const bool initialises = !independent_ && !arguments.empty() && name_ == Any::$__init__.name();
    return initialises ? raw_class_of(arguments.front()).name() : name_;
}

Any object_value_native_function::argumentError(std::size_t index, std::span<const Any> arguments,
                                                const Any& reason) const {
    if (is_error_result(reason))
        return reason;
    const Signature known = *signature();
    const Parameter& parameter = parameter_of_argument(known, index);
    const Error error(String(u"Argument '{}' of '{}' must be of type '{}', not '{}'.")
                          .arg(parameter.name(), calledName(arguments), parameter.type().toString(),
                               qualname(raw_class_of(arguments[index]))),
                      true);
    if (!reason.isNone())
        error.setCause(reason);
    return error;
}

namespace {

/// A function with its leading arguments already supplied.
///
/// One that binds further arguments of another shares it, and goes straight to what both call: bound functions can be
/// bound again and again, and each binding takes as much memory as its own arguments.
class object_value_bound_function final : public object_value_function {
public:
    object_value_bound_function(const I_Invokable_Generic& target, std::span<const Any> leading)
        : before_(dynamic_cast<const object_value_bound_function*>(target.object()) == nullptr ? Any() : Any(target)),
          target_(before_.isNone() ? target : before()->target_),
          leading_(leading.begin(), leading.end()),
          count_(leading.size() + (before_.isNone() ? 0 : before()->count_)) {}

    Any invoke(std::span<const Any> arguments) override {
        return contain([&] {
            argument_frame frame(count_ + arguments.size());
            addLeading(frame);
            frame.addAll(arguments);
            return target_.invoke(frame);
        });
    }
    Any invokeNamed(std::span<const Any> positional, std::span<const NamedArgument> named) override {
        argument_frame frame(count_ + positional.size());
        addLeading(frame);
        frame.addAll(positional);
        return target_.invokeWith(frame, named);
    }
    String name() const override { return nameOf(target_); }
    String doc() const override { return docOf(target_); }
    bool isIndependent() const noexcept override { return true; }
    function_identity identity() const noexcept override {
        return {before_.isNone() ? target_.object() : before_.object(), leading_};
    }

    Result<Signature> signature() const override {
        Result<Signature> whole = target_.signature();
        if (!whole)
            return whole;
        const std::vector<Parameter>& all = whole->parameters();
        std::vector<Parameter> open;
        for (std::size_t i = 0; i < all.size(); ++i)
            if (i >= count_ || !takes_one_position(all[i].mode()))
                open.push_back(all[i]);
        return Signature(std::move(open), whole->resultType());
    }

private:
    void addLeading(argument_frame& frame) const {
        if (before_.isNone()) {
            frame.addAll(leading_);
            return;
        }
        std::vector<const object_value_bound_function*> chain;
        for (const object_value_bound_function* bound = this; bound != nullptr; bound = bound->before())
            chain.push_back(bound);
        for (auto bound = chain.rbegin(); bound != chain.rend(); ++bound)
            frame.addAll((*bound)->leading_);
    }
    /// Null for the first of a chain.
    const object_value_bound_function* before() const noexcept {
        return static_cast<const object_value_bound_function*>(before_.object());
    }

    const Any before_;                  // The bound function whose arguments come first.
    const I_Invokable_Generic target_;  // What all of the chain call: never a bound function.
    const std::vector<Any> leading_;
    const std::size_t count_;  // With those of the functions before.
};

object_value_function* functionRecord(const Any& value) noexcept {
    return value.is(Kind::Function) ? static_cast<object_value_function*>(value.object()) : nullptr;
}

}  // namespace

String nameOf(const Any& invokable) {
    if (const object_value_function* function = functionRecord(invokable))
        return function->name();
    const Any name = invokable.propertyValue(I_HasName::$$name);
    return String::cast(name).valueOr(qualname(invokable));
}

String docOf(const Any& invokable) {
    if (const object_value_function* function = functionRecord(invokable))
        return function->doc();
    return String::cast(invokable.propertyValue(I_HasDoc::$$doc)).valueOr(String());
}

}  // namespace internal

using internal::functionRecord;
using internal::nameOf;

Any I_Invokable_Generic::notInvokable() const {
    return internal::failure(String(u"The value is not callable: {}.").arg(*this));
}

Any I_Invokable_Generic::invokeWith(const I_Sequence_Generic& arguments) const {
    return internal::contain([&] {
        Result<List_Generic> list = arguments.collectImpl();
        return list ? invoke(list->copyItems()) : list.error();
    });
}

Any I_Invokable_Generic::invokeWith(const I_Map_Generic& arguments) const { return invokeWith({}, arguments); }

Any I_Invokable_Generic::invokeWith(std::span<const Any> positional, const I_Map_Generic& named) const {
    return internal::contain([&] {
        std::vector<NamedArgument> pairs;
        Any problem = internal::take_names(*this, named, pairs);
        return internal::is_error_result(problem) ? problem : invokeWith(positional, pairs);
    });
}

Any I_Invokable_Generic::invokeWith(std::span<const Any> positional, std::span<const NamedArgument> named) const {
    return internal::contain([&] {
        return named.empty() ? invoke(positional)
               : isHeap()    ? heapObject()->invokeNamed(positional, named)
                             : notInvokable();
    });
}

Result<Signature> I_Invokable_Generic::signature() const {
    if (const internal::object_value_function* function = functionRecord(*this))
        return function->signature();
    const Any answer = internal::result_unwrap_lazy(propertyValue($$signature));
    return internal::is_error_result(answer) ? Result<Signature>::failure(answer) : Signature::cast(answer);
}

Type I_Invokable_Generic::resultType() const {
    if (Result<Class_Generic> cls = Class_Generic::cast(*this))
        return Type(*cls);
    if (functionRecord(*this) == nullptr)
        if (Result<Type> type = Type::cast(propertyValue($$resultType)))
            return *type;
    Result<Signature> known = signature();
    return known ? known->resultType() : Untyped::getType();
}

std::int64_t I_Invokable_Generic::parameterCount() const {
    if (functionRecord(*this) == nullptr)
        if (Result<Integer> count = Integer::cast(propertyValue($$parameterCount)))
            return count->value();
    Result<Signature> known = signature();
    return known ? static_cast<std::int64_t>(known->parameters().size()) : 0;
}

bool I_Invokable_Generic::isIndependent() const {
    if (const internal::object_value_function* function = functionRecord(*this))
        return function->isIndependent();
    // What is called without being a function of the runtime brings its own receiver, unless it says otherwise.
    Result<Boolean> answer = Boolean::cast(propertyValue($$independent));
    return !answer || answer->value();
}

I_Invokable_Generic I_Invokable_Generic::bindArgsImpl(std::span<const Any> leading) const {
    return FunctionCL_Generic::adopt(new internal::object_value_bound_function(*this, leading));
}

Result<I_Invokable_Generic> I_Invokable_Generic::cast(const Any& value) {
    if (functionRecord(value) != nullptr)
        return unchecked<I_Invokable_Generic>(value);
    return internal::cast_handle<I_Invokable_Generic>(value);
}

const Class_Generic& I_Invokable_Generic::getClass() {
    static const Class_Generic& cls =
        *new Class_Generic(internal::native_class("I_Invokable", {I_HasName::getClass(), I_HasDoc::getClass()}));
    return cls;
}
Type I_Invokable_Generic::getType() { return Type(getClass()); }

const method_ident_untyped I_Invokable_Generic::$invoke{"invoke"};
const property_ident_untyped I_Invokable_Generic::$$signature{"signature"};
const property_ident_untyped I_Invokable_Generic::$$resultType{"resultType"};
const property_ident_untyped I_Invokable_Generic::$$parameterCount{"parameterCount"};
const property_ident_untyped I_Invokable_Generic::$$independent{"independent"};
const property_ident_untyped I_Invokable_Generic::$$definingClass{"definingClass"};
const property_ident_untyped I_Invokable_Generic::$$defaults{"defaults"};

Any FunctionCL_Generic::setParameterDefaults(const List_Generic& defaults) const {
    return setParameterDefaults(std::span<const Any>(defaults.copyItems()));
}
Result<FunctionCL_Generic> FunctionCL_Generic::cast(const Any& value) {
    if (functionRecord(value) != nullptr)
        return unchecked<FunctionCL_Generic>(value);
    return Result<FunctionCL_Generic>::failure(internal::cast_error(value, getClass()));
}
const Class_Generic& FunctionCL_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(
        internal::runtime_made_class("Function", {I_Invokable_Generic::getClass(), I_Immutable::getClass()}));
    return cls;
}
Type FunctionCL_Generic::getType() { return Type(getClass()); }

namespace internal {

namespace {

List_Generic defaultsOf(const Signature& signature) {
    List_Generic defaults;
    for (const Parameter& parameter : signature.parameters())
        if (takes_one_position(parameter.mode()) && parameter.hasDefault())
            defaults.append(parameter.defaultValue());
    return defaults;
}

Any definingClassOf(const FunctionCL_Generic& function) { return function.record()->definingClass(); }

void defineFunctionMembers() {
    extend_class(FunctionCL_Generic::getClass())
        .doc("A function of the runtime.")
        .property(I_HasName::$$name, property_builder()
                                         .getter([](const FunctionCL_Generic& self) { return nameOf(self); })
                                         .doc("The name of the function."))
        .property(I_HasDoc::$$doc, property_builder()
                                       .getter([](const FunctionCL_Generic& self) { return docOf(self); })
                                       .doc("What the function does."))
        .property(I_Invokable_Generic::$$signature,
                  property_builder()
                      .getter([](const FunctionCL_Generic& self) { return self.signature(); })
                      .doc("Its parameters and the type of its result."))
        .property(I_Invokable_Generic::$$defaults,
                  property_builder()
                      .getter([](const FunctionCL_Generic& self) -> Any {
                          Result<Signature> signature = self.signature();
                          return signature ? defaultsOf(*signature) : signature.error();
                      })
                      .setter([](const FunctionCL_Generic& self, const List_Generic& defaults) {
                          return self.setParameterDefaults(defaults);
                      })
                      .doc("The default values of its last parameters."))
        .property(I_Invokable_Generic::$$definingClass,
                  property_builder().getter(&definingClassOf).doc("The class that declares it as a method, or none."))
        .build();
}

void defineInvokableMembers() {
    extend_class(I_Invokable_Generic::getClass())
        .doc("What can be called.")
        .method(
            "invokeWith", "arguments",
            [](const I_Invokable_Generic& self, const Any& arguments) -> Any {
                if (Result<I_Map_Generic> named = I_Map_Generic::cast(arguments))
                    return self.invokeWith(*named);
                Result<I_Sequence_Generic> positional = I_Sequence_Generic::cast(arguments);
                return positional ? self.invokeWith(*positional) : positional.error();
            },
            "Calls it with a list of arguments, or with a map of arguments by name.")
        .method(
            "bindArgs", "arguments",
            [](const I_Invokable_Generic& self, std::span<const Any> leading) { return self.bindArgsImpl(leading); },
            "A function that calls this one with the given arguments in front of its own.")
        .property(I_Invokable_Generic::$$resultType,
                  property_builder()
                      .getter([](const I_Invokable_Generic& self) -> Any {
                          Result<Signature> signature =
                              Signature::cast(self.propertyValue(I_Invokable_Generic::$$signature));
                          return signature ? signature->resultType() : Untyped::getType();
                      })
                      .doc("The type of its result."))
        .property(I_Invokable_Generic::$$parameterCount,
                  property_builder()
                      .getter([](const I_Invokable_Generic& self) -> Any {
                          Result<Signature> signature =
                              Signature::cast(self.propertyValue(I_Invokable_Generic::$$signature));
                          return signature ? Any(signature->parameters().size()) : Any(0);
                      })
                      .doc("How many parameters it has."))
        .build();
    extend_class(FunctionCL_Generic::getClass())
        .property(I_Invokable_Generic::$$independent,
                  property_builder()
                      .getter([](const FunctionCL_Generic& self) { return self.isIndependent(); })
                      .doc("Whether it is called without a receiver in front."))
        .build();
}

void defineSignatureMembers() {
    extend_class(Signature::getClass())
        .doc("The parameters of a function and the type of its result.")
        .property("parameters",
                  property_builder()
                      .getter([](const Signature& self) {
                          return List_Generic(std::vector<Any>(self.parameters().begin(), self.parameters().end()));
                      })
                      .doc("The parameters, in order."))
        .property("resultType", property_builder()
                                    .getter([](const Signature& self) { return self.resultType(); })
                                    .doc("The type of the result."))
        .method(Any::$__display__, "", [](const Signature& self) { return self.toString(); })
        .build();
    extend_class(Parameter::getClass())
        .doc("One parameter of a function.")
        .property(I_HasName::$$name, property_builder()
                                         .getter([](const Parameter& self) { return self.name(); })
                                         .doc("The name of the parameter."))
        .property("type", property_builder()
                              .getter([](const Parameter& self) { return self.type(); })
                              .doc("The type of values it accepts."))
        .property("hasDefault", property_builder()
                                    .getter([](const Parameter& self) { return self.hasDefault(); })
                                    .doc("Whether it may be left out."))
        .property("defaultValue", property_builder()
                                      .getter([](const Parameter& self) { return self.defaultValue(); })
                                      .doc("The value it has when it is left out, or none."))
        .method(Any::$__display__, "",
                [](const Parameter& self) { return self.toString(kSignatureTypes | kSignatureDefaults); })
        .build();
}

}  // namespace

void define_function_members() {
    defineInvokableMembers();
    defineFunctionMembers();
    defineSignatureMembers();
}

}  // namespace internal

}  // namespace ling
