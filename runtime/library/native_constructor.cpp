#include "library/native_constructor.h"

#include "ling/basic_values.h"
#include "ling/error.h"

namespace ling::internal {

namespace {

/// The method `$__init__` of a class whose values are made whole.
class object_value_no_initialiser final : public object_value_native_function {
public:
    explicit object_value_no_initialiser(Signature signature)
        : object_value_native_function(String(Any::$__init__.utf8()), std::move(signature),
                                       String(u"The arguments that calling the class takes."), false) {}

protected:
    Any call(std::span<const Any> arguments) override {
        return failure(
            String(u"A value of class '{}' cannot be initialised again.").arg(qualname(raw_class_of(arguments[0]))));
    }
};

/// A class derived from a native one may initialise its instances itself.
bool initialisesItself(const Class_Generic& called, const Class_Generic& native) {
    const found_member initialiser = called.record()->findMethod(Any::$__init__);
    return initialiser && initialiser.definer != native.record();
}

}  // namespace

Any construct_by_initialiser(const Class_Generic& called, std::span<const Any> arguments) {
    Any instance = called.allocateInstance();
    if (is_error_result(instance))
        return instance;
    Any outcome = instance.callMethod(Any::$__init__, arguments);
    return is_error_result(outcome) ? outcome : instance;
}

Any native_constructor::construct(const Class_Generic& called, std::span<const Any> arguments) const {
    if (called == cls)
        return make.invoke(arguments);
    if (initialisesItself(called, cls))
        return construct_by_initialiser(called, arguments);
    Any value = make.invoke(arguments);
    if (is_error_result(value) || copy == nullptr)
        return value;
    return Any::adopt(copy(value, called.record()));
}

object_value* native_constructor::allocate(object_value_class* called) const {
    if (copy == nullptr)
        return failure(String(u"The class '{}' has no instances of its own.").arg(called->name())).take();
    return called == cls.record() ? Any(initial).take() : copy(initial, called);
}

FunctionCL_Generic native_constructor::initialiser() const {
    const Result<Signature> known = make.signature();
    std::vector<Parameter> parameters{Parameter(u"self", Type(cls))};
    parameters.insert(parameters.end(), known->parameters().begin(), known->parameters().end());
    return FunctionCL_Generic::adopt(
        new object_value_no_initialiser(Signature(std::move(parameters), None::getType())));
}

}  // namespace ling::internal
