#pragma once

#include "ling/class_record.h"
#include "ling/member_table.h"
#include "ling/module.h"

#include <memory>
#include <mutex>
#include <vector>

namespace ling::internal {

/// One member as a class declares it.
template <class Identifier>
struct declared_member {
    Identifier id;
    Any member;
    object_value_class* definer;
};
struct declared_field {
    field_ident_untyped id;
    Field field;
};

/// What a class says about itself. Everything else is derived from this and the parents'. Guarded by the lock of the
/// class structure: whoever reads it outside of that goes through `read_declarations`.
struct class_declarations {
    std::vector<Class_Generic> parents;
    std::vector<object_value_class*> children;  ///< Borrowed: a dying child takes itself out.
    std::vector<declared_field> fields;
    /// All fields that tables of this class ever had, by their places in an instance. It only grows: instances that are
    /// there keep their fields where they are when an ancestor gains one.
    std::vector<field_ident_untyped> layout;
    std::vector<declared_member<method_ident_untyped>> methods;
    std::vector<declared_member<property_ident_untyped>> properties;
    std::vector<declared_member<method_ident_untyped>> classMethods;
    std::vector<declared_member<property_ident_untyped>> classProperties;
    String doc;
    String examples[3];
    Module module;
    class_hooks hooks;
    bool isInterface = false;
    Class_Generic generic;
    std::vector<Type> parameters;
    std::vector<Class_Generic> instances;  ///< Of this generic.
    void (*addGenericParents)(object_value_class*, std::span<const Type>) = nullptr;
    std::vector<std::unique_ptr<const class_tables>> retired;  ///< A reader may still hold one of these.
};

/// The flattened view of a class and its ancestry.
struct class_tables : member_tables {
    std::vector<object_value_class*> ancestry;  ///< Kept alive by the parents' references.
    class_hooks hooks;
    std::vector<declared_field> fields;  ///< By their places in an instance.
    found_member methodProtocol;
    found_member propertyProtocol;
    // Of the class alone; here because matching a type and making an instance ask for it.
    bool isInterface = false;
    Class_Generic generic;
    std::vector<Type> parameters;
};

/// The one lock of the class structure: of the declarations of all classes, and of their tables while they are built.
/// Only memory is touched under it: what is replaced dies, and foreign code runs, when it is free again.
std::mutex& class_structure_guard() noexcept;

/// What `read` makes of the declarations of a class, with the lock held. It copies what it wants to keep.
template <class Read>
auto read_declarations(const object_value_class& cls, Read&& read) {
    std::lock_guard hold(class_structure_guard());
    return read(cls.declarations());
}

/// Builds the tables of a class; `tablesOf` gives those of its parents. The lock of the class structure is held.
std::unique_ptr<class_tables> build_tables(object_value_class* klass,
                                           const class_tables& (*tablesOf)(const object_value_class*));

}  // namespace ling::internal
