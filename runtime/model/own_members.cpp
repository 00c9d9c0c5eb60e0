#include "model/own_members.h"

namespace ling::internal {

Any own_member_list::find(const identifier_data* name) const {
    std::lock_guard hold(guard_);
    auto position = positions_.find(name);
    return position == positions_.end() ? Any() : members_[position->second].second;
}

Any own_member_list::put(const identifier_data* name, const Any& member) {
    std::lock_guard hold(guard_);
    auto [position, isNew] = positions_.try_emplace(name, members_.size());
    if (!isNew)
        return std::exchange(members_[position->second].second, member);
    members_.emplace_back(name, member);
    return Any();
}

Any own_member_list::putUnlessPresent(const identifier_data* name, const Any& member) {
    std::lock_guard hold(guard_);
    auto [position, isNew] = positions_.try_emplace(name, members_.size());
    if (!isNew)
        return members_[position->second].second;
    members_.emplace_back(name, member);
    return Any();
}

Any own_member_list::remove(const identifier_data* name) {
    std::lock_guard hold(guard_);
    auto found = positions_.find(name);
    if (found == positions_.end())
        return Any();
    const std::size_t position = found->second;
    Any removed = std::move(members_[position].second);
    members_.erase(members_.begin() + static_cast<std::ptrdiff_t>(position));
    positions_.erase(found);
    for (auto& [key, index] : positions_)
        index -= index > position ? 1 : 0;
    return removed;
}

std::vector<std::pair<const identifier_data*, Any>> own_member_list::copy() const {
    std::lock_guard hold(guard_);
    return members_;
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
