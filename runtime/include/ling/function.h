#pragma once

#include "ling/any.h"
#include "ling/result.h"
#include "ling/string.h"
#include "ling/type.h"

#include <span>
#include <vector>

namespace ling {

/// How an argument reaches a parameter.
///
/// A callee that takes arguments by position alone (native code, a method `$invoke`) is handed one value for each
/// parameter in the order of the signature, defaults filled in, a map of names for "**name", and after them the
/// positions that "*name" takes, wherever in the signature that stands.
enum class ParameterMode : std::uint8_t {
    Ordinary,            ///< By position or by name.
    PositionalOnly,      ///< By position.
    VariadicPositional,  ///< Takes all positions that remain; shown as "*name".
    NameOnly,            ///< By name.
    VariadicNamed,       ///< Takes all names that remain; shown as "**name".
};

/// One parameter of a signature: an immutable value.
class LING_EXPORT Parameter : public Any {
public:
    explicit Parameter(const String& name, const Type& type = Untyped::getType(),
                       ParameterMode mode = ParameterMode::Ordinary);
    Parameter(const String& name, const Type& type, ParameterMode mode, const Any& defaultValue);

    String name() const;
    Type type() const;
    ParameterMode mode() const noexcept;
    bool hasDefault() const noexcept;
    Any defaultValue() const;
    /// The same parameter with a default, which may be none, in the place of the one it had.
    Parameter withDefault(const Any& value) const;
    String toString(unsigned flags) const;

    static Result<Parameter> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

/// What `Signature::toString` shows beyond the names. The numbers are part of the contract with plug-ins.
enum SignatureFormat : unsigned {
    kSignatureTypes = 1,     ///< The type behind each parameter's name.
    kSignatureDefaults = 2,  ///< The default values.
    kSignatureResult = 16,   ///< The type of the result.
};

/// Parameters, in order, and the type of the result: an immutable value.
class LING_EXPORT Signature : public Any {
public:
    Signature(std::vector<Parameter> parameters, const Type& resultType);

    const std::vector<Parameter>& parameters() const noexcept;
    Type resultType() const;
    /// "(code: String, locals: I_Map = {}) -> Any". Untyped types are left out.
    String toString(unsigned flags = kSignatureTypes | kSignatureDefaults | kSignatureResult) const;

    static Result<Signature> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

/// One argument of a call by name.
struct NamedArgument {
    String name;
    Any value;
};

/// Anything that can be called: functions, classes, and objects whose class implements `$invoke`.
///
/// Every call answers a value or an error result, which names the function and the parameter when the arguments do
/// not fit. No lock of the runtime is held while the callee runs.
class LING_EXPORT I_Invokable_Generic : public Any {
public:
    I_Invokable_Generic() noexcept = default;  ///< Nothing to call: none.

    /// By position. Builds no list; allocates nothing of its own.
    Any invoke(std::span<const Any> arguments) const {
        return isHeap() ? heapObject()->invoke(arguments) : notInvokable();
    }
    template <class... Arguments>
    Any operator()(const Arguments&... arguments) const {
        if constexpr (sizeof...(Arguments) == 0) {
            return invoke({});
        } else {
            const Any list[] = {Any(arguments)...};
            return invoke(list);
        }
    }
    /// By position, from a sequence (a snapshot is taken), or by name, from a map of names.
    Any invokeWith(const I_Sequence_Generic& arguments) const;
    Any invokeWith(const I_Map_Generic& arguments) const;
    /// Both: positions first, then names for what they left open. A callee of another language gets the names as its
    /// own kind of named arguments, and what is left out is its business; every other has them bound by its signature.
    Any invokeWith(std::span<const Any> positional, const I_Map_Generic& named) const;
    Any invokeWith(std::span<const Any> positional, std::span<const NamedArgument> named) const;

    Result<Signature> signature() const;
    Type resultType() const;  ///< Untyped when there is no signature. For a class: the type of its instances.
    std::int64_t parameterCount() const;
    /// True when calling needs no receiver in front: a free function, a class-level method, a bound method.
    bool isIndependent() const;
    /// A function that calls this one with `leading` in front of its own arguments.
    I_Invokable_Generic bindArgsImpl(std::span<const Any> leading) const;
    template <class... Arguments>
    I_Invokable_Generic bindArgs(const Arguments&... arguments) const {
        const Any list[] = {Any(arguments)...};
        return bindArgsImpl(list);
    }

    static Result<I_Invokable_Generic> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();

    static const method_ident_untyped $invoke;  ///< (self, arguments: a list) -> the result
    static const property_ident_untyped $$signature, $$resultType, $$parameterCount, $$independent, $$definingClass;
    static const property_ident_untyped $$defaults;

protected:
    explicit I_Invokable_Generic(Any&& value) noexcept : Any(std::move(value)) {}
    Any notInvokable() const;
};

template <class Returned>
class I_Invokable : public I_Invokable_Generic {
public:
    I_Invokable(const I_Invokable_Generic& function) : I_Invokable_Generic(function) {}
    static Result<I_Invokable> cast(const Any& value) {
        const Result<I_Invokable_Generic> function = I_Invokable_Generic::cast(value);
        return function ? Result<I_Invokable>(*function) : Result<I_Invokable>::failure(function.error());
    }
};

namespace internal {

/// What a function is known by: two functions are equal when both parts are the same, and hash by them. Borrowed.
struct function_identity {
    const object_value* target;    ///< What is called in the end: the function itself, unless it is a bound one.
    std::span<const Any> leading;  ///< What goes in front of the arguments: a bound method's receiver.
};

/// A function value. What is called, and with which arguments, is the derived class's to say.
class LING_EXPORT object_value_function : public object_value {
public:
    object_value_function() noexcept : object_value(Kind::Function) {}
    Any invoke(std::span<const Any> arguments) override = 0;
    virtual String name() const = 0;
    virtual String doc() const = 0;
    virtual Result<Signature> signature() const = 0;
    virtual bool isIndependent() const noexcept = 0;
    virtual function_identity identity() const noexcept { return {this, {}}; }
    /// Offers a way past calling it (`ling/short_ways.h`). For builders, before anybody else knows the function.
    void offer(const short_way& way) noexcept { offered_ = &way; }
    const short_way* offered() const noexcept { return offered_; }
    /// Replaces the defaults of the last parameters that go by position, as many as `defaults` has. None, or an error
    /// result.
    virtual Any setParameterDefaults(std::span<const Any> defaults);
    /// The class that declares this method: the first one, where several do. A none handle when there is none (any
    /// more): a class keeps its methods, not they it.
    Class_Generic definingClass() const;
    /// Without effect while the class that was there before lives.
    void setDefiningClass(object_value_class* klass);

private:
    Any definingClass_;  // Weak, or none. Guarded by guard().
    const short_way* offered_ = nullptr;
};

/// A function implemented in native code: everything but the code itself, which `call` is.
class LING_EXPORT object_value_native_function : public object_value_function {
public:
    object_value_native_function(String name, Signature signature, String doc, bool independent);
    /// Checks the number of arguments, fills defaults, and calls. Lets no exception through.
    Any invoke(std::span<const Any> arguments) override;
    Any invokeNamed(std::span<const Any> positional, std::span<const NamedArgument> named) override;
    String name() const final { return name_; }
    String doc() const final { return doc_; }
    Result<Signature> signature() const final;
    bool isIndependent() const noexcept final { return independent_; }
    Any setParameterDefaults(std::span<const Any> defaults) final;
    /// Gives a function that was made before its place was known the name of that place. For builders, before anybody
    /// else knows the function.
    void nameAfter(const String& name) { name_ = name; }

protected:
    /// One argument for each parameter, and the rest of a variadic function: the order is that of `ParameterMode`.
    virtual Any call(std::span<const Any> arguments) = 0;
    /// The standard error for an argument of the wrong type. `reason` may say more: an error result stands in the
    /// place of the standard error, an error that is none becomes its cause.
    Any argumentError(std::size_t index, std::span<const Any> arguments, const Any& reason = Any()) const;
    /// There are as many arguments as parameters, so that nothing has to be adjusted.
    bool isExact(std::span<const Any> arguments) const noexcept { return arguments.size() == exactCount_; }
    Any invokeAdjusted(std::span<const Any> arguments);

private:
    String calledName(std::span<const Any> arguments) const;

    String name_;
    String doc_;
    Signature signature_;   // Guarded by guard(): its defaults may be replaced.
    bool byPositionAlone_;  // No parameter goes by name only.
    std::size_t exactCount_;
    bool independent_;
};

}  // namespace internal

/// A function made from native code (`make_function`).
class LING_EXPORT FunctionCL_Generic : public I_Invokable_Generic {
public:
    static FunctionCL_Generic adopt(internal::object_value_function* function) {
        return FunctionCL_Generic(Any::adopt(function));
    }
    String name() const { return record()->name(); }
    /// `defaults` belong to the last parameters that go by position, in order. None, or an error result when there are
    /// too many.
    Any setParameterDefaults(std::span<const Any> defaults) const { return record()->setParameterDefaults(defaults); }
    Any setParameterDefaults(std::initializer_list<Any> defaults) const {
        return setParameterDefaults(std::span<const Any>(defaults.begin(), defaults.size()));
    }
    Any setParameterDefaults(const List_Generic& defaults) const;
    internal::object_value_function* record() const noexcept {
        return static_cast<internal::object_value_function*>(heapObject());
    }
    static Result<FunctionCL_Generic> cast(const Any& value);
    static const Class_Generic& getClass();  ///< The class "Function".
    static Type getType();

private:
    explicit FunctionCL_Generic(Any&& value) noexcept : I_Invokable_Generic(std::move(value)) {}
};

}  // namespace ling
