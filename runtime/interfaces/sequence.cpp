#include "ling/sequence.h"

#include "interfaces/define.h"
#include "interfaces/generic_interface.h"
#include "interfaces/native_containers.h"
#include "interfaces/native_value.h"
#include "interfaces/optional_method.h"
#include "interfaces/results.h"
#include "interfaces/sequence_iterator.h"
#include "ling/class_builder.h"
#include "ling/comparison.h"
#include "ling/error.h"

#include <algorithm>

namespace ling {

using internal::is_native;

const method_ident_untyped I_Sequence_Generic::$at{"at"};
const method_ident_untyped I_Sequence_Generic::$atOr{"atOr"};
const method_ident_untyped I_Sequence_Generic::$indexOf{"indexOf"};
const property_ident_untyped I_Sequence_Generic::$$length{"length"};

Any I_Sequence_Generic::at(const Any& index) const {
    if (is_native(*this, Kind::List))
        return internal::native_list::at(unchecked<List_Generic>(*this), index);
    if (is_native(*this, Kind::Tuple))
        return internal::native_tuple::at(unchecked<Tuple_Generic>(*this), index);
    if (const internal::sequence_access* access = internal::sequence_access_of(*this))
        return internal::contain([&] { return access->at(*this, index); });
    return callMethod($at, {index});
}

Any I_Sequence_Generic::atOr(const Any& index, const Any& fallback) const {
    return callMethod($atOr, {index, fallback});
}

Any I_Sequence_Generic::indexOf(const Any& item, std::int64_t start) const {
    if (is_native(*this, Kind::List))
        return internal::native_list::indexOf(unchecked<List_Generic>(*this), item, start);
    if (is_native(*this, Kind::Tuple))
        return internal::native_tuple::indexOf(unchecked<Tuple_Generic>(*this), item, start);
    return internal::read_result<Integer>(callMethod($indexOf, {item, start})).toAny();
}

Result<Integer> I_Sequence_Generic::length() const {
    if (is_native(*this, Kind::List))
        return Integer(static_cast<std::int64_t>(unchecked<List_Generic>(*this).size()));
    if (is_native(*this, Kind::Tuple))
        return Integer(static_cast<std::int64_t>(unchecked<Tuple_Generic>(*this).items().size()));
    if (const internal::sequence_access* access = internal::sequence_access_of(*this))
        return internal::read_result<Integer>(internal::contain([&] { return access->length(*this); }));
    return internal::read_result<Integer>(propertyValue($$length));
}

Result<I_Sequence_Generic> I_Sequence_Generic::cast(const Any& value) {
    if (value.is(Kind::List) || value.is(Kind::Tuple))
        return unchecked<I_Sequence_Generic>(value);
    return internal::cast_handle<I_Sequence_Generic>(value);
}

Class_Generic I_Sequence_Generic::genericInstance(const Type& item) {
    return internal::generic_instance(getClass(), item);
}

const Class_Generic& I_Sequence_Generic::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::generic_class(
        "I_Sequence", {I_Iterable_Generic::getClass()},
        [](internal::object_value_class* instance, std::span<const Type> parameters) {
            instance->add_parent_unsafe(I_Iterable_Generic::genericInstance(parameters.front()));
        }));
    return cls;
}

Type I_Sequence_Generic::getType() { return Type(getClass()); }

Result<I_Tuple_Generic> I_Tuple_Generic::cast(const Any& value) {
    return internal::cast_handle<I_Tuple_Generic>(value);
}

Class_Generic I_Tuple_Generic::genericInstance(std::span<const Type> items) {
    return getClass().record()->genericInstance(items);
}

const Class_Generic& I_Tuple_Generic::getClass() {
    // Seen as a sequence, the items of a tuple are of any of its types.
    static const Class_Generic& cls = *new Class_Generic(
        internal::generic_class("I_Tuple", {I_Sequence_Generic::getClass()},
                                [](internal::object_value_class* instance, std::span<const Type> parameters) {
                                    if (parameters.empty())
                                        return;
                                    Type united = parameters.front();
                                    for (const Type& parameter : parameters.subspan(1))
                                        united = internal::type_unite(united, parameter);
                                    instance->add_parent_unsafe(I_Sequence_Generic::genericInstance(united));
                                }));
    return cls;
}

Type I_Tuple_Generic::getType() { return Type(getClass()); }

namespace internal {

namespace {

Any iterByPosition(const I_Sequence_Generic& self) { return Any::adopt(new sequence_iterator(self)); }

Any atOrByAt(const I_Sequence_Generic& self, const Any& index, const Any& fallback) {
    const Any item = result_unwrap_lazy(self.at(index));
    return is_error_result(item) ? fallback : item;
}

/// The length is asked for at each step: a comparison may change the sequence.
Any indexOfByAt(const I_Sequence_Generic& self, const Any& item, std::int64_t start) {
    if (start < 0) {
        const Result<Integer> length = self.length();
        if (!length)
            return length.error();
        start = std::max<std::int64_t>(start + length->value(), 0);
    }
    for (std::int64_t index = start;; ++index) {
        const Result<Integer> length = self.length();
        if (!length)
            return length.error();
        if (index >= length->value())
            return -1;
        const Any present = result_unwrap_lazy(self.at(index));
        if (is_error_result(present))
            return present;
        const Result<std::int64_t> order = try_compare(present, item);
        if (!order)
            return order.error();
        if (*order == 0)
            return index;
    }
}

}  // namespace

void define_sequence_members() {
    extend_class(I_Sequence_Generic::getClass())
        .doc("Items by position. An implementation gives 'at' and 'length'.")
        .method(I_Iterable_Generic::$iter, "", &iterByPosition, "An iterator that reads item after item by position.")
        .method(I_Sequence_Generic::$atOr, "index, default", &atOrByAt,
                "The item at a position, or the default when there is none.")
        .method(I_Sequence_Generic::$indexOf,
                optional_method(I_Sequence_Generic::$indexOf, "item, start", {0}, &indexOfByAt,
                                "The position of the first equal item at or after 'start', or -1. A negative start "
                                "counts from the end."))
        .build();
    extend_class(I_Tuple_Generic::getClass())
        .doc("A sequence of fixed length whose items may each have a type of their own.")
        .build();
}

}  // namespace internal

}  // namespace ling
