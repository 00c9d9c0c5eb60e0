#include "ling/map_interface.h"

#include "interfaces/define.h"
#include "interfaces/generic_interface.h"
#include "interfaces/key_not_found.h"
#include "interfaces/native_containers.h"
#include "interfaces/native_value.h"
#include "interfaces/results.h"
#include "ling/class_builder.h"
#include "ling/error.h"

namespace ling {

using internal::is_native;
using internal::read_done;
using internal::read_result;

const method_ident_untyped I_Map_Generic::$get{"get"};
const method_ident_untyped I_Map_Generic::$contains{"contains"};
const property_ident_untyped I_Map_Generic::$$keys{"keys"};
const property_ident_untyped I_Map_Generic::$$values{"values"};
const property_ident_untyped I_Map_Generic::$$length{"length"};
const property_ident_untyped I_Map_Generic::$$keysType{"keysType"};
const property_ident_untyped I_Map_Generic::$$valuesType{"valuesType"};
const method_ident_untyped I_MutableMap_Generic::$set{"set"};
const method_ident_untyped I_MutableMap_Generic::$remove{"remove"};
const method_ident_untyped I_MutableMap_Generic::$clear{"clear"};

namespace internal {

Any key_not_found(const Any& key) { return failure(String(u"Key not found: {}.").arg(key)); }

const Any& absent_marker() {
    static const Any& marker = *new Any(Any::adopt(new object_value_object(Any::getClass().record())));
    return marker;
}

}  // namespace internal

namespace internal {

map_entries::map_entries(const I_Map_Generic& map) : keys_(Any()) {
    if (is_native(map, Kind::Map)) {
        copied_ = static_cast<const object_value_hash_map*>(map.object())->copy_and_load_pairs();
        return;
    }
    map_ = map;
    keys_ = iteration(map.iter());
}

bool map_entries::advance() {
    if (map_.isNone()) {
        if (next_ == copied_.size())
            return false;
        auto& [key, value] = copied_[next_++];
        entry_ = {std::move(key), std::move(value)};
        return true;
    }
    if (failed_)
        return false;
    if (keys_.advance()) {
        entry_ = {keys_.item(), unchecked<I_Map_Generic>(map_).get(keys_.item())};
        return true;
    }
    failed_ = keys_.failed();
    entry_ = {Any(), keys_.error()};
    return failed_;
}

}  // namespace internal

Any I_Map_Generic::get(const Any& key) const {
    if (is_native(*this, Kind::Map))
        return internal::native_map::get(unchecked<Map_Generic>(*this), key);
    // An implementation answers its second argument for a missing key. A value that nobody else has tells that apart
    // from every value that the map may hold.
    const Any value = internal::result_unwrap_lazy(get(key, internal::absent_marker()));
    return value.isSameAs(internal::absent_marker()) ? internal::key_not_found(key) : value;
}

Any I_Map_Generic::get(const Any& key, const Any& fallback) const {
    if (is_native(*this, Kind::Map))
        return internal::native_map::getOr(unchecked<Map_Generic>(*this), key, fallback);
    if (const internal::map_access* access = internal::map_access_of(*this))
        return internal::contain([&] { return access->get(*this, key, fallback); });
    return callMethod($get, {key, fallback});
}

Any I_Map_Generic::contains(const Any& key) const {
    if (is_native(*this, Kind::Map))
        return internal::native_map::contains(unchecked<Map_Generic>(*this), key);
    return read_result<Boolean>(callMethod($contains, {key})).toAny();
}

Any I_Map_Generic::keys() const {
    if (is_native(*this, Kind::Map))
        return internal::native_map::keys(unchecked<Map_Generic>(*this));
    return internal::result_unwrap_lazy(propertyValue($$keys));
}

Any I_Map_Generic::values() const {
    if (is_native(*this, Kind::Map))
        return internal::native_map::values(unchecked<Map_Generic>(*this));
    return internal::result_unwrap_lazy(propertyValue($$values));
}

Result<Integer> I_Map_Generic::length() const {
    if (is_native(*this, Kind::Map))
        return Integer(static_cast<std::int64_t>(unchecked<Map_Generic>(*this).size()));
    return read_result<Integer>(propertyValue($$length));
}

Result<I_Map_Generic> I_Map_Generic::cast(const Any& value) {
    if (value.is(Kind::Map))
        return unchecked<I_Map_Generic>(value);
    return internal::cast_handle<I_Map_Generic>(value);
}

Class_Generic I_Map_Generic::genericInstance(const Type& key, const Type& value) {
    return internal::generic_instance(getClass(), key, value);
}

const Class_Generic& I_Map_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::generic_class(
        "I_Map", {I_Iterable_Generic::getClass()},
        [](internal::object_value_class* instance, std::span<const Type> parameters) {
            instance->add_parent_unsafe(I_Iterable_Generic::genericInstance(parameters.front()));
        }));
    return cls;
}

Type I_Map_Generic::getType() { return Type(getClass()); }

Any I_MutableMap_Generic::set(const Any& key, const Any& value) const {
    if (is_native(*this, Kind::Map))
        return internal::native_map::set(unchecked<Map_Generic>(*this), key, value);
    return read_done(callMethod($set, {key, value}));
}

Any I_MutableMap_Generic::remove(const Any& key) const {
    if (is_native(*this, Kind::Map))
        return internal::native_map::remove(unchecked<Map_Generic>(*this), key);
    return callMethod($remove, {key});
}

Any I_MutableMap_Generic::clear() const { return read_done(callMethod($clear)); }

Result<I_MutableMap_Generic> I_MutableMap_Generic::cast(const Any& value) {
    if (value.is(Kind::Map))
        return unchecked<I_MutableMap_Generic>(value);
    return internal::cast_handle<I_MutableMap_Generic>(value);
}

Class_Generic I_MutableMap_Generic::genericInstance(const Type& key, const Type& value) {
    return internal::generic_instance(getClass(), key, value);
}

const Class_Generic& I_MutableMap_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::generic_class(
        "I_MutableMap", {I_Map_Generic::getClass()},
        [](internal::object_value_class* instance, std::span<const Type> parameters) {
            instance->add_parent_unsafe(I_Map_Generic::genericInstance(parameters[0], parameters[1]));
        }));
    return cls;
}

Type I_MutableMap_Generic::getType() { return Type(getClass()); }

namespace internal {

namespace {

Any iterByKeys(const I_Map_Generic& self) {
    const Result<I_Iterable_Generic> keys = read_result<I_Iterable_Generic>(self.keys());
    return keys ? keys->iter() : keys.error();
}

Any valuesByKeys(const I_Map_Generic& self) {
    const Result<I_Iterable_Generic> keys = read_result<I_Iterable_Generic>(self.keys());
    if (!keys)
        return keys.error();
    std::vector<Any> values;
    iteration walk = keys->beginImpl();
    while (walk.advance()) {
        values.push_back(result_unwrap_lazy(self.get(walk.item())));
        if (is_error_result(values.back()))
            return values.back();
    }
    return walk.failed() ? walk.error() : Any(List_Generic(std::move(values)));
}

/// The type that the class was made for as an instance of `I_Map`: of its keys (0) or its values (1).
Type parameterOfMap(const I_Map_Generic& self, std::size_t position) {
    for (const Class_Generic& ancestor : raw_class_of(self).ancestry())
        if (ancestor.parentGeneric().isSameAs(I_Map_Generic::getClass()))
            return ancestor.parameters()[position];
    return Untyped::getType();
}

}  // namespace

void define_map_interface_members() {
    (void)absent_marker();  // Made at the start, so that it is not counted among what a program leaves behind.
    extend_class(I_Map_Generic::getClass())
        .doc(
            "Values by key. An implementation gives 'get', 'contains', 'keys' and 'length'. Iterating a map walks its "
            "keys.")
        .method(I_Iterable_Generic::$iter, "", &iterByKeys, "An iterator over the keys.")
        .property(I_Map_Generic::$$values,
                  property_builder().getter(&valuesByKeys).doc("The values in a new list, in the order of the keys."))
        .property(I_Map_Generic::$$keysType,
                  property_builder()
                      .getter([](const I_Map_Generic& self) { return parameterOfMap(self, 0); })
                      .doc("The type of the keys."))
        .property(I_Map_Generic::$$valuesType,
                  property_builder()
                      .getter([](const I_Map_Generic& self) { return parameterOfMap(self, 1); })
                      .doc("The type of the values."))
        .build();
    extend_class(I_MutableMap_Generic::getClass())
        .doc("A map that can change. An implementation gives 'set', 'remove' and 'clear', beside what a map gives.")
        .build();
}

}  // namespace internal

}  // namespace ling
