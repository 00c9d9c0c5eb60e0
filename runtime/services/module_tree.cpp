#include "services/module_tree.h"

#include "ling/error.h"
#include "ling/list.h"
#include "ling/members.h"
#include "model/own_members.h"
#include "services/module_name.h"

#include <algorithm>
#include <utility>

namespace ling::internal {

namespace {

/// A class-level property, as far as the class has declared its members. One that it has left for later gives way to
/// the child, since what a module carries itself comes before what its class says: to list a module is no reason to
/// ask for all that is in its parent.
Any declaredProperty(const Module& module, const property_ident_untyped& id) {
    const object_value_class& cls = *raw_class_record(module);
    if (cls.expectsMembers())
        return Any();
    const found_member declared = cls.findProperty(id);
    return declared && declared.classLevel ? Any::share(declared.member) : Any();
}

Any ownProperty(const Module& module, const property_ident_untyped& id) {
    own_members* own = find_own_members(module);
    return own == nullptr ? Any() : own->properties.find(id.data());
}

/// A language's module may have a member and a submodule of one name. The member is what the name stands for in it; the
/// submodule is found by its whole name.
bool hidesSubmodule(const Module& module, const property_ident_untyped& id) {
    return ownProperty(module, id).isNone() && !declaredProperty(module, id).isNone();
}

}  // namespace

module_tree& module_tree::instance() {
    static module_tree& tree = *new module_tree;  // Modules live as long as the process.
    return tree;
}

Module module_tree::find(const String& name) const {
    std::lock_guard hold(guard_);
    auto position = positions_.find(name.view());
    if (position == positions_.end() || !entries_[position->second].linked)
        return Module();
    return entries_[position->second].module;
}

Module module_tree::findListed(const String& name) const {
    std::lock_guard hold(guard_);
    auto position = positions_.find(name.view());
    return position == positions_.end() ? Module() : entries_[position->second].module;
}

std::vector<Module> module_tree::all() const {
    std::lock_guard hold(guard_);
    std::vector<Module> modules;
    for (const entry& listed : entries_)
        if (listed.linked)
            modules.push_back(listed.module);
    return modules;
}

std::vector<Module> module_tree::at(const std::vector<std::size_t>& positions) const {
    std::lock_guard hold(guard_);
    std::vector<Module> modules;
    for (const std::size_t position : positions)
        modules.push_back(entries_[position].module);
    return modules;
}

std::vector<Module> module_tree::topLevel() const { return at(topLevel_); }
std::vector<Module> module_tree::binding() const { return at(binding_); }

Any module_tree::ensure(const String& name) {
    if (!is_module_name(name))
        return failure(String(u"Invalid module name: '{}'.").arg(brief(name)));
    if (Module present = find(name); !present.isNone())
        return present;
    Any parent = ensureAbove(name);
    if (is_error_result(parent))
        return parent;
    Module module = findListed(name);
    if (module.isNone())
        module = unchecked<Module>(Any::adopt(new object_value_module(Module::getClass().record(), name)));
    return place(unchecked<Module>(parent), module);
}

Any module_tree::add(const Module& module) {
    const String name = module.name();
    if (!is_module_name(name))
        return failure(String(u"Invalid module name: '{}'.").arg(brief(name)));
    Any parent = ensureAbove(name);
    if (is_error_result(parent))
        return parent;
    const Any placed = place(unchecked<Module>(parent), module, Hidden::Allowed);
    if (is_error_result(placed))
        return placed;
    return placed.isSameAs(module) ? Any() : name_is_taken(name);
}

/// The module that holds the one called `name`: none for a top-level name. Missing ones are made from the top down, in
/// a loop, since a name may have any number of parts.
Any module_tree::ensureAbove(const String& name) {
    const std::u16string_view text = name.view();
    Module parent;
    for (std::size_t dot = text.find(u'.'); dot != text.npos; dot = text.find(u'.', dot + 1)) {
        const String above(text.substr(0, dot));
        Module present = find(above);
        if (present.isNone()) {
            present = unchecked<Module>(Any::adopt(new object_value_module(Module::getClass().record(), above)));
            Any placed = place(parent, present);
            if (is_error_result(placed))
                return placed;
            present = unchecked<Module>(placed);
        }
        parent = std::move(present);
    }
    return parent;
}

/// Puts a module into the table and below its parent. Answers the module that has the name then, which is another one
/// where another thread was faster, or an error result. A module that another thread has published but not linked as
/// yet is linked here too: doing so twice does no harm, and nobody waits.
Any module_tree::place(const Module& parent, const Module& module, Hidden hidden) {
    if (parent.isNone()) {
        Module winner = publish(module);
        markLinked(winner);
        return winner;
    }
    const property_ident_untyped id(last_part(module.name()));
    const std::optional<Any> occupant = occupant_of(parent, id);
    const bool mayStay = hidden == Hidden::Allowed && hidesSubmodule(parent, id);
    if (occupant && !occupant->isSameAs(module) && !mayStay) {
        const Module listed = findListed(module.name());
        if (listed.isNone() || !occupant->isSameAs(listed))
            return name_is_taken(module.name());
    }
    Module winner = publish(module);
    // The name may have gone to something else meanwhile. Then the module stays unlinked, which nobody ever finds.
    if (std::optional<Any> other = mayStay ? std::nullopt : claim_name(parent, id, Property::ofValue(winner));
        other && !other->isSameAs(winner))
        return name_is_taken(module.name());
    markLinked(winner);
    return winner;
}

namespace {

/// Whether a class of modules gives an answer of its own to `Module::$$bindMembers`. One that has left its members for
/// later does not: nobody asks for all that is in a module for the sake of this.
bool answers_for_binding(const object_value_class& cls) {
    if (cls.expectsMembers())
        return false;
    const found_member& answer = cls.findProperty(Module::$$bindMembers);
    return answer && answer.definer != Module::getClass().record();
}

}  // namespace

Module module_tree::publish(const Module& module) {
    const auto& record = static_cast<const object_value_module&>(*module.object());
    std::lock_guard hold(guard_);
    if (entries_.size() == entries_.capacity())
        entries_.reserve(entries_.size() * 2 + 16);  // Before anything changes: memory may end here.
    auto [position, isNew] = positions_.try_emplace(record.name().view(), entries_.size());
    if (isNew)
        entries_.push_back({module, false});
    return entries_[position->second].module;
}

void module_tree::markLinked(const Module& module) {
    auto& record = static_cast<object_value_module&>(*module.object());
    const bool asksClass = answers_for_binding(*record.ownClass());
    std::lock_guard hold(guard_);
    const std::size_t position = positions_.at(record.name().view());
    if (std::exchange(entries_[position].linked, true))
        return;
    if (record.name().view().find(u'.') == std::u16string_view::npos) {
        topLevel_.push_back(position);
        version_.fetch_add(1, std::memory_order_release);
    }
    record.mayBindMembers |= asksClass;
    if (record.mayBindMembers)
        noteBindingLocked(position);
}

void module_tree::noteBinding(const Module& module) {
    auto& record = static_cast<object_value_module&>(*module.object());
    std::lock_guard hold(guard_);
    if (std::exchange(record.mayBindMembers, true))
        return;
    // One that is not in the tree as yet is noted when it is linked.
    const auto found = positions_.find(record.name().view());
    if (found != positions_.end() && entries_[found->second].linked && entries_[found->second].module.isSameAs(module))
        noteBindingLocked(found->second);
}

void module_tree::noteBindingLocked(std::size_t position) {
    binding_.insert(std::lower_bound(binding_.begin(), binding_.end(), position), position);
    version_.fetch_add(1, std::memory_order_release);
}

Any name_is_taken(const String& name) { return failure(String(u"The name '{}' is taken.").arg(brief(name))); }

namespace {

/// What a property stands for in the tree: its value where that is fixed, else the property itself.
std::optional<Any> occupant_behind(const Any& property) {
    if (property.isNone())
        return std::nullopt;
    const Property& known = unchecked<Property>(property);
    return known.isValue() ? known.value() : property;
}

}  // namespace

std::optional<Any> occupant_of(const Module& module, const property_ident_untyped& id) {
    const Any property = ownProperty(module, id);
    return occupant_behind(property.isNone() ? declaredProperty(module, id) : property);
}

std::optional<Any> claim_name(const Module& module, const property_ident_untyped& id, const Property& property) {
    const Any declared = declaredProperty(module, id);
    if (!declared.isNone())
        return occupant_behind(declared);
    const Any present = ensure_own_members(*module.object()).properties.putUnlessPresent(id.data(), property);
    if (present.isNone() && id == Module::$$bindMembers)
        note_binding(module);
    return occupant_behind(present);
}

}  // namespace ling::internal

namespace ling {

using internal::module_tree;

Module find_module(const String& name) { return module_tree::instance().find(name); }

Any find_or_create_module(const String& name) { return module_tree::instance().ensure(name); }

std::vector<Module> top_level_modules() { return module_tree::instance().topLevel(); }
std::vector<Module> binding_modules() { return module_tree::instance().binding(); }
std::uint64_t module_tree_version() noexcept { return module_tree::instance().version(); }

void internal::note_binding(const Any& module) {
    if (cast_object(module, Module::getClass()) != nullptr)
        module_tree::instance().noteBinding(unchecked<Module>(module));
}

List_Generic modules() {
    const std::vector<Module> all = module_tree::instance().all();
    return List_Generic(std::vector<Any>(all.begin(), all.end()));
}

}  // namespace ling
