#include "ling/set_interface.h"

#include "interfaces/collect.h"
#include "interfaces/define.h"
#include "interfaces/generic_interface.h"
#include "interfaces/native_containers.h"
#include "interfaces/native_value.h"
#include "interfaces/results.h"
#include "ling/class_builder.h"
#include "ling/error.h"

namespace ling {

using internal::is_native;
using internal::read_done;
using internal::read_result;

const property_ident_untyped I_Set_Generic::$$length{"length"};
const method_ident_untyped I_MutableSet_Generic::$insert{"insert"};
const method_ident_untyped I_MutableSet_Generic::$remove{"remove"};
const method_ident_untyped I_MutableSet_Generic::$extend{"extend"};
const method_ident_untyped I_MutableSet_Generic::$clear{"clear"};

Result<Integer> I_Set_Generic::length() const {
    if (is_native(*this, Kind::Set))
        return Integer(static_cast<std::int64_t>(unchecked<Set_Generic>(*this).size()));
    return read_result<Integer>(propertyValue($$length));
}

Result<I_Set_Generic> I_Set_Generic::cast(const Any& value) {
    if (value.is(Kind::Set))
        return unchecked<I_Set_Generic>(value);
    return internal::cast_handle<I_Set_Generic>(value);
}

Class_Generic I_Set_Generic::genericInstance(const Type& item) { return internal::generic_instance(getClass(), item); }

const Class_Generic& I_Set_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::generic_class(
        "I_Set", {I_Iterable_Generic::getClass()},
        [](internal::object_value_class* instance, std::span<const Type> parameters) {
            instance->add_parent_unsafe(I_Iterable_Generic::genericInstance(parameters.front()));
        }));
    return cls;
}

Type I_Set_Generic::getType() { return Type(getClass()); }

Any I_MutableSet_Generic::insert(const Any& item) const {
    if (is_native(*this, Kind::Set))
        return internal::native_set::insert(unchecked<Set_Generic>(*this), item);
    return read_result<Boolean>(callMethod($insert, {item})).toAny();
}

Any I_MutableSet_Generic::remove(const Any& item) const {
    if (is_native(*this, Kind::Set))
        return internal::native_set::remove(unchecked<Set_Generic>(*this), item);
    return read_result<Boolean>(callMethod($remove, {item})).toAny();
}

Any I_MutableSet_Generic::extend(const Any& items) const { return read_done(callMethod($extend, {items})); }

Any I_MutableSet_Generic::clear() const { return read_done(callMethod($clear)); }

Result<I_MutableSet_Generic> I_MutableSet_Generic::cast(const Any& value) {
    if (value.is(Kind::Set))
        return unchecked<I_MutableSet_Generic>(value);
    return internal::cast_handle<I_MutableSet_Generic>(value);
}

Class_Generic I_MutableSet_Generic::genericInstance(const Type& item) {
    return internal::generic_instance(getClass(), item);
}

const Class_Generic& I_MutableSet_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(
        internal::generic_class("I_MutableSet", {I_Set_Generic::getClass()},
                                [](internal::object_value_class* instance, std::span<const Type> parameters) {
                                    instance->add_parent_unsafe(I_Set_Generic::genericInstance(parameters.front()));
                                }));
    return cls;
}

Type I_MutableSet_Generic::getType() { return Type(getClass()); }

namespace internal {

namespace {

/// The items are all fetched before the first is inserted: they may come from the set itself.
Any extendByInsert(const I_MutableSet_Generic& self, const Any& items) {
    const Result<std::vector<Any>> all = collect_items(items);
    if (!all)
        return all.error();
    for (const Any& item : *all)
        if (const Any outcome = self.insert(item); is_error_result(outcome))
            return outcome;
    return Any();
}

}  // namespace

void define_set_interface_members() {
    extend_class(I_Set_Generic::getClass()).doc("Distinct items. An implementation gives 'iter' and 'length'.").build();
    extend_class(I_MutableSet_Generic::getClass())
        .doc("A set that can change. An implementation gives 'insert', 'remove' and 'clear', beside what a set gives.")
        .method(I_MutableSet_Generic::$extend, "items", &extendByInsert, "Inserts every item of an iterable.")
        .build();
}

}  // namespace internal

}  // namespace ling
