#pragma once

#include "ling/class_record.h"
#include "ling/member_table.h"
#include "ling/module.h"

#include <memory>
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

/// What a class says about itself. Everything else is derived from this and the parents'.
struct class_declarations {
    std::vector<Class_Generic> parents;
    std::vector<object_value_class*> children;  ///< Borrowed: a dying child takes itself out.
    std::vector<declared_field> fields;
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
    std::vector<declared_field> fields;
    found_member methodProtocol;
    found_member propertyProtocol;
};

/// Builds the tables of a class; `tablesOf` gives those of its parents. The lock of the class structure is held.
std::unique_ptr<class_tables> build_tables(object_value_class* klass,
                                           const class_tables& (*tablesOf)(const object_value_class*));

}  // namespace ling::internal
