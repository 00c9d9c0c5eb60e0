#pragma once

#include "ling/class_record.h"
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

/// A hash table from names to members: open addressing, at most half full, never changed once built.
class member_table {
public:
    /// Room for `count` names.
    explicit member_table(std::size_t count);
    const found_member& find(const identifier& id) const noexcept {
        const slot& first = slots_[home(id.data())];
        return first.key == id.data() ? first.value : probe(id.data());
    }
    /// Adds a name unless it is there already. The table keeps the member.
    void addUnlessPresent(const identifier& id, const found_member& member);
    /// Arranges the names once all are there, so that more of them are found at the first look.
    void arrange();

private:
    struct slot {
        const identifier_data* key = nullptr;
        found_member value;
    };
    /// Mixes the address of the key rather than reading the key's own hash, which may not be in the cache.
    std::size_t home(const identifier_data* key) const noexcept {
        return (reinterpret_cast<std::uintptr_t>(key) * multiplier_) >> shift_;
    }
    void place(const slot& entry) noexcept;
    std::size_t countDisplaced() const;
    const found_member& probe(const identifier_data* key) const noexcept {
        std::size_t index = home(key);
        while (slots_[index].key != key) {
            if (slots_[index].key == nullptr)
                return kAbsent;
            index = (index + 1) & mask_;
        }
        return slots_[index].value;
    }

    static const found_member kAbsent;
    std::size_t mask_;
    unsigned shift_;
    std::uint64_t multiplier_ = 0x9E3779B97F4A7C15ULL;
    std::unique_ptr<slot[]> slots_;
    std::vector<Any> kept_;
};

/// The flattened view of a class and its ancestry.
struct class_tables {
    std::vector<object_value_class*> ancestry;  ///< Kept alive by the parents' references.
    class_hooks hooks;
    std::vector<declared_field> fields;
    member_table methods{0};
    member_table properties{0};
    member_table classMethods{0};
    member_table classProperties{0};
    found_member methodProtocol;
    found_member propertyProtocol;
};

/// Builds the tables of a class; `tablesOf` gives those of its parents. The lock of the class structure is held.
std::unique_ptr<class_tables> build_tables(object_value_class* klass,
                                           const class_tables& (*tablesOf)(const object_value_class*));

}  // namespace ling::internal
