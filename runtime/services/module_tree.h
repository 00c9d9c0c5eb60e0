#pragma once

#include "ling/module.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

namespace ling::internal {

/// All modules of the process, by name.
///
/// A module is found once it is linked: once it is a property of its parent. So whoever finds it can reach it from
/// above as well, unless the class of the parent has a member of that name. The lock is held to read and write the
/// table alone; members of modules are changed outside of it.
class module_tree {
public:
    static module_tree& instance();

    Module find(const String& name) const;  ///< A none handle when there is no such module.
    Any ensure(const String& name);         ///< The module, or an error result.
    Any add(const Module& module);          ///< None, or an error result.
    std::vector<Module> all() const;        ///< Parents before children.
    /// Some of these, gathered as they come: nobody has to look at all for them.
    std::vector<Module> topLevel() const;
    std::vector<Module> binding() const;
    std::uint64_t version() const noexcept { return version_.load(std::memory_order_acquire); }
    void noteBinding(const Module& module);

private:
    struct entry {
        Module module;
        bool linked;
    };

    /// Whether a module may stand behind a member of its parent's class. One that a language registers may; nobody
    /// makes a new one there.
    enum class Hidden : bool { Refused, Allowed };

    Any ensureAbove(const String& name);
    Any place(const Module& parent, const Module& module, Hidden hidden = Hidden::Refused);
    Module publish(const Module& module);
    void markLinked(const Module& module);
    void noteBindingLocked(std::size_t position);
    std::vector<Module> at(const std::vector<std::size_t>& positions) const;
    Module findListed(const String& name) const;

    mutable std::mutex guard_;
    std::vector<entry> entries_;                                      // In order of publication.
    std::unordered_map<std::u16string_view, std::size_t> positions_;  // By the name that the module itself keeps.
    std::vector<std::size_t> topLevel_;
    std::vector<std::size_t> binding_;  // Sorted.
    std::atomic<std::uint64_t> version_{0};
};

/// The error result for a name that something else has.
Any name_is_taken(const String& name);

/// What stands under a name in a module already, of its own or at the level of its class. A property that every module
/// has (its name, its documentation) takes no name. A computed property is answered as the property itself.
std::optional<Any> occupant_of(const Module& module, const property_ident_untyped& id);

/// Takes a name that nothing has yet, by putting the property there: one step, so that of two threads with two things
/// one gets the name. Nothing when it is done, else what `occupant_of` answers.
std::optional<Any> claim_name(const Module& module, const property_ident_untyped& id, const Property& property);

}  // namespace ling::internal
