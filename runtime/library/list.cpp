#include "ling/list.h"

#include "interfaces/generic_interface.h"
#include "interfaces/index.h"
#include "interfaces/native_containers.h"
#include "library/item_iterator.h"
#include "library/item_search.h"
#include "library/list_storage.h"
#include "ling/error.h"

namespace ling {

using internal::list_storage;
using internal::object_value_list;

List_Generic::List_Generic(std::vector<Any> items)
    : List_Generic(unchecked<List_Generic>(Any::adopt(new object_value_list(std::move(items))))) {}

List_Generic List_Generic::empty() { return unchecked<List_Generic>(Any::adopt(new object_value_list)); }

std::size_t List_Generic::size() const noexcept { return list_storage(*this).size(); }

Any List_Generic::at(std::int64_t index) const {
    Any item;
    return list_storage(*this).get(index, item) ? item : internal::index_out_of_range(index);
}

void List_Generic::append(const Any& item) const { list_storage(*this).append(item); }

void List_Generic::appendAll(std::span<const Any> items) const {
    list_storage(*this).append(std::vector<Any>(items.begin(), items.end()));
}

std::vector<Any> List_Generic::copyItems() const {
    const internal::list_snapshot snapshot = list_storage(*this).snapshot();
    const std::span<const Any> items = snapshot.items();
    return {items.begin(), items.end()};
}

Class_Generic List_Generic::genericInstance(const Type& item) { return internal::generic_instance(getClass(), item); }

Result<List_Generic> List_Generic::cast(const Any& value) {
    // By its kind: a class may derive from the native list and from a class that makes other objects.
    if (value.is(Kind::List))
        return unchecked<List_Generic>(value);
    return Result<List_Generic>::failure(internal::cast_error(value, getClass()));
}

const Class_Generic& List_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::generic_class(
        "List", {I_MutableSequence_Generic::getClass()},
        [](internal::object_value_class* instance, std::span<const Type> parameters) {
            instance->add_parent_unsafe(I_MutableSequence_Generic::genericInstance(parameters.front()));
        }));
    return cls;
}

Type List_Generic::getType() { return Type(getClass()); }

namespace internal {

Any native_list::iter(const List_Generic& self) {
    list_snapshot snapshot = list_storage(self).snapshot();
    const std::span<const Any> items = snapshot.items();
    return Any::adopt(new item_iterator<buffer_ref<Any>>(std::move(snapshot.buffer), items));
}

Any native_list::at(const List_Generic& self, const Any& index) {
    const Result<std::int64_t> position = read_index(index);
    if (!position)
        return position.error();
    Any item;
    return list_storage(self).get(*position, item) ? item : index_out_of_range(index);
}

Any native_list::set(const List_Generic& self, const Any& index, const Any& item) {
    const Result<std::int64_t> position = read_index(index);
    if (!position)
        return position.error();
    if (is_error_result(item))
        return item;
    Any exchanged = item;
    return list_storage(self).exchange(*position, exchanged) ? Any() : index_out_of_range(index);
}

Any native_list::append(const List_Generic& self, const Any& item) {
    if (is_error_result(item))
        return item;
    list_storage(self).append(item);
    return Any();
}

Any native_list::indexOf(const List_Generic& self, const Any& item, std::int64_t start) {
    const list_snapshot snapshot = list_storage(self).snapshot();
    return find_item(snapshot.items(), item, place_of(start, snapshot.count));
}

Result<Boolean> native_list::contains(const List_Generic& self, const Any& item) {
    return contains_item(list_storage(self).snapshot().items(), item);
}

}  // namespace internal

}  // namespace ling
