#pragma once

#include "ling/class_record.h"
#include "ling/member_table.h"
#include "ling/module.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <utility>
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

/// The members of one kind that a class declares, in order of declaration.
template <class Identifier>
class declared_members {
public:
    using value_type = declared_member<Identifier>;
    auto begin() const noexcept { return members_.begin(); }
    auto end() const noexcept { return members_.end(); }
    std::size_t size() const noexcept { return members_.size(); }
    const std::vector<value_type>& all() const noexcept { return members_; }

    const value_type* find(const identifier& id) const noexcept {
        const auto found = positions_.find(id.data());
        return found == positions_.end() ? nullptr : &members_[found->second];
    }
    /// Adds a member, or puts it in the place of the one that has the name, which is handed out.
    Any put(const Identifier& id, object_value_class* definer, const Any& member) {
        if (const auto found = positions_.find(id.data()); found != positions_.end()) {
            value_type& present = members_[found->second];
            present.definer = definer;
            return std::exchange(present.member, member);
        }
        if (members_.size() == members_.capacity())
            members_.reserve(2 * members_.size() + 1);  // What can fail comes first.
        positions_.emplace(id.data(), members_.size());
        members_.push_back({id, member, definer});
        return Any();
    }

private:
    std::vector<value_type> members_;
    std::unordered_map<const identifier_data*, std::size_t> positions_;
};

/// What a class says about itself. Everything else is derived from this and the parents'. Guarded by the lock of the
/// class structure: whoever reads it outside of that goes through `read_declarations`.
struct class_declarations {
    std::vector<Class_Generic> parents;
    std::unordered_set<object_value_class*> children;  ///< Borrowed: a dying child takes itself out.
    std::vector<declared_field> fields;
    /// All fields that tables of this class ever had, by their places in an instance. It only grows: instances that are
    /// there keep their fields where they are when an ancestor gains one.
    std::vector<field_ident_untyped> layout;
    declared_members<method_ident_untyped> methods;
    declared_members<property_ident_untyped> properties;
    declared_members<method_ident_untyped> classMethods;
    declared_members<property_ident_untyped> classProperties;
    String doc;
    String examples[3];
    Module module;
    class_hooks hooks;
    bool isInterface = false;
    Class_Generic generic;
    std::vector<Type> parameters;
    std::unordered_multimap<std::size_t, Class_Generic> instances;  ///< Of this generic, by the hash of the parameters.
    void (*addGenericParents)(object_value_class*, std::span<const Type>) = nullptr;
    std::vector<std::unique_ptr<class_tables>> tables;  ///< The last may be in use; a reader may still hold the others.
    std::uint64_t lastChange = 0;                       ///< The number of the last change that this class has followed.
};

/// The classes of an ancestry by their addresses, at most half full: nearly always the first look decides.
class ancestor_set {
public:
    ancestor_set() = default;
    explicit ancestor_set(std::span<object_value_class* const> classes);
    bool has(const object_value_class* wanted) const noexcept {
        for (std::size_t at = home(wanted);; ++at) {
            const object_value_class* present = slots_[at & mask_];
            if (present == wanted || present == nullptr)
                return present != nullptr;
        }
    }

private:
    std::size_t home(const object_value_class* wanted) const noexcept {
        return reinterpret_cast<std::uintptr_t>(wanted) / alignof(std::max_align_t);
    }

    std::size_t mask_ = 0;
    std::vector<const object_value_class*> slots_{nullptr};
};

/// The flattened view of a class and its ancestry.
struct class_tables : member_tables {
    std::vector<object_value_class*> ancestry;  ///< Kept alive by the parents' references.
    ancestor_set ancestors;                     ///< The same.
    class_hooks hooks;
    std::vector<declared_field> fields;  ///< By their places in an instance.
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

/// Builds the tables of a class; `tablesOf` gives those of its parents. The lock of the class structure is held, here
/// and below. A class that had tables before gets some with room for as many names again.
std::unique_ptr<class_tables> build_tables(object_value_class* klass,
                                           const class_tables& (*tablesOf)(const object_value_class*));

/// Lets tables that are in use answer what is declared under a name now. False when they have no room for it, or need
/// more changes than the name shows: they are to be built anew.
bool update_tables(class_tables& tables, const identifier& id);

}  // namespace ling::internal
