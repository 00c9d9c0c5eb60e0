#pragma once

#include "ling/class.h"
#include "ling/class_record.h"
#include "ling/native_function.h"
#include "ling/property.h"

#include <string_view>

namespace ling::internal {

/// What accessors are called until a class takes the property in, which names them after it.
inline constexpr std::string_view kGetterName = "getter";
inline constexpr std::string_view kSetterName = "setter";

/// Builds a property from native code. A getter is called with the receiver, a setter with the receiver and the
/// value; one without a receiver makes the property independent.
class property_builder : public property_builder_base {
public:
    template <class F>
    property_builder& getter(F&& code) {
        constexpr auto shape = shape_of<F>;
        if constexpr (parameters(shape) == 0)
            assign_getter(make_function(kGetterName, "", std::forward<F>(code)));
        else
            assign_getter(make_method(kGetterName, "", std::forward<F>(code)));
        assign_type(argument_type(shape));
        return *this;
    }
    template <class F>
    property_builder& setter(F&& code) {
        assign_setter(make_method(kSetterName, "value", std::forward<F>(code)));
        return *this;
    }
    property_builder& value(const Any& stored) {
        assign_getter_value(stored);
        return *this;
    }
    property_builder& doc(std::string_view utf8) {
        assign_doc(String(utf8));
        return *this;
    }

private:
    template <class R, class... Ps>
    static constexpr std::size_t parameters(R (*)(Ps...)) {
        return sizeof...(Ps);
    }
    template <class R, class... Ps>
    static Type argument_type(R (*)(Ps...)) {
        return result_type<R>();
    }
};

/// Builds a class and registers it in its module.
///
///     Class_Generic item = defclass_impl("Item", "shop")
///         .doc("Something for sale.")
///         .field($name, String::getType())
///         .method("rename", "name", [](const Any& self, const String& name) { ... }, "Renames it.")
///         .build();
///
/// Every step answers the builder itself. A builder makes one class.
class LING_EXPORT class_builder {
public:
    class_builder(std::string_view name, std::string_view module);

    class_builder& parent(const Class_Generic& parent);
    class_builder& doc(std::string_view utf8);
    class_builder& example(Language language, std::string_view utf8);
    class_builder& hooks(const class_hooks& hooks);
    class_builder& field(const field_ident_untyped& id, const Type& type = Untyped::getType(),
                         std::string_view doc = {});
    class_builder& method(const method_ident_untyped& id, const I_Invokable_Generic& method);
    class_builder& property(const property_ident_untyped& id, const property_builder_base& property);
    class_builder& classMethod(const method_ident_untyped& id, const I_Invokable_Generic& method);
    class_builder& classProperty(const property_ident_untyped& id, const property_builder_base& property);

    /// From native code; the first parameter is the receiver and is not among `names`.
    template <class F>
    class_builder& method(std::string_view name, const parameter_list& names, F&& code, std::string_view doc = {}) {
        return method(method_ident_untyped(name), make_method(name, names, std::forward<F>(code), doc));
    }
    template <class F>
    class_builder& method(const method_ident_untyped& id, const parameter_list& names, F&& code,
                          std::string_view doc = {}) {
        return method(id, make_method(id.utf8(), names, std::forward<F>(code), doc));
    }
    /// Class level: no receiver.
    template <class F>
    class_builder& classMethod(std::string_view name, const parameter_list& names, F&& code,
                               std::string_view doc = {}) {
        return classMethod(method_ident_untyped(name), make_function(name, names, std::forward<F>(code), doc));
    }
    class_builder& property(std::string_view name, const property_builder_base& builder) {
        return property(property_ident_untyped(name), builder);
    }

    /// The class, registered in its module when it has one. An error in a step before (a parent that would make a
    /// circle, a name that is taken by something else) is written to the assertion log, and the step is left out.
    Class_Generic build();
    /// The first step that failed, `build` included: an error result, or none.
    const Any& error() const noexcept { return error_; }
    /// The class as it is so far.
    const Class_Generic& unfinished() const noexcept { return class_; }

private:
    explicit class_builder(const Class_Generic& existing) : class_(existing) {}
    friend LING_EXPORT class_builder extend_class(const Class_Generic& cls);

    void note(const Any& outcome);

    Class_Generic class_;
    String module_;
    Any error_;
};

/// Begins a class. An empty module name makes a class that no module holds.
inline class_builder defclass_impl(std::string_view name, std::string_view module) { return {name, module}; }

/// Adds members to a class that exists already. For the runtime's start.
LING_EXPORT class_builder extend_class(const Class_Generic& cls);

}  // namespace ling::internal

namespace ling {

using internal::class_builder;
using internal::property_builder;

}  // namespace ling
