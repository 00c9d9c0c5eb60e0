#include "interfaces/collect.h"
#include "interfaces/generic_interface.h"
#include "interfaces/index.h"
#include "interfaces/native_containers.h"
#include "interfaces/optional_method.h"
#include "library/define.h"
#include "library/item_iterator.h"
#include "library/item_search.h"
#include "library/repetition.h"
#include "ling/class_builder.h"
#include "ling/error.h"
#include "ling/interfaces.h"
#include "ling/list.h"

namespace ling {

using internal::object_value_tuple;

Tuple_Generic::Tuple_Generic(std::vector<Any> items)
    : Tuple_Generic(unchecked<Tuple_Generic>(Any::adopt(new object_value_tuple(std::move(items))))) {}

std::span<const Any> Tuple_Generic::items() const noexcept {
    return static_cast<const object_value_tuple*>(object())->items();
}

Class_Generic Tuple_Generic::genericInstance(std::span<const Type> items) {
    return getClass().record()->genericInstance(items);
}

Result<Tuple_Generic> Tuple_Generic::cast(const Any& value) {
    if (value.is(Kind::Tuple))
        return unchecked<Tuple_Generic>(value);
    return Result<Tuple_Generic>::failure(internal::cast_error(value, getClass()));
}

const Class_Generic& Tuple_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(
        internal::generic_class("Tuple", {I_Tuple_Generic::getClass(), I_Immutable::getClass()},
                                [](internal::object_value_class* instance, std::span<const Type> parameters) {
                                    instance->add_parent_unsafe(I_Tuple_Generic::genericInstance(parameters));
                                }));
    return cls;
}

Type Tuple_Generic::getType() { return Type(getClass()); }

namespace internal {

object_value_tuple::object_value_tuple(std::vector<Any> items, object_value_class* klass)
    : object_value(Kind::Tuple, klass), items_(std::move(items)) {}

Any native_tuple::iter(const Tuple_Generic& self) {
    return Any::adopt(new item_iterator<Tuple_Generic>(self, self.items()));
}

Any native_tuple::at(const Tuple_Generic& self, const Any& index) {
    const Result<std::int64_t> wanted = read_index(index);
    if (!wanted)
        return wanted.error();
    const std::optional<std::size_t> position = position_of(*wanted, self.items().size());
    return position ? self.items()[*position] : index_out_of_range(index);
}

Any native_tuple::indexOf(const Tuple_Generic& self, const Any& item, std::int64_t start) {
    return find_item(self.items(), item, place_of(start, self.items().size()));
}

Result<Boolean> native_tuple::contains(const Tuple_Generic& self, const Any& item) {
    return contains_item(self.items(), item);
}

namespace {

object_value_class* ownTupleClass(object_value_class* klass) {
    return klass == Tuple_Generic::getClass().record() ? nullptr : klass;
}

object_value* allocateTuple(object_value_class* klass) {
    return new object_value_tuple(std::vector<Any>(), ownTupleClass(klass));
}

/// A tuple has its items from the beginning, so that they cannot be left to an initialiser.
Any constructTuple(const Class_Generic& cls, std::span<const Any> arguments) {
    if (arguments.size() > 1)
        return failure(String(u"The class '{}' takes one iterable, {} arguments were given.")
                           .arg(qualname(cls), arguments.size()));
    std::vector<Any> items;
    if (!arguments.empty() && !arguments[0].isNone()) {
        Result<std::vector<Any>> all = collect_items(arguments[0]);
        if (!all)
            return all.error();
        items = *std::move(all);
    }
    return Any::adopt(new object_value_tuple(std::move(items), ownTupleClass(cls.record())));
}

Any add(const Tuple_Generic& self, const Any& items) {
    Result<std::vector<Any>> joined = join_items(self.items(), items);
    return joined ? Tuple_Generic(*std::move(joined)) : joined.error();
}

Any multiply(const Tuple_Generic& self, const Any& count) {
    Result<std::vector<Any>> repeated = repeat_items(self.items(), count);
    return repeated ? Tuple_Generic(*std::move(repeated)) : repeated.error();
}

}  // namespace

void define_tuple_members() {
    extend_class(Tuple_Generic::getClass())
        .doc(
            "A tuple: items by position, which never change. Called, it makes a tuple of the items of an iterable, or "
            "an empty one.")
        .hooks({.allocate = &allocateTuple, .construct = &constructTuple, .nativeValues = true})
        .method(I_Iterable_Generic::$iter, "", &native_tuple::iter, "An iterator over the items.")
        .method(I_Iterable_Generic::$contains, "item", &native_tuple::contains,
                "Whether an equal item is in the tuple.")
        .method(I_Sequence_Generic::$at, "index", &native_tuple::at,
                "The item at a position, which counts from the end when it is negative.")
        .method(I_Sequence_Generic::$indexOf,
                optional_method(I_Sequence_Generic::$indexOf, "item, start", {0}, &native_tuple::indexOf,
                                "The position of the first equal item at or after 'start', or -1. A negative start "
                                "counts from the end."))
        .property(I_Sequence_Generic::$$length,
                  property_builder()
                      .getter([](const Tuple_Generic& self) { return static_cast<std::int64_t>(self.items().size()); })
                      .doc("How many items there are."))
        .method(Any::$__add__, "items", &add, "A new tuple: the items, and then those of an iterable.")
        .method(Any::$__mul__, "count", &multiply, "A new tuple: the items, 'count' times over.")
        .build();
}

}  // namespace internal

}  // namespace ling
