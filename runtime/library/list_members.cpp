#include "interfaces/collect.h"
#include "interfaces/index.h"
#include "interfaces/native_containers.h"
#include "interfaces/optional_method.h"
#include "library/define.h"
#include "library/item_search.h"
#include "library/list_storage.h"
#include "library/repetition.h"
#include "ling/class_builder.h"
#include "ling/error.h"

namespace ling::internal {

namespace {

/// A list of the class that is asked for. Native lists are marked by having none, whoever asks.
object_value* allocateList(object_value_class* klass) {
    return new object_value_list(klass == List_Generic::getClass().record() ? nullptr : klass);
}

Any extend(const List_Generic& self, const Any& items) {
    Result<std::vector<Any>> all = collect_items(items);
    if (!all)
        return all.error();
    list_storage(self).append(*std::move(all));
    return Any();
}

Any initialise(const List_Generic& self, const Any& items) { return items.isNone() ? Any() : extend(self, items); }

Any appendAt(const List_Generic& self, const Any& index, const Any& item) {
    const Result<std::int64_t> place = read_index(index);
    if (!place)
        return place.error();
    if (is_error_result(item))
        return item;
    list_storage(self).insert(*place, item);
    return Any();
}

Any pop(const List_Generic& self, const Any& index) {
    const Result<std::int64_t> position = read_index(index);
    if (!position)
        return position.error();
    Any item;
    return list_storage(self).take(*position, item) ? item : index_out_of_range(index);
}

/// All or nothing: with fewer than `count` items from the position on, none is removed.
Any removeAt(const List_Generic& self, const Any& index, std::int64_t count) {
    const Result<std::int64_t> position = read_index(index);
    if (!position)
        return position.error();
    if (count < 1 || list_storage(self).remove(*position, static_cast<std::size_t>(count)))
        return Any();
    // What is missing is the first of them, or else the last.
    std::int64_t last = *position;
    if (position_of(*position, self.size()) && __builtin_add_overflow(*position, count - 1, &last))
        last = INT64_MAX;
    return index_out_of_range(last);
}

/// The comparison runs while nothing is locked, so that somebody else may take away the item that it found. Then the
/// search begins anew, unless that goes on and on.
Result<Boolean> removeOne(const List_Generic& self, const Any& item) {
    constexpr int kTries = 64;
    for (int i = 0; i < kTries; ++i) {
        const list_snapshot snapshot = list_storage(self).snapshot();
        const Any found = find_item(snapshot.items(), item);
        if (is_error_result(found))
            return Result<Boolean>::failure(found);
        if (found.asInteger() < 0)
            return Boolean(false);
        const auto position = static_cast<std::size_t>(found.asInteger());
        const Any equal = snapshot.items()[position];
        if (list_storage(self).removeSame(equal, position))
            return Boolean(true);
    }
    return Boolean(false);
}

Any atOr(const List_Generic& self, const Any& index, const Any& fallback) {
    const Any item = result_unwrap_lazy(native_list::at(self, index));
    return is_error_result(item) ? fallback : item;
}

Any add(const List_Generic& self, const Any& items) {
    Result<std::vector<Any>> joined = join_items(list_storage(self).snapshot().items(), items);
    return joined ? List_Generic(*std::move(joined)) : joined.error();
}

Any addInPlace(const List_Generic& self, const Any& items) {
    const Any outcome = extend(self, items);
    return is_error_result(outcome) ? outcome : self;
}

Any multiply(const List_Generic& self, const Any& count) {
    Result<std::vector<Any>> repeated = repeat_items(list_storage(self).snapshot().items(), count);
    return repeated ? List_Generic(*std::move(repeated)) : repeated.error();
}

Any multiplyInPlace(const List_Generic& self, const Any& count) {
    const Result<std::int64_t> times = read_index(count);
    if (!times)
        return times.error();
    if (*times < 1) {
        list_storage(self).clear();
        return self;
    }
    Result<std::vector<Any>> added = repeat_items(list_storage(self).snapshot().items(), count, 1);
    if (!added)
        return added.error();
    list_storage(self).append(*std::move(added));
    return self;
}

void defineReading() {
    extend_class(List_Generic::getClass())
        .doc(
            "A list: items by position, which can change. Called, it makes a list of the items of an iterable, or an "
            "empty one.")
        .hooks({.allocate = &allocateList, .nativeValues = true})
        .method(Any::$__init__, optional_method(Any::$__init__, "items", {Any()}, &initialise,
                                                "Adds the items of an iterable, if one is given."))
        .method(I_Iterable_Generic::$iter, "", &native_list::iter,
                "An iterator over the items as they are now; what changes later does not show in it.")
        .method(I_Iterable_Generic::$contains, "item", &native_list::contains, "Whether an equal item is in the list.")
        .method(I_Sequence_Generic::$at, "index", &native_list::at,
                "The item at a position, which counts from the end when it is negative.")
        .method(I_Sequence_Generic::$atOr, "index, default", &atOr,
                "The item at a position, or the default when there is none.")
        .method(I_Sequence_Generic::$indexOf,
                optional_method(I_Sequence_Generic::$indexOf, "item, start", {0}, &native_list::indexOf,
                                "The position of the first equal item at or after 'start', or -1. A negative start "
                                "counts from the end."))
        .property(I_Sequence_Generic::$$length,
                  property_builder()
                      .getter([](const List_Generic& self) { return static_cast<std::int64_t>(self.size()); })
                      .doc("How many items there are."))
        .method(Any::$__add__, "items", &add, "A new list: the items, and then those of an iterable.")
        .method(Any::$__mul__, "count", &multiply, "A new list: the items, 'count' times over.")
        .build();
}

void defineChanging() {
    using Sequence = I_MutableSequence_Generic;
    extend_class(List_Generic::getClass())
        .method(Sequence::$set, "index, item", &native_list::set, "Puts an item in the place of another.")
        .method(Sequence::$append, "item", &native_list::append, "Adds an item at the end.")
        .method(Sequence::$appendAt, "index, item", &appendAt,
                "Inserts an item before a position; one outside is cut off to the nearest end.")
        .method(Sequence::$extend, "items", &extend,
                "Adds every item of an iterable at the end: all of them, or none when the iteration fails.")
        .method(Sequence::$pop, optional_method(Sequence::$pop, "index", {-1}, &pop,
                                                "Removes an item, the last unless another is asked for, and answers "
                                                "it."))
        .method(Sequence::$removeAt, optional_method(Sequence::$removeAt, "index, count", {1}, &removeAt,
                                                     "Removes one item, or 'count' of them, from a position on."))
        .method(Sequence::$removeOne, "item", &removeOne,
                "Removes the first equal item. Answers whether there was one.")
        .method(
            Sequence::$clear, "", [](const List_Generic& self) { list_storage(self).clear(); }, "Removes all items.")
        .method(Any::$__iadd__, "items", &addInPlace, "Adds every item of an iterable at the end; the list itself.")
        .method(Any::$__imul__, "count", &multiplyInPlace, "Repeats the items in place; the list itself.")
        .build();
}

}  // namespace

void define_list_members() {
    defineReading();
    defineChanging();
}

}  // namespace ling::internal
