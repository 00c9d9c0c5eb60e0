#include "model/own_members.h"

namespace ling::internal {

Any own_member_list::find(const identifier_data* name) const {
    std::lock_guard hold(guard_);
    auto found = places_.find(name);
    return found == places_.end() ? Any() : found->second->second;
}

Any own_member_list::put(const identifier_data* name, const Any& member) {
    std::lock_guard hold(guard_);
    if (auto found = places_.find(name); found != places_.end())
        return std::exchange(found->second->second, member);
    add(name, member);
    return Any();
}

Any own_member_list::putUnlessPresent(const identifier_data* name, const Any& member) {
    std::lock_guard hold(guard_);
    if (auto found = places_.find(name); found != places_.end())
        return found->second->second;
    add(name, member);
    return Any();
}

void own_member_list::add(const identifier_data* name, const Any& member) {
    std::list<named_member> added{{name, member}};  // Joins the others once nothing can fail any more.
    places_.emplace(name, added.begin());
    members_.splice(members_.end(), added);
}

Any own_member_list::remove(const identifier_data* name) {
    std::lock_guard hold(guard_);
    auto found = places_.find(name);
    if (found == places_.end())
        return Any();
    Any removed = std::move(found->second->second);
    members_.erase(found->second);
    places_.erase(found);
    return removed;
}

std::vector<own_member_list::named_member> own_member_list::copy() const {
    std::lock_guard hold(guard_);
    return {members_.begin(), members_.end()};
}

own_members* find_own_members(const Any& value) noexcept {
    const object_value* object = value.object();
    object_extras* extras = object == nullptr ? nullptr : object->findExtras();
    return extras == nullptr ? nullptr : static_cast<own_members*>(extras->ownMembers.load(std::memory_order_acquire));
}

own_members& ensure_own_members(object_value& object) {
    object_extras& extras = object.ensureExtras();
    own_members_base* present = extras.ownMembers.load(std::memory_order_acquire);
    if (present == nullptr)
        present =
            publish<own_members_base>(extras.ownMembers, new own_members, [](own_members_base* late) { delete late; });
    return static_cast<own_members&>(*present);
}

}  // namespace ling::internal
