#include "interfaces/collect.h"
#include "interfaces/key_not_found.h"
#include "interfaces/native_containers.h"
#include "interfaces/optional_method.h"
#include "interfaces/results.h"
#include "library/define.h"
#include "ling/class_builder.h"
#include "ling/failure_beside.h"

namespace ling::internal {

namespace {

object_value* allocateMap(object_value_class* klass) {
    return new object_value_hash_map(klass == Map_Generic::getClass().record() ? nullptr : klass);
}

object_value* allocateSet(object_value_class* klass) {
    return new object_value_hash_set(klass == Set_Generic::getClass().record() ? nullptr : klass);
}

using Pairs = std::vector<std::pair<Any, Any>>;

/// What another map holds, lazy values resolved. An error result when a key or a value cannot be had.
Result<Pairs> pairsOf(const I_Map_Generic& map) {
    const Result<std::vector<Any>> keys = collect_items(answer_or_failure([&map] { return map.keys(); }));
    if (!keys)
        return Result<Pairs>::failure(keys.error());
    Pairs pairs;
    for (const Any& key : *keys) {
        Any value = answer_or_failure([&] { return result_unwrap_lazy(map.get(key)); });
        if (is_error_result(value))
            return Result<Pairs>::failure(as_raised(value));
        pairs.emplace_back(key, std::move(value));
    }
    return pairs;
}

/// All or nothing: what cannot be had is met before the first pair is set.
Any copyPairs(const Map_Generic& self, const Any& source) {
    if (source.isNone())
        return Any();
    const Result<I_Map_Generic> map = read_result<I_Map_Generic>(source);
    if (!map)
        return map.error();
    const Result<Pairs> pairs = pairsOf(*map);
    if (!pairs)
        return pairs.error();
    for (const auto& [key, value] : *pairs)
        if (Any problem = native_map::set(self, key, value); !problem.isNone())
            return problem;
    return Any();
}

/// Without a default a missing key is an error, which an explicit none as the default is not.
Any get(const Map_Generic& self, const Any& key, const Any& fallback) {
    return fallback.isSameAs(Undefined()) ? native_map::get(self, key) : native_map::getOr(self, key, fallback);
}

/// All or nothing: what is new goes again when a later item cannot be inserted.
Any insertAll(const Set_Generic& self, const Any& items) {
    const Result<std::vector<Any>> all = collect_items(items);
    if (!all)
        return all.error();
    std::vector<const Any*> added;
    added.reserve(all->size());
    for (const Any& item : *all) {
        Any outcome = contain([&] { return native_set::insert(self, item); });
        if (is_error_result(outcome)) {
            for (const Any* one : added)
                (void)native_set::remove(self, *one);
            return outcome;
        }
        if (outcome.asBoolean())
            added.push_back(&item);
    }
    return Any();
}

Any initialiseSet(const Set_Generic& self, const Any& items) { return items.isNone() ? Any() : insertAll(self, items); }

}  // namespace

void define_map_members() {
    using Mutable = I_MutableMap_Generic;
    extend_class(Map_Generic::getClass())
        .doc(
            "A map: values by key, in the order in which the keys were first set. Called, it makes a copy of another "
            "map, or an empty one.")
        .hooks({.allocate = &allocateMap, .nativeValues = true})
        .method(Any::$__init__, optional_method(Any::$__init__, "source", {Any()}, &copyPairs,
                                                "Sets what another map holds, if one is given."))
        .method(I_Iterable_Generic::$iter, "", &native_map::iter,
                "An iterator over the keys as they are now; what changes later does not show in it.")
        .method(I_Map_Generic::$contains, "key", &native_map::contains, "Whether there is a value under a key.")
        .method(I_Map_Generic::$get,
                optional_method(I_Map_Generic::$get, "key, default", {Undefined()}, &get,
                                "The value under a key. For a missing key the default, or an error "
                                "when none is given."))
        .method(Mutable::$set, "key, value", &native_map::set, "Puts a value under a key.")
        .method(Mutable::$remove, "key", &native_map::remove, "Removes a key and answers the value that was under it.")
        .method(
            Mutable::$clear, "",
            [](const Map_Generic& self) { static_cast<object_value_hash_map*>(self.object())->clear(); },
            "Removes all keys.")
        .property(I_Map_Generic::$$keys, property_builder().getter(&native_map::keys).doc("The keys in a new list."))
        .property(I_Map_Generic::$$values,
                  property_builder().getter(&native_map::values).doc("The values in a new list."))
        .property(I_Map_Generic::$$length,
                  property_builder()
                      .getter([](const Map_Generic& self) { return static_cast<std::int64_t>(self.size()); })
                      .doc("How many keys there are."))
        .build();
    extend_class(JsonObject::getClass()).doc("A map from text to any value, as structured documents have it.").build();
}

void define_set_members() {
    using Mutable = I_MutableSet_Generic;
    extend_class(Set_Generic::getClass())
        .doc(
            "A set: distinct items, in the order in which they were first inserted. Called, it makes a set of the "
            "items of an iterable, or an empty one.")
        .hooks({.allocate = &allocateSet, .nativeValues = true})
        .method(Any::$__init__, optional_method(Any::$__init__, "items", {Any()}, &initialiseSet,
                                                "Inserts the items of an iterable, if one is given."))
        .method(I_Iterable_Generic::$iter, "", &native_set::iter,
                "An iterator over the items as they are now; what changes later does not show in it.")
        .method(I_Iterable_Generic::$contains, "item", &native_set::contains, "Whether an equal item is in the set.")
        .method(Mutable::$insert, "item", &native_set::insert,
                "Inserts an item unless an equal one is there. Answers whether it is new.")
        .method(Mutable::$remove, "item", &native_set::remove, "Removes an item. Answers whether it was there.")
        .method(Mutable::$extend, "items", &insertAll, "Inserts every item of an iterable.")
        .method(
            Mutable::$clear, "",
            [](const Set_Generic& self) { static_cast<object_value_hash_set*>(self.object())->clear(); },
            "Removes all items.")
        .property(I_Set_Generic::$$length,
                  property_builder()
                      .getter([](const Set_Generic& self) { return static_cast<std::int64_t>(self.size()); })
                      .doc("How many items there are."))
        .build();
}

}  // namespace ling::internal
