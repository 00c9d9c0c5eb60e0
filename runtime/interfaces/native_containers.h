#pragma once

#include "ling/basic_values.h"
#include "ling/hash_containers.h"
#include "ling/list.h"

/// The operations of the native containers, declared for the handles of the interfaces and implemented by the
/// containers. The handles call them where `is_native` says that a look-up could find nothing else; the classes of the
/// containers carry the same functions as their members.

namespace ling::internal {

struct native_list {
    static Any iter(const List_Generic& self);
    static Any at(const List_Generic& self, const Any& index);
    static Any set(const List_Generic& self, const Any& index, const Any& item);
    static Any append(const List_Generic& self, const Any& item);
    static Any indexOf(const List_Generic& self, const Any& item, std::int64_t start);
    static Result<Boolean> contains(const List_Generic& self, const Any& item);
};

struct native_tuple {
    static Any iter(const Tuple_Generic& self);
    static Any at(const Tuple_Generic& self, const Any& index);
    static Any indexOf(const Tuple_Generic& self, const Any& item, std::int64_t start);
    static Result<Boolean> contains(const Tuple_Generic& self, const Any& item);
};

struct native_map {
    static Any iter(const Map_Generic& self);
    static Any get(const Map_Generic& self, const Any& key);
    static Any getOr(const Map_Generic& self, const Any& key, const Any& fallback);
    static Any contains(const Map_Generic& self, const Any& key);
    static Any set(const Map_Generic& self, const Any& key, const Any& value);
    static Any remove(const Map_Generic& self, const Any& key);
    static List_Generic keys(const Map_Generic& self);
    static List_Generic values(const Map_Generic& self);
};

struct native_set {
    static Any iter(const Set_Generic& self);
    static Any contains(const Set_Generic& self, const Any& item);
    static Any insert(const Set_Generic& self, const Any& item);
    static Any remove(const Set_Generic& self, const Any& item);
};

}  // namespace ling::internal
