#pragma once

#include "ling/any.h"
#include "values/extras.h"

#include <list>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ling::internal {

/// Members of one kind that one object carries itself, in order of insertion. Each operation on one member takes the
/// same time, however many there are. Guarded by a lock of its own, under
/// which only memory is touched: what is replaced or removed is handed out, to be dropped outside.
class own_member_list {
public:
    Any find(const identifier_data* name) const;              ///< The member, or none.
    Any put(const identifier_data* name, const Any& member);  ///< What stood there before.
    /// Puts it where there is none: none, or the one that stands there and stays.
    Any putUnlessPresent(const identifier_data* name, const Any& member);
    Any remove(const identifier_data* name);  ///< What was removed, or none.
    using named_member = std::pair<const identifier_data*, Any>;
    std::vector<named_member> copy() const;

private:
    void add(const identifier_data* name, const Any& member);  // There is none of that name.

    mutable std::mutex guard_;
    std::list<named_member> members_;
    std::unordered_map<const identifier_data*, std::list<named_member>::iterator> places_;
};

class own_members final : public own_members_base {
public:
    own_member_list methods;
    own_member_list properties;
};

/// The members of an object itself, or null when it has none yet.
own_members* find_own_members(const Any& value) noexcept;
own_members& ensure_own_members(object_value& object);

/// A method as it was found: what to call, and whether the receiver goes in front of the arguments.
struct found_method {
    Any method;
    bool takesReceiver = false;
};
found_method find_method(const Any& value, const method_ident_untyped& id);
/// Without asking the class's own look-up.
found_method find_raw_method(const Any& value, const method_ident_untyped& id);

}  // namespace ling::internal
