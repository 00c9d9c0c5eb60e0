#pragma once

#include "ling/any.h"
#include "ling/class_record.h"
#include "ling/members.h"
#include "ling/result.h"
#include "ling/string.h"

#include <atomic>
#include <mutex>
#include <string_view>
#include <vector>

namespace ling {

/// A named collection of classes, functions, properties and other modules. Modules form a tree by their dotted names;
/// a child is a property of its parent under the last part of its name. Modules live as long as the process.
///
/// The parts of a name are separated by dots; none is empty, and the name is well-formed text without a NUL.
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

    /// The property "bindMembers", a boolean that is false unless somebody sets it: true on a module whose classes and
    /// functions a guest language also binds by bare name where it evaluates code.
    static const property_ident_untyped $$bindMembers;
};

/// Finds a module by its dotted name, or answers a none handle.
LING_EXPORT Module find_module(const String& name);
/// Finds a module, or makes it and the modules above it. An error result for an ill-formed name ("Invalid module name:
/// '{}'.") and where something else has the name already ("The name '{}' is taken.").
LING_EXPORT Any find_or_create_module(const String& name);
/// All modules, parents before children, as they are now: a list.
LING_EXPORT List_Generic modules();
/// The modules without a dot in their names, in the same order.
LING_EXPORT std::vector<Module> top_level_modules();
/// Those whose `Module::$$bindMembers` has to be asked, in the same order: it was set once, or their class answers for
/// it. All others answer false.
LING_EXPORT std::vector<Module> binding_modules();
/// A number that grows whenever one of the two gets longer; neither ever gets shorter.
LING_EXPORT std::uint64_t module_tree_version() noexcept;
/// Finds a class by its dotted name: the longest leading part that names a module, then member by member, through
/// modules and classes. A none handle when there is no such class.
LING_EXPORT Class_Generic find_class(const String& qualifiedName);
/// Finds anything that can be called by its dotted name: a function of a module, or a class. What is not there answers
/// each call with an error result.
LING_EXPORT I_Invokable_Generic find_function(const String& qualifiedName);

namespace internal {

/// Says that a module may answer true to `Module::$$bindMembers` from now on. Needed of nobody who sets that property.
void note_binding(const Any& module);

/// A module's own record. Languages may derive from it.
class LING_EXPORT object_value_module : public object_value_object {
public:
    using function_entry = Declared<method_ident_untyped, I_Invokable_Generic>;

    /// `klass` is `Module` or derived from it. The module is in nobody's tree until it is registered.
    object_value_module(object_value_class* klass, const String& name);
    const String& name() const noexcept { return name_; }
    /// Virtual for modules whose documentation is to be fetched first.
    virtual String doc() const;
    void setDoc(const String& doc);

    /// What is registered in the module. Whoever adds to it has put a property of the same name into the module, by
    /// which the name is taken.
    std::vector<Class_Generic> classes() const;
    std::vector<function_entry> functions() const;
    void addClass(const Class_Generic& cls);
    void addFunction(const FunctionCL_Generic& function);

    /// What `Module::$$bindMembers` reads and writes.
    bool bindsMembers() const noexcept { return bindsMembers_.load(std::memory_order_relaxed); }
    void setBindsMembers(bool binds) noexcept { bindsMembers_.store(binds, std::memory_order_relaxed); }

    /// Whether the property of that name has to be asked: for the module tree, under its lock.
    bool mayBindMembers = false;

private:
    const String name_;
    std::atomic<bool> bindsMembers_{false};
    mutable std::mutex members_;  // Guards what follows. Memory alone is touched under it.
    String doc_;
    std::vector<Class_Generic> classes_;
    std::vector<function_entry> functions_;
};

/// Puts a module made by somebody else into the tree under its own name, and the modules above it where missing. None,
/// or an error result when the name is ill-formed or taken by another.
LING_EXPORT Any register_module(const Module& module);

/// Registers a member in a module, which is made when it is missing; it becomes a property of the module. None, or an
/// error result: a name that is empty or taken by another ("The name '{}' is taken."). Registering one thing twice is
/// no error.
LING_EXPORT Any register_function(std::string_view module, const FunctionCL_Generic& function);
LING_EXPORT Any register_property(std::string_view module, std::string_view name, const Property& property);
LING_EXPORT Any register_class(std::string_view module, const Class_Generic& cls);

}  // namespace internal

using internal::register_class;
using internal::register_function;
using internal::register_property;

}  // namespace ling
