#include "ling/iterable.h"

#include "interfaces/collect.h"
#include "interfaces/define.h"
#include "interfaces/generic_interface.h"
#include "interfaces/native_containers.h"
#include "interfaces/native_iterator.h"
#include "interfaces/results.h"
#include "ling/class_builder.h"
#include "ling/comparison.h"
#include "ling/error.h"
#include "ling/failure_beside.h"
#include "ling/interruption.h"
#include "ling/list.h"
#include "ling/walk_check.h"

namespace ling {

using internal::is_native;

const method_ident_untyped I_Iterator_Generic::$next{"next"};
const method_ident_untyped I_Iterable_Generic::$iter{"iter"};
const method_ident_untyped I_Iterable_Generic::$contains{"contains"};
const method_ident_untyped I_Iterable_Generic::$collect{"collect"};

Any I_Iterator_Generic::next() const {
    if (internal::native_iterator* native = internal::plain_native_iterator(*this))
        return native->next();
    return callMethod($next);
}

Result<I_Iterator_Generic> I_Iterator_Generic::cast(const Any& value) {
    if (internal::native_iterator_of(value) != nullptr)
        return unchecked<I_Iterator_Generic>(value);
    return internal::cast_handle<I_Iterator_Generic>(value);
}

Class_Generic I_Iterator_Generic::genericInstance(const Type& item) {
    return internal::generic_instance(getClass(), item);
}

const Class_Generic& I_Iterator_Generic::getClass() {
    // An iterator can stand wherever something to iterate is wanted: it gives what it has left.
    static const Class_Generic& cls = *new Class_Generic(internal::generic_class(
        "I_Iterator", {I_Iterable_Generic::getClass()},
        [](internal::object_value_class* instance, std::span<const Type> parameters) {
            instance->add_parent_unsafe(I_Iterable_Generic::genericInstance(parameters.front()));
        }));
    return cls;
}

Type I_Iterator_Generic::getType() { return Type(getClass()); }

Any I_Iterable_Generic::iter() const {
    if (is_native(*this, Kind::List))
        return internal::native_list::iter(unchecked<List_Generic>(*this));
    if (is_native(*this, Kind::Tuple))
        return internal::native_tuple::iter(unchecked<Tuple_Generic>(*this));
    if (is_native(*this, Kind::Map))
        return internal::native_map::iter(unchecked<Map_Generic>(*this));
    if (is_native(*this, Kind::Set))
        return internal::native_set::iter(unchecked<Set_Generic>(*this));
    // The items may have been fetched already, and one of them be none: there is nothing to iterate then.
    Any iterator = internal::answer_or_failure([this] { return internal::result_unwrap_lazy(callMethod($iter)); });
    return iterator.isNone() ? internal::cast_error(iterator, I_Iterator_Generic::getClass()) : iterator;
}

Any I_Iterable_Generic::contains(const Any& item) const {
    if (is_native(*this, Kind::List))
        return internal::native_list::contains(unchecked<List_Generic>(*this), item).toAny();
    if (is_native(*this, Kind::Tuple))
        return internal::native_tuple::contains(unchecked<Tuple_Generic>(*this), item).toAny();
    if (is_native(*this, Kind::Map))
        return internal::native_map::contains(unchecked<Map_Generic>(*this), item);
    if (is_native(*this, Kind::Set))
        return internal::native_set::contains(unchecked<Set_Generic>(*this), item);
    return internal::read_result<Boolean>(callMethod($contains, {item})).toAny();
}

Result<List_Generic> I_Iterable_Generic::collectImpl() const {
    if (internal::collects_itself(*this))
        return internal::read_result<List_Generic>(callMethod($collect));
    Result<std::vector<Any>> items = internal::walk_items(*this);
    if (!items)
        return Result<List_Generic>::failure(items.error());
    return List_Generic(*std::move(items));
}

List_Generic I_Iterable_Generic::createInstance() { return List_Generic::empty(); }

Result<I_Iterable_Generic> I_Iterable_Generic::cast(const Any& value) {
    return internal::cast_handle<I_Iterable_Generic>(value);
}

Class_Generic I_Iterable_Generic::genericInstance(const Type& item) {
    return internal::generic_instance(getClass(), item);
}

const Class_Generic& I_Iterable_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::native_class("I_Iterable", {}));
    return cls;
}

Type I_Iterable_Generic::getType() { return Type(getClass()); }

namespace internal {

Result<std::vector<Any>> collect_items(const Any& iterable) {
    const Result<I_Iterable_Generic> source = read_result<I_Iterable_Generic>(iterable);
    if (!source)
        return Result<std::vector<Any>>::failure(as_raised(source.error()));
    if (!collects_itself(*source))
        return walk_items(*source);
    const Result<List_Generic> collected = source->collectImpl();
    return collected ? collected->copyItems() : Result<std::vector<Any>>::failure(as_raised(collected.error()));
}

bool collects_itself(const I_Iterable_Generic& iterable) {
    const object_value_class* own = iterable.object()->ownClass();
    return own != nullptr &&
           own->findMethod(I_Iterable_Generic::$collect).definer != I_Iterable_Generic::getClass().record();
}

Result<std::vector<Any>> walk_items(const I_Iterable_Generic& iterable) {
    std::vector<Any> items;
    iteration walk = iterable.beginImpl();
    interruption_poll mustStop;
    while (walk.advance()) {
        if (mustStop())
            return Result<std::vector<Any>>::failure(interrupted_error());
        items.push_back(walk.item());
    }
    if (walk.failed())
        return Result<std::vector<Any>>::failure(as_raised(walk.error()));
    return items;
}

namespace {

/// Walks the iteration and compares each item. The default of every iterable.
Any containsByIteration(const I_Iterable_Generic& self, const Any& item) {
    iteration walk = self.beginImpl();
    while (walk.advance()) {
        const Result<std::int64_t> order = try_compare(walk.item(), item);
        if (!order)
            return order.error();
        if (*order == 0)
            return true;
    }
    return walk.failed() ? walk.error() : Any(false);
}

Any nextOfNative(const I_Iterator_Generic& self) {
    native_iterator* native = native_iterator_of(self);
    return native == nullptr ? cast_error(self, native_iterator_class()) : native->next();
}

}  // namespace

void define_iterable_members() {
    extend_class(I_Iterable_Generic::getClass())
        .doc("Something that can be iterated. An implementation gives 'iter'.")
        .method(I_Iterable_Generic::$contains, "item", &containsByIteration,
                "Whether an equal item is among those that an iteration gives.")
        .method(
            I_Iterable_Generic::$collect, "",
            [](const I_Iterable_Generic& self) -> Any {
                Result<std::vector<Any>> items = walk_items(self);
                return items ? Any(List_Generic(*std::move(items))) : items.error();
            },
            "All items in a new list.")
        .build();
    extend_class(I_Iterator_Generic::getClass())
        .doc(
            "Something that gives one item after the other. An implementation gives 'next', which answers a "
            "'StopIteration' at the end.")
        .method(
            I_Iterable_Generic::$iter, "", [](const I_Iterator_Generic& self) { return self; },
            "The iterator itself, which gives what it has left.")
        .build();
    extend_class(native_iterator_class())
        .doc("An iterator of the runtime. It walks the items as they were when the iteration began.")
        .method(I_Iterator_Generic::$next, "", &nextOfNative, "The next item, or a 'StopIteration' at the end.")
        .build();
}

}  // namespace internal

}  // namespace ling
