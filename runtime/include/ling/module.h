#pragma once

#include "ling/any.h"
#include "ling/class_record.h"
#include "ling/members.h"
#include "ling/result.h"
#include "ling/string.h"

#include <string_view>
#include <vector>

namespace ling {

/// A named collection of classes, functions, properties and other modules. Modules form a tree by their dotted names;
/// a child is a property of its parent under the last part of its name. Modules live as long as the process.
class LING_EXPORT Module : public Any {
public:
    Module() noexcept = default;  ///< No module: none.

    String name() const;  ///< The whole dotted name.
    String doc() const;
    void setDoc(const String& doc) const;
    /// The classes and functions registered in this module, in order of registration.
    std::vector<Class_Generic> classes() const;
    std::vector<Declared<method_ident_untyped, I_Invokable_Generic>> functions() const;

    static Result<Module> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();

    /// True on a module whose classes and functions a guest language also binds by bare name where it evaluates code.
    static const property_ident_untyped $$bindMembers;
};

/// Finds a module by its dotted name, or answers a none handle.
LING_EXPORT Module find_module(const String& name);
/// Finds a module, or makes it and the modules above it. An error result for an ill-formed name ("Invalid module name:
/// '{}'.") and where something that is not a module has the name already.
LING_EXPORT Any find_or_create_module(const String& name);
/// All modules, parents before children, as they are now: a list.
LING_EXPORT List_Generic modules();
/// Finds a class by its dotted name: the longest leading part that names a module, then member by member, through
/// modules and classes. A none handle when there is no such class.
LING_EXPORT Class_Generic find_class(const String& qualifiedName);

namespace internal {

/// A module's own record. Languages may derive from it.
class LING_EXPORT object_value_module : public object_value_object {
public:
    object_value_module(object_value_class* klass, const String& name);
    const String& name() const noexcept { return name_; }
    String doc() const;
    void setDoc(const String& doc);

private:
    const String name_;
    String doc_;  // Guarded by guard().
};

/// Puts a module made by somebody else into the tree under its own name, and the modules above it where missing. None,
/// or an error result when the name is taken by another.
LING_EXPORT Any register_module(const Module& module);

/// Registers a member in a module, which is made when it is missing. None, or an error result.
LING_EXPORT Any register_function(std::string_view module, const FunctionCL_Generic& function);
LING_EXPORT Any register_property(std::string_view module, std::string_view name, const Property& property);
LING_EXPORT Any register_class(std::string_view module, const Class_Generic& cls);

}  // namespace internal

}  // namespace ling
