#include "ling/hash_containers.h"

#include "interfaces/generic_interface.h"
#include "interfaces/key_not_found.h"
#include "interfaces/native_containers.h"
#include "library/hash_table.h"
#include "library/plain_key.h"
#include "library/table_iterator.h"
#include "ling/error.h"
#include "ling/failure_beside.h"
#include "ling/list.h"
#include "ling/walk_check.h"

namespace ling {

using internal::hash_table;
using internal::object_value_hash_map;
using internal::object_value_hash_set;

namespace internal {

object_value_hash_map::object_value_hash_map(object_value_class* klass)
    : object_value(Kind::Map, klass), table_(std::make_unique<hash_table>(guard())) {}
object_value_hash_map::~object_value_hash_map() = default;

std::size_t object_value_hash_map::size() const noexcept { return table_->size(); }

Any object_value_hash_map::find(const Any& key, bool& found) const {
    Any value;
    found = table_->find(key, &value);
    return value;
}

void object_value_hash_map::set(const Any& key, const Any& value) { table_->put(key, Any(value)); }

Any object_value_hash_map::remove(const Any& key, bool& found) {
    Any value;
    found = table_->take(key, value);
    return value;
}

void object_value_hash_map::clear() { table_->clear(); }

std::vector<std::pair<Any, Any>> object_value_hash_map::copy_and_load_pairs(std::size_t atMost) const {
    std::vector<std::pair<Any, Any>> pairs = table_->copyPairs(atMost);
    for (auto& [key, value] : pairs)
        value = result_unwrap_lazy(std::move(value));
    return pairs;
}

std::vector<Any> object_value_hash_map::copy_keys() const { return table_->copyKeys(); }

std::vector<Any> object_value_hash_map::copy_values() const {
    std::vector<std::pair<Any, Any>> pairs = table_->copyPairs();
    std::vector<Any> values;
    values.reserve(pairs.size());
    for (auto& [key, value] : pairs)
        values.push_back(std::move(value));
    return values;
}

Any object_value_hash_map::iterate() const { return Any::adopt(new table_iterator(table_->snapshot())); }

object_value_hash_set::object_value_hash_set(object_value_class* klass)
    : object_value(Kind::Set, klass), table_(std::make_unique<hash_table>(guard())) {}
object_value_hash_set::~object_value_hash_set() = default;

std::size_t object_value_hash_set::size() const noexcept { return table_->size(); }
bool object_value_hash_set::contains(const Any& item) const { return table_->find(item); }
bool object_value_hash_set::insert(const Any& item) { return table_->put(item); }

bool object_value_hash_set::remove(const Any& item) {
    Any nothing;
    return table_->take(item, nothing);
}

void object_value_hash_set::clear() { table_->clear(); }
std::vector<Any> object_value_hash_set::copy_items(std::size_t atMost) const { return table_->copyKeys(atMost); }
Any object_value_hash_set::iterate() const { return Any::adopt(new table_iterator(table_->snapshot())); }

namespace {

object_value_hash_map& storageOf(const Map_Generic& map) noexcept {
    return *static_cast<object_value_hash_map*>(map.object());
}
object_value_hash_set& storageOf(const Set_Generic& set) noexcept {
    return *static_cast<object_value_hash_set*>(set.object());
}

/// Runs an operation with the key that stands behind `key`. An error result when that is one, or when hashing or
/// comparing it found no end or was interrupted; the table is then as it was.
template <class Operation>
Any withKey(const Any& key, Operation&& operation) {
    const Any resolved = result_unwrap_lazy(key);
    if (is_error_result(resolved))
        return resolved;
    if (is_plain_key(resolved))
        return operation(resolved);
    const Any answer = checking_walks([&] { return operation(resolved); });
    return is_interrupted() ? current_failure_source()->take() : answer;
}

/// A step in building a container from C++. What ended too soon is thrown, as that has no result of its own.
template <class Step>
void build(Step&& step) {
    const walk_check check;
    step();
    if (const Any problem = check.problem(); !problem.isNone())
        throw ErrorException(problem);
}

}  // namespace

Any native_map::iter(const Map_Generic& self) { return storageOf(self).iterate(); }

Any native_map::get(const Map_Generic& self, const Any& key) {
    const Any value = getOr(self, key, absent_marker());
    return value.isSameAs(absent_marker()) ? key_not_found(key) : value;
}

Any native_map::getOr(const Map_Generic& self, const Any& key, const Any& fallback) {
    return withKey(key, [&](const Any& resolved) {
        bool found = false;
        Any value = storageOf(self).find(resolved, found);
        return found ? value : fallback;
    });
}

Any native_map::contains(const Map_Generic& self, const Any& key) {
    return withKey(key, [&](const Any& resolved) -> Any {
        bool found = false;
        storageOf(self).find(resolved, found);
        return found;
    });
}

Any native_map::set(const Map_Generic& self, const Any& key, const Any& value) {
    return withKey(key, [&](const Any& resolved) {
        if (is_error_result(value))
            return value;
        storageOf(self).set(resolved, value);
        return Any();
    });
}

Any native_map::remove(const Map_Generic& self, const Any& key) {
    return withKey(key, [&](const Any& resolved) {
        bool found = false;
        Any value = storageOf(self).remove(resolved, found);
        return found ? value : key_not_found(key);
    });
}

List_Generic native_map::keys(const Map_Generic& self) { return List_Generic(storageOf(self).copy_keys()); }
List_Generic native_map::values(const Map_Generic& self) { return List_Generic(storageOf(self).copy_values()); }

Any native_set::iter(const Set_Generic& self) { return storageOf(self).iterate(); }

Any native_set::contains(const Set_Generic& self, const Any& item) {
    return withKey(item, [&](const Any& resolved) { return Any(storageOf(self).contains(resolved)); });
}

Any native_set::insert(const Set_Generic& self, const Any& item) {
    return withKey(item, [&](const Any& resolved) { return Any(storageOf(self).insert(resolved)); });
}

Any native_set::remove(const Set_Generic& self, const Any& item) {
    return withKey(item, [&](const Any& resolved) { return Any(storageOf(self).remove(resolved)); });
}

}  // namespace internal

Map_Generic::Map_Generic() : Map_Generic(unchecked<Map_Generic>(Any::adopt(new object_value_hash_map))) {}

Map_Generic::Map_Generic(std::span<const std::pair<Any, Any>> pairs) : Map_Generic() {
    for (const auto& [key, value] : pairs)
        internal::build([&] { internal::storageOf(*this).set(key, value); });
}

Map_Generic::Map_Generic(std::initializer_list<std::pair<Any, Any>> pairs)
    : Map_Generic(std::span<const std::pair<Any, Any>>(pairs.begin(), pairs.size())) {}

std::size_t Map_Generic::size() const noexcept { return internal::storageOf(*this).size(); }

Class_Generic Map_Generic::genericInstance(const Type& key, const Type& value) {
    return internal::generic_instance(getClass(), key, value);
}

Result<Map_Generic> Map_Generic::cast(const Any& value) {
    // By its kind, as with all native containers: see the list.
    if (value.is(Kind::Map))
        return unchecked<Map_Generic>(value);
    return Result<Map_Generic>::failure(internal::cast_error(value, getClass()));
}

const Class_Generic& Map_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::generic_class(
        "Map", {I_MutableMap_Generic::getClass()},
        [](internal::object_value_class* instance, std::span<const Type> parameters) {
            instance->add_parent_unsafe(I_MutableMap_Generic::genericInstance(parameters[0], parameters[1]));
        }));
    return cls;
}

Type Map_Generic::getType() { return Type(getClass()); }

const Class_Generic& JsonObject::getClass() {
    static const Class_Generic& cls =
        *new Class_Generic(internal::native_class("JsonObject", {Map_Generic::getClass()}));
    return cls;
}

Type JsonObject::getType() { return Type(getClass()); }

Set_Generic::Set_Generic() : Set_Generic(unchecked<Set_Generic>(Any::adopt(new object_value_hash_set))) {}

Set_Generic::Set_Generic(std::span<const Any> items) : Set_Generic() {
    for (const Any& item : items)
        internal::build([&] { internal::storageOf(*this).insert(item); });
}

std::size_t Set_Generic::size() const noexcept { return internal::storageOf(*this).size(); }

Class_Generic Set_Generic::genericInstance(const Type& item) { return internal::generic_instance(getClass(), item); }

Result<Set_Generic> Set_Generic::cast(const Any& value) {
    if (value.is(Kind::Set))
        return unchecked<Set_Generic>(value);
    return Result<Set_Generic>::failure(internal::cast_error(value, getClass()));
}

const Class_Generic& Set_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::generic_class(
        "Set", {I_MutableSet_Generic::getClass()},
        [](internal::object_value_class* instance, std::span<const Type> parameters) {
            instance->add_parent_unsafe(I_MutableSet_Generic::genericInstance(parameters.front()));
        }));
    return cls;
}

Type Set_Generic::getType() { return Type(getClass()); }

}  // namespace ling
